#pragma once

#include "core/array.h"
#include "core/guid.h"
#include "core/string.h"
#include "reduce/api.h"

namespace ovix::reduce {

/// One field of a frame's header or trailer: the bytes that it touches, its name, and its decoded value with its unit.
/// Fields stand in any order and may overlap, as two readings of the same bytes do.
struct SFrameField {
    u64 offset = 0;  ///< in bytes, from the frame's start
    u32 size = 0;    ///< in bytes
    CString name;
    CString value;
};

/// Tells the fields of one family's frames; registered with its filter. It adds to `fields` and may trust the frame,
/// which has passed the family's check. The frame is only read: a record in the other byte order is told through a
/// copy.
using FrameDescription = void (*)(const void* frame, GUID type, u16 width, u16 height, u32 frameSize,
                                  TArray<SFrameField>& fields);

/// What stands where in a frame beside its pixels: empties `fields`, then adds the fields that the filter's family
/// knows of. Frames without a header or trailer have none.
///
/// False when `CheckFrame` refuses the frame, and for a family that registered no description.
OVIX_REDUCE_API bool DescribeFrame(const wchar_t* filter, const void* frame, GUID type, u16 width, u16 height,
                                   u32 frameSize, TArray<SFrameField>& fields);

}  // namespace ovix::reduce
