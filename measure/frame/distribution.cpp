#include "measure/frame/distribution.h"

#include <algorithm>
#include <cmath>

namespace ovix::measure {

double SHistogram::Edge(std::size_t i) const {
    return low + (high - low) * static_cast<double>(i) / static_cast<double>(counts.size());
}

double Percentile(std::span<const float> sorted, double percent) {
    if (sorted.empty()) return std::nan("");
    const double place = std::clamp(percent, 0.0, 100.0) / 100 * static_cast<double>(sorted.size() - 1);
    const auto below = static_cast<std::size_t>(place);
    const std::size_t above = std::min(below + 1, sorted.size() - 1);
    return sorted[below] + (place - static_cast<double>(below)) * (double{sorted[above]} - sorted[below]);
}

SHistogram MakeHistogram(std::span<const float> values, std::size_t bins, double low, double high) {
    SHistogram histogram{.low = low, .high = high, .counts = std::vector<u64>(bins)};
    const double scale = static_cast<double>(bins) / (high - low);
    for (const float value : values) {
        if (value < low)
            ++histogram.below;
        else if (value > high)
            ++histogram.above;
        else if (value == value)
            ++histogram.counts[std::min(static_cast<std::size_t>((value - low) * scale), bins - 1)];
    }
    return histogram;
}

SHistogram MakeHistogram(std::span<const float> sorted, std::size_t bins) {
    if (sorted.empty()) return {};
    const double low = sorted.front(), high = sorted.back();
    if (low < high) return MakeHistogram(sorted, bins, low, high);
    return {.low = low, .high = high, .counts = {sorted.size()}};
}

}  // namespace ovix::measure
