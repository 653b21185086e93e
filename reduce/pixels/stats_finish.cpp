#include "reduce/pixels/stats_finish.h"

#include <cmath>

namespace ovix::reduce {

namespace {

/// Pixels from first to last, both inclusive.
u32 Extent(i32 first, i32 last) { return static_cast<u32>(last) - static_cast<u32>(first) + 1; }

float Middle(i32 first, i32 last) { return static_cast<float>(i64{last} + first) * 0.5F; }

}  // namespace

void FinishMoments(CStats& stats) {
    if (stats.count != 0) stats.mean = stats.sum / stats.count;
    // In one pass: rounding may leave a variance slightly below 0, whose deviation is NaN.
    stats.variance = stats.count < 2 ? 0 : stats.variance / stats.count - stats.mean * stats.mean;
    stats.standardDeviation = std::sqrt(stats.variance);
}

void FinishBounds(CStats& stats) {
    const SPoint& first = stats.boundsTopLeft;
    const SPoint& last = stats.boundsBottomRight;
    stats.boundsWidth = stats.count ? Extent(first.x, last.x) : 0;
    stats.boundsHeight = stats.count ? Extent(first.y, last.y) : 0;
    stats.centerX = Middle(first.x, last.x);
    stats.centerY = Middle(first.y, last.y);
}

}  // namespace ovix::reduce
