#pragma once

#include <memory>
#include <optional>

#include "apps/ovix/input/frame_format.h"
#include "apps/ovix/input/input_file.h"

namespace ovix::app {

/// A run of bytes of a file.
struct SExtent {
    u64 offset = 0;
    u64 size = 0;
};

/// Where the frames of a dump stand in their file. A last frame that is cut counts; its extent ends with the file.
class IDumpLayout {
  public:
    virtual ~IDumpLayout() = default;
    virtual u64 Count() const = 0;
    virtual SExtent Of(u64 frame) = 0;
    /// The bytes that each frame should have; 0 when they differ.
    virtual u64 FrameSize() const = 0;
};

/// The layout of a file of frames of one format, `frameSize` bytes each, or as found when 0.
///
/// Frames of a compressed format tell their own length. All others are equally large, but how much stands behind the
/// pixels is the camera's affair, so `CheckFrame` is asked:
/// 1. The smallest size m with which the first frame passes. A frame that passes with no size is a fault.
/// 2. If the content plays no part in the check (a frame of zeros passes too), frames have m bytes; unless the decoder
///    reads number and time of the first frame and not of zeros, which then counts from here on as a part of the check.
/// 3. Otherwise the smallest size, from m on, that divides the file into frames of which the second or the last passes.
/// 4. Otherwise the distance to the next place at which a frame passes: the file is cut.
///    What stands behind a frame is never as much as a frame.
/// 5. Otherwise there is one frame: with all of the file when little stands behind m, else with m bytes before a cut
/// one.
///
/// Throws `CFault` when the file is empty or its first frame would not do.
std::unique_ptr<IDumpLayout> FindLayout(const CInputFile& file, const SFrameFormat& format, u32 frameSize);

}  // namespace ovix::app
