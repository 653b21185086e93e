#pragma once

#include <memory>
#include <optional>

#include "measure/frame/frame_reader.h"

namespace ovix::measure {

/// Where the pixels of a frame stand as plain 16-bit counts: in rows from the top, one right behind the other.
struct SPixelPlace {
    u64 offset = 0;  ///< bytes from the start of the frame
    bool bigEndian = false;

    bool operator==(const SPixelPlace&) const = default;
};

/// Where in a file the frames of a numbered source and their pixels stand, for readers that know no camera, and what
/// the frames say, without their pixels being read. Immutable and shared by threads.
class OVIX_MEASURE_API CFrameIndex {
  public:
    /// Puts a pattern of all bits in the place of the pixels of the first, the middle and the last frame, and looks
    /// what the decoder makes of it. Throws `CError`, that of the first frame, when none of them will do.
    explicit CFrameIndex(CSource source);

    /// The bytes of one frame in the file.
    SExtent Frame(u64 number) const { return source_.Find(number); }
    /// One place for all frames; nothing where pixels are compressed, turned, packed, masked, or colours.
    const std::optional<SPixelPlace>& Pixels() const { return place_; }
    /// What a frame says. Where the pixels play no part in it they are not read, and a side file of sums is not asked.
    SFrameFacts Facts(u64 number) const;

  private:
    struct STried;
    STried Try(u64 number) const;
    void ReadAround(u64 number, SRawFrame& raw) const;
    u64 PixelBytes() const { return u64{2} * source_.Format().PixelCount(); }

    CSource source_;
    CFrameReader reader_;
    std::optional<SPixelPlace> place_;
    bool apart_ = false;  ///< what frames say does not depend on their pixels
};

}  // namespace ovix::measure
