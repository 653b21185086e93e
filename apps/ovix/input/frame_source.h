#pragma once

#include <string>
#include <vector>

#include "apps/ovix/input/frame_format.h"
#include "reduce/reduce.h"

namespace ovix::app {

/// Raw camera frames, whatever they lie in. Frames are numbered from 0 and read one at a time, in any order, in memory
/// that does not grow with their number.
class IFrameSource {
  public:
    virtual ~IFrameSource() = default;

    /// The file's name as the user wrote it.
    virtual const std::string& Name() const = 0;
    virtual const SFrameFormat& Format() const = 0;
    /// At least 1.
    virtual u64 Count() const = 0;
    /// The bytes of each frame; 0 when they differ.
    virtual u64 FrameSize() const = 0;
    /// Replaces `frame` by the bytes of one frame. Throws `CFault` when they cannot be had, a last frame that is cut
    /// included; other frames can still be read then.
    virtual void Read(u64 index, std::vector<u8>& frame) = 0;
    /// Replaces the content of the array by what the source itself says of its frames: at least a `SourceInfo`.
    virtual void Describe(reduce::CReduceObjectArray& objects) const = 0;
    /// Called after the metadata of a frame went to the array: puts back what the source says and its frames do not
    /// know.
    virtual void Overrule(reduce::CReduceObjectArray&) const {}
};

}  // namespace ovix::app
