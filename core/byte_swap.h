#pragma once

#include <algorithm>
#include <span>

#include "core/types.h"

namespace ovix {

/// Fields of one width that stand one behind the other in a record, and how often that repeats.
struct SSwapRun {
    u32 offset;
    u32 fields;
    u32 width;  ///< bytes of a field
    u32 rows = 1;
    u32 stride = 0;  ///< bytes from one row to the next
};

/// Turns the bytes of every listed field around, in place; a second call turns them back. All else stays.
inline void SwapFields(u8* record, std::span<const SSwapRun> runs) {
    for (const SSwapRun& run : runs) {
        for (u32 row = 0; row < run.rows; ++row) {
            u8* field = record + run.offset + row * run.stride;
            for (u32 i = 0; i < run.fields; ++i, field += run.width) std::reverse(field, field + run.width);
        }
    }
}

}  // namespace ovix
