#pragma once

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

}  // namespace ovix::reduce
