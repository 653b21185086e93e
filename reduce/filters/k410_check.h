#pragma once

#include "reduce/filters/check_frame.h"

namespace ovix::reduce {

/// The `FrameCheck` of the K410 family. After true no operation touches a byte outside the frame, the destination or
/// the library's own memory.
bool CheckK410Frame(const void* frame, GUID type, u16 width, u16 height, u32 frameSize, SFrameFault* fault);

}  // namespace ovix::reduce
