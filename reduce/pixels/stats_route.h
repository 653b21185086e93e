#pragma once

#include <algorithm>

#include "reduce/pixels/stats.h"
#include "reduce/pixels/stats_tally.h"

/// What all ways to statistics have in common: the box, the end of a run, and a frame that comes in blocks.
namespace ovix::reduce {

/// Mean (kept when nothing was counted), variance and deviation of `count` pixels; takes the sum of squares from
/// `variance`.
void FinishMoments(CStats& stats);
/// Sizes and centre of the bounding box that the record holds.
void FinishBounds(CStats& stats);

/// One pixel added to a record that holds its own running sums, as `CStatsCalculator` does it.
inline void AddToRecord(CStats& s, double value, u8 status, int x, int y) {
    constexpr u32 kIndex = 0;  // its counter starts anew with every pixel: only positions say where
    if (value > s.allMaximum) {
        s.allMaximum = value;
        s.allMaximumIndex = kIndex;
        s.allMaximumPosition = {x, y};
    }
    if (value < s.allMinimum) {
        s.allMinimum = value;
        s.allMinimumIndex = kIndex;
        s.allMinimumPosition = {x, y};
    }
    s.boundsTopLeft = {std::min(s.boundsTopLeft.x, x), std::min(s.boundsTopLeft.y, y)};
    s.boundsBottomRight = {std::max(s.boundsBottomRight.x, x), std::max(s.boundsBottomRight.y, y)};
    if (!IsCounted(status)) return;
    s.statusUnion |= status;
    if (s.count == 0 || value > s.maximum) {
        s.maximum = value;
        s.maximumStatus = status;
        s.maximumIndex = kIndex;
        s.maximumPosition = {x, y};
    }
    if (s.count == 0 || value < s.minimum) {
        s.minimum = value;
        s.minimumStatus = status;
        s.minimumIndex = kIndex;
        s.minimumPosition = {x, y};
    }
    s.sum += value;
    s.variance += value * value;  // the sum of squares until the end
    ++s.count;
}

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

/// What a route walked.
struct SStatsWalk {
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
void WriteStats(CStats& stats, const SStatsWalk& walk, EAllValues allValues, const SPointOf& pointOf);

/// The pixels around the centre of a bounding box, one, two or four of them, by their frame indices.
struct SCenter {
    std::size_t corners[4];
    bool besideX;  ///< the centre lies between two columns
    bool besideY;

    SCenter(float centerX, float centerY, u32 width, u32 height);
    /// Writes their mean and all their status bytes; `elements` and `status` hold one entry for each corner.
    void Write(CStats& stats, STypedData elements, const u8* status) const;
};

/// The statistics of a whole frame whose pixels come in blocks, one behind the other: for chains that make them in the
/// first-level cache and count them there. The result is that of `GetStats` over the frame (the form with width,
/// height and no mask), to the bit.
class CFrameTally {
  public:
    /// Any type but `UInt64`. `hasStatus` says whether the blocks come with status bytes.
    CFrameTally(EDataType type, u32 width, u32 height, bool hasStatus);

    /// The next `count` pixels of the frame, of any number; `status` null if and only if the frame has none.
    void Add(const void* pixels, const u8* status, std::size_t count);
    /// Once all pixels were added.
    void Finish(CStats& stats) const;

  private:
    EDataType type_;
    u32 width_;
    std::size_t next_ = 0;
    SStatsWalk walk_;
    SCenter center_;
    alignas(8) u8 elements_[4 * 8] = {};
    u8 status_[4] = {};
};

}  // namespace ovix::reduce
