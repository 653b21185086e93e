#pragma once

#include <algorithm>

#include "reduce/pixels/stats_tally.h"

namespace ovix::reduce {

struct CStats;

/// The bounding box of the pixels visited.
struct SBox {
    i64 left = 0;
    i64 top = 0;
    i64 right = 0;
    i64 bottom = 0;
    bool any = false;

    /// Takes in the pixels of one row, first to last column.
    void Widen(i64 row, i64 first, i64 last) {
        left = any ? std::min(left, first) : first;
        top = any ? std::min(top, row) : row;
        right = any ? std::max(right, last) : last;
        bottom = any ? std::max(bottom, row) : row;
        any = true;
    }
};

/// That of the listed pixels of a frame.
SBox BoxOf(const u32* indices, u32 count, u32 width);

/// What a route walked.
struct SWalk {
    STally tally;
    SBox box;
    bool hasStatus;
};

/// Whether a walk without status writes the values of the all-extremes, or their indices and positions alone.
enum class EAllValues : bool { Kept, Copied };

/// Where an index of a result lies in a frame.
struct SPointOf {
    u32 width;                     ///< of the frame
    const u32* indices = nullptr;  ///< when an index is a place in this list of frame indices

    SPoint operator()(u32 index) const;
};

/// Writes what a walk found: all fields that the `GetStats` functions have in common. Extremes, positions and bounding
/// box stay where nothing was selected.
void WriteStats(CStats& stats, const SWalk& walk, EAllValues allValues, const SPointOf& pointOf);

}  // namespace ovix::reduce
