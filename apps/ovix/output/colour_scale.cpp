#include "apps/ovix/output/colour_scale.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "apps/ovix/status_flags.h"

namespace ovix::app {

EPixelKind KindOf(float value, u8 status, SRange range) {
    if (status & kStatusNoData || std::isnan(value)) return PixelNoData;
    if (status & kStatusUnder || value < range.low) return PixelUnder;
    if (status & kStatusOver || value > range.high) return PixelOver;
    return PixelShown;
}

SColour ColourOfPixel(float value, EPixelKind kind, SRange range) {
    switch (kind) {
        case PixelUnder:
            return kUnderColour;
        case PixelOver:
            return kOverColour;
        case PixelNoData:
            return kNoDataColour;
        default:
            return PaletteColour(value, range.low, range.high);
    }
}

SRange RangeBetween(float low, float high) {
    if (low < high) return {low, high};
    const float half = std::max(0.5f, std::abs(low) * 1e-6f);
    return {low - half, low + half};
}

SRange RangeOfPixels(std::span<const float> values, std::span<const u8> status) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    SRange range{kInfinity, -kInfinity};
    for (std::size_t i = 0; i < values.size(); ++i) {
        const bool flagged = !status.empty() && status[i] & (kStatusNoData | kStatusUnder | kStatusOver);
        if (flagged || !std::isfinite(values[i])) continue;
        range.low = std::min(range.low, values[i]);
        range.high = std::max(range.high, values[i]);
    }
    if (range.low > range.high) return {0, 1};
    return RangeBetween(range.low, range.high);
}

std::vector<STick> Ticks(SRange range, int wanted) {
    constexpr double kSlack = 1e-3;  // of a step: the ends of the range are floats, seldom round themselves
    const double low = range.low;
    const double high = range.high;
    const double rough = (high - low) / std::max(wanted, 1) * (1 - kSlack);
    const double decade = std::pow(10.0, std::floor(std::log10(rough)));
    double step = 10 * decade;
    for (double times : {5, 2, 1}) step = rough <= times * decade ? times * decade : step;
    const bool plain = std::max(std::abs(low), std::abs(high)) < 1e7 && step > 0.9e-5;
    const int decimals = std::max(0, static_cast<int>(-std::floor(std::log10(step) + 1e-9)));
    std::vector<STick> ticks;
    for (double n = std::ceil(low / step - kSlack); n * step <= high + kSlack * step; ++n) {
        const double value = n * step + 0.0;  // no minus before a zero
        ticks.push_back({value, plain ? fmt::format("{:.{}f}", value, decimals) : fmt::format("{:.4g}", value)});
    }
    if (ticks.empty()) ticks.push_back({low, fmt::format("{:.6g}", low)});
    return ticks;
}

}  // namespace ovix::app
