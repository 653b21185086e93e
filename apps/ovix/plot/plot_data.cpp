#include "apps/ovix/plot/plot_data.h"

#include <fmt/format.h>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numeric>

#include "apps/ovix/cli/values.h"
#include "apps/ovix/fault.h"

namespace ovix::app {
namespace {

constexpr std::size_t kBins = 128;

double ValueAt(const measure::CFrame& frame, std::size_t pixel) {
    const float value = frame.values[pixel];
    return frame.status[pixel] || !std::isfinite(value) ? NAN : value;
}

}  // namespace

std::vector<SLine> ParseLines(const std::string& option, const std::vector<std::string>& texts, u16 width, u16 height) {
    std::vector<SLine> lines;
    for (const std::string& text : texts) {
        const std::size_t equals = text.rfind('=');
        SLine line{equals == text.npos ? "line" + std::to_string(lines.size() + 1) : text.substr(0, equals), 0, 0, 0,
                   0};
        const auto parts = SplitText(std::string_view(text).substr(equals == text.npos ? 0 : equals + 1), ',');
        u16* const places[] = {&line.x0, &line.y0, &line.x1, &line.y1};
        bool fits = parts.size() == std::size(places);
        for (std::size_t i = 0; fits && i < parts.size(); ++i) {
            const auto number = ParseNumber<u16>(parts[i]);
            fits = number && *number < (i % 2 ? height : width);
            if (fits) *places[i] = *number;
        }
        if (!fits)
            throw UsageFault(fmt::format("{}: expected x0,y0,x1,y1 inside {} x {} pixels, found \"{}\"", option, width,
                                         height, text));
        lines.push_back(std::move(line));
    }
    return lines;
}

std::vector<float> GoodValues(const measure::CFrame& frame, const SRegion& region) {
    std::vector<float> values;
    values.reserve(std::size_t{region.width} * region.height);
    for (u32 y = region.y; y < u32{region.y} + region.height; ++y) {
        for (u32 x = region.x; x < u32{region.x} + region.width; ++x) {
            const double value = ValueAt(frame, std::size_t{y} * frame.width + x);
            if (!std::isnan(value)) values.push_back(static_cast<float>(value));
        }
    }
    return values;
}

std::vector<double> ProfileOf(const measure::CFrame& frame, const SLine& line) {
    const int dx = line.x1 - line.x0, dy = line.y1 - line.y0, steps = std::max(std::abs(dx), std::abs(dy));
    const auto at = [&](u16 from, int way, int i) {
        return static_cast<std::size_t>(std::floor(from + static_cast<double>(way) * i / std::max(steps, 1) + 0.5));
    };
    std::vector<double> values;
    for (int i = 0; i <= steps; ++i)
        values.push_back(ValueAt(frame, at(line.y0, dy, i) * frame.width + at(line.x0, dx, i)));
    return values;
}

double FigureOf(const std::vector<float>& values, EFigure figure) {
    if (values.empty()) return NAN;
    if (figure == EFigure::Highest) return *std::ranges::max_element(values);
    if (figure == EFigure::Lowest) return *std::ranges::min_element(values);
    return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

void PutHistogram(SPlot& plot, const std::vector<std::string>& names, const std::vector<std::vector<float>>& sets) {
    double low = INFINITY, high = -INFINITY;
    for (const auto& set : sets) {
        low = std::min(low, set.empty() ? low : FigureOf(set, EFigure::Lowest));
        high = std::max(high, set.empty() ? high : FigureOf(set, EFigure::Highest));
    }
    if (!(low <= high)) low = 0, high = 1;
    const double width = (high > low ? high - low : 1.0) / kBins;
    for (std::size_t i = 0; i <= kBins; ++i) plot.x.push_back(low + width * static_cast<double>(i));
    for (std::size_t i = 0; i < sets.size(); ++i) {
        SCurve curve{names[i], std::vector<double>(kBins)};
        for (const float value : sets[i])
            ++curve.values[std::min(kBins - 1, static_cast<std::size_t>((value - low) / width))];
        plot.curves.push_back(std::move(curve));
    }
    plot.steps = true;
}

}  // namespace ovix::app
