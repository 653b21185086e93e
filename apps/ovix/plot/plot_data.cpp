#include "apps/ovix/plot/plot_data.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace ovix::app {
namespace {

constexpr std::size_t kBins = 128;

}  // namespace

std::vector<float> GoodValues(const measure::CFrame& frame, const measure::CPixelSet& region) {
    std::vector<float> values = measure::ValuesOf(frame, region, measure::EPixels::Good);
    std::erase_if(values, [](float value) { return !std::isfinite(value); });
    return values;
}

std::vector<double> ProfileOf(const measure::CFrame& frame, const measure::CPixelSet& line) {
    std::vector<double> values;
    const auto& ends = line.Shape().points;
    for (const SPoint at : measure::LinePixels(ends[0], ends[1])) {
        const auto pixel = static_cast<std::size_t>(at.y) * frame.width + static_cast<std::size_t>(at.x);
        const float value = frame.values[pixel];
        values.push_back(frame.status[pixel] || !std::isfinite(value) ? NAN : value);
    }
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
