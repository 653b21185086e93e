#pragma once

#include <algorithm>

#include "reduce/api.h"
#include "reduce/pixels/stats.h"

namespace ovix::reduce {

/// Fills a `CStats` pixel by pixel: `Start`, any number of `AddData`, `Finish`.
///
/// The record is the caller's and holds the running sums meanwhile. The all-extremes and the bounding box go on from
/// what it held, which is 0 in a new object: an all-maximum below 0 needs a record prepared for it. `firstIndex` and
/// `lastIndex` are not written.
class OVIX_REDUCE_API CStatsCalculator {
  public:
    explicit CStatsCalculator(CStats& stats) : stats_(stats) {}

    /// Clears sums, count, status fields, and sets the all-indices to ~0.
    void Start();
    /// One pixel with its value, status byte and place in the image.
    void AddData(double value, u8 status, int x, int y);
    /// Means, deviation, sizes and centre of what was added.
    void Finish();

  private:
    CStats& stats_;
    u32 index_ = 0;
};

inline void CStatsCalculator::AddData(double value, u8 status, int x, int y) {
    CStats& s = stats_;
    // The counter starts anew with every pixel: whatever index is noted is 0, and only positions say where.
    index_ = 0;
    if (value > s.allMaximum) {
        s.allMaximum = value;
        s.allMaximumIndex = index_;
        s.allMaximumPosition = {x, y};
    }
    if (value < s.allMinimum) {
        s.allMinimum = value;
        s.allMinimumIndex = index_;
        s.allMinimumPosition = {x, y};
    }
    s.boundsTopLeft = {std::min(s.boundsTopLeft.x, x), std::min(s.boundsTopLeft.y, y)};
    s.boundsBottomRight = {std::max(s.boundsBottomRight.x, x), std::max(s.boundsBottomRight.y, y)};
    if (IsCounted(status)) {
        s.statusUnion |= status;
        if (s.count == 0 || value > s.maximum) {
            s.maximum = value;
            s.maximumStatus = status;
            s.maximumIndex = index_;
            s.maximumPosition = {x, y};
        }
        if (s.count == 0 || value < s.minimum) {
            s.minimum = value;
            s.minimumStatus = status;
            s.minimumIndex = index_;
            s.minimumPosition = {x, y};
        }
        s.sum += value;
        s.variance += value * value;  // the sum of squares until `Finish`
        ++s.count;
    }
    ++index_;
}

}  // namespace ovix::reduce
