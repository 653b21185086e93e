#pragma once

#include <memory>
#include <span>

#include "apps/ovix/input/frame_format.h"
#include "reduce/reduce.h"

namespace ovix::app {

class CDecoderChild;

/// Decodes the frames of one stream, with `CheckFrame` before every parse.
///
/// A library that unpacks compressed pixels may abort or never end on a damaged stream. So the pixels of compressed
/// formats are decoded in a child process that shares the pixel buffer and lives on from frame to frame; when it dies
/// or does not answer in time, that is a fault of the frame at hand, and the next frame gets a new child. The metadata
/// is always parsed in this process.
class CGuardedDecode {
  public:
    /// Throws `CFault` when nobody registered the format's decoder.
    explicit CGuardedDecode(const SFrameFormat& format);
    ~CGuardedDecode();
    CGuardedDecode(const CGuardedDecode&) = delete;
    CGuardedDecode& operator=(const CGuardedDecode&) = delete;

    /// Metadata to `objects`, pixels to `Pixels()`; the frame's preset is the result. The frame's bytes may be changed:
    /// some decoders repair the byte order in place. Throws `CFault` (offset, expected, found) for a frame that would
    /// not do; the caller adds the file and the frame's number.
    u8 Decode(std::span<u8> frame, reduce::CReduceObjectArray& objects);
    /// The same for metadata alone.
    u8 DecodeMetadata(std::span<u8> frame, reduce::CReduceObjectArray& objects);

    /// Width times height pixels of the frame decoded last, owned by this object.
    STypedData Pixels() const;
    const SPixelForm& Form() const { return form_; }
    reduce::IFilter& Filter() const { return *filter_; }
    /// Throws `CFault` for a frame on which no operation of the decoder may be called.
    void Check(std::span<const u8> frame) const;

  private:
    bool Parse(std::span<u8> frame, STypedData dest, reduce::CReduceObjectArray& objects, u8& preset);

    SFrameFormat format_;
    SPixelForm form_;
    CString filterName_;
    TSharedPtr<reduce::IFilter> filter_;
    std::unique_ptr<CDecoderChild> child_;  ///< of compressed formats
    std::unique_ptr<u8[]> pixels_;          ///< of all others
};

}  // namespace ovix::app
