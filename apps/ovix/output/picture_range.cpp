#include "apps/ovix/output/picture_range.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "apps/ovix/status_flags.h"

namespace ovix::app {
namespace {

constexpr u8 kBeyond = kStatusNoData | kStatusUnder | kStatusOver;
constexpr double kLeftOut = 0.001;  ///< of the pixels, at either end of what is taken for the scene
constexpr float kMargin = 0.35f;    ///< of the scene's span: the noise of an even scene goes beyond it by a quarter

/// The pixels of a frame that say how warm something is.
struct SPixels {
    bool Count(std::size_t i) const { return std::isfinite(values[i]) && !(!status.empty() && status[i] & kBeyond); }
    /// The values of each `step`th of them.
    std::vector<float> Some(std::size_t step) const {
        std::vector<float> some;
        some.reserve(values.size() / step + 1);
        for (std::size_t i = 0; i < values.size(); i += step) {
            if (Count(i)) some.push_back(values[i]);
        }
        return some;
    }

    std::span<const float> values;
    std::span<const u8> status;
};

float AtShare(std::vector<float>& values, double share) {
    const auto at = values.begin() + std::lround(share * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), at, values.end());
    return *at;
}

/// Well beyond most of the pixels. Some thousand pixels tell that as well as all.
SRange Fence(const SPixels& pixels) {
    constexpr std::size_t kEnough = 16384;
    std::vector<float> some = pixels.Some(pixels.values.size() / kEnough | 1);  // odd: in all columns of any width
    if (some.empty()) some = pixels.Some(1);
    const float low = AtShare(some, kLeftOut), high = AtShare(some, 1 - kLeftOut);
    const float margin = kMargin * (high - low);
    return {low - margin, high + margin};
}

/// Whether too few of the pixels around lie beyond the same end.
bool IsAlone(const SPixels& pixels, std::size_t at, std::size_t width, const SRange& fence) {
    constexpr int kOfASpot = 3;  // each pixel of a square of four has as many
    const bool above = pixels.values[at] > fence.high;
    const std::size_t x = at % width, y = at / width, height = pixels.values.size() / width;
    int beyond = 0;
    for (std::size_t v = y - (y > 0); v <= std::min(y + 1, height - 1); ++v) {
        for (std::size_t u = x - (x > 0); u <= std::min(x + 1, width - 1); ++u) {
            const std::size_t i = v * width + u;
            beyond +=
                i != at && pixels.Count(i) && (above ? pixels.values[i] > fence.high : pixels.values[i] < fence.low);
        }
    }
    return beyond < kOfASpot;
}

}  // namespace

std::optional<SRange> SuitingRange(std::span<const float> values, std::span<const u8> status, u32 width,
                                   const std::optional<Percentiles>& percentiles) {
    const SPixels pixels{values, status};
    if (percentiles) {
        std::vector<float> all = pixels.Some(1);
        if (all.empty()) return {};
        return SRange{AtShare(all, percentiles->first / 100), AtShare(all, percentiles->second / 100)};
    }
    const auto extremes = Extremes(values, status, kBeyond);
    if (!extremes) return {};
    const SRange fence = Fence(pixels);
    if (fence.low <= extremes->low && extremes->high <= fence.high) return extremes;
    SRange found{extremes->high, extremes->low};
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (!pixels.Count(i)) continue;
        const bool within = fence.low <= values[i] && values[i] <= fence.high;
        if (!within && IsAlone(pixels, i, width, fence)) continue;
        found = {std::min(found.low, values[i]), std::max(found.high, values[i])};
    }
    return found;
}

void CCommonRange::Add(const std::optional<SRange>& range) {
    if (!range) return;
    widest_ = widest_ ? SRange{std::min(widest_->low, range->low), std::max(widest_->high, range->high)} : *range;
}

SRange CCommonRange::Range() const { return widest_ ? RangeBetween(widest_->low, widest_->high) : SRange{0, 1}; }

}  // namespace ovix::app
