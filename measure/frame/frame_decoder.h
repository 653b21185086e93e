#pragma once

#include <optional>
#include <span>

#include "measure/decoder/decoder_pool.h"
#include "measure/frame/frame_reader.h"
#include "measure/sources/source.h"

namespace ovix::measure {

/// Decodes frames of one format, each by itself: checked before every parse, by a decoder that has seen no other frame.
/// Compressed pixels are decoded by helper processes. Any number of threads.
class CFrameDecoder {
  public:
    /// Throws `CError` (NoDecoder) when nobody registered the format's decoder.
    CFrameDecoder(const CSource& source, std::chrono::milliseconds patience);

    const reduce::SFrameForm& Form() const { return form_; }
    std::size_t PixelBytes() const { return std::size_t{form_.bytesPerPixel} * format_.PixelCount(); }

    /// The frame's metadata goes to `objects` and its pixels to `pixels`, `PixelBytes()` of them, or nowhere when it is
    /// null. Some families repair a frame where it stands, so its bytes may change. Throws `CError` without file and
    /// frame (FrameRefused, PixelsDamaged) for a frame that would not do.
    SFrameFacts Decode(std::span<u8> frame, reduce::CReduceObjectArray& objects, void* pixels) const;

  private:
    SFrameFacts DecodeByFilter(std::span<u8> frame, reduce::CReduceObjectArray& objects, void* pixels) const;

    SFrameFormat format_;
    reduce::SFrameForm form_;
    CString filterName_;
    std::optional<CDecoderPool> helpers_;  ///< of compressed formats
};

}  // namespace ovix::measure
