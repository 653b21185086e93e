#pragma once

#include "core/guid.h"
#include "core/string.h"
#include "reduce/api.h"

namespace ovix::reduce {

/// What is wrong with a frame: where, what had to stand there, what was found.
struct SFrameFault {
    u64 offset = 0;
    CString expected;
    CString found;
};

/// Answers for one family; registered with its filter. `fault` may be null.
using FrameCheck = bool (*)(const void* frame, GUID type, u16 width, u16 height, u32 frameSize, SFrameFault* fault);

/// Whether a buffer of `frameSize` bytes holds all that the operations of the filter will read, offsets inside the
/// frame included. After true, no operation of the filter on these arguments reads or writes out of bounds, whatever
/// the bytes are, given a destination of width times height pixels.
///
/// False for an unknown filter, a family that registered no check, a type that it does not take, and a frame that
/// would not do; `fault` then says why.
OVIX_REDUCE_API bool CheckFrame(const wchar_t* filter, const void* frame, GUID type, u16 width, u16 height,
                                u32 frameSize, SFrameFault* fault = nullptr);

}  // namespace ovix::reduce
