#pragma once

#include <string>
#include <vector>

#include "apps/ovix/output/png_file.h"

namespace ovix::app {

/// Values over the places of a plot, as many as it has; NaN where there is none.
struct SCurve {
    std::string name;
    std::vector<double> values;
};

/// Curves over common places, which ascend.
struct SPlot {
    std::string title = {};
    std::string xLabel = {};
    std::string yLabel = {};
    std::vector<double> x = {};
    std::vector<SCurve> curves = {};
    /// Each value holds from its place to the next; there is one place more than values, the end of the last.
    bool steps = false;
};

/// How a plot lies on its drawing, in pixels from the upper left corner.
struct SPlotFrame {
    double left, top, width, height;      ///< of the field in which the curves lie
    double lowest, highest, first, last;  ///< values at its lower and upper, places at its left and right edge

    double XOf(double place) const { return left + (place - first) / (last - first) * width; }
    double YOf(double value) const { return top + (highest - value) / (highest - lowest) * height; }
};

/// So large are plots, in pixels.
inline constexpr int kPlotWidth = 960, kPlotHeight = 540;
/// With more curves nobody knows one from another.
inline constexpr std::size_t kMostCurves = 12;

SPlotFrame FrameOf(const SPlot& plot);
/// On white, with a name for each curve.
SPngRows PlotPixels(const SPlot& plot);
/// The same as a drawing that any scale shows sharp. `description` stands in it for programs.
std::string PlotSvg(const SPlot& plot, const std::string& description);

}  // namespace ovix::app
