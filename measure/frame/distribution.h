#pragma once

#include <span>
#include <vector>

#include "core/core.h"
#include "measure/api.h"

namespace ovix::measure {

/// The value below which `percent` of the values lie, from 0 to 100, between two values in proportion (the definition
/// that most programs take, type 7 of Hyndman and Fan 1996). `sorted` ascends; NaN for none.
OVIX_MEASURE_API double Percentile(std::span<const float> sorted, double percent);

/// How many values lie in each of equally wide steps; a value on an edge counts in the step above, the highest edge in
/// the last.
struct OVIX_MEASURE_API SHistogram {
    double low = 0;
    double high = 0;
    u64 below = 0;  ///< values beside the steps
    u64 above = 0;
    std::vector<u64> counts = {};

    /// Where step i begins; `Edge(counts.size())` is `high`.
    double Edge(std::size_t i) const;
};

/// Between two limits, `low` below `high`, in `bins` steps, at least one. NaN counts nowhere.
OVIX_MEASURE_API SHistogram MakeHistogram(std::span<const float> values, std::size_t bins, double low, double high);
/// From the lowest to the highest of values that ascend; of equal values one step holds all.
OVIX_MEASURE_API SHistogram MakeHistogram(std::span<const float> sorted, std::size_t bins);

}  // namespace ovix::measure
