#pragma once

#include <string>
#include <vector>

#include "apps/ovix/plot/plot_drawing.h"
#include "apps/ovix/region.h"

namespace ovix::app {

/// From one pixel of a frame to another, both included.
struct SLine {
    std::string name;
    u16 x0, y0, x1, y1;
};

/// "x0,y0,x1,y1" or "name=x0,y0,x1,y1", inside the image. Throws wrong usage that names the option.
std::vector<SLine> ParseLines(const std::string& option, const std::vector<std::string>& texts, u16 width, u16 height);

/// The values of the good pixels of a region, in rows from the top: those without any flag that are finite.
std::vector<float> GoodValues(const measure::CFrame& frame, const SRegion& region);

/// The values along a line, one for each step along its longer side, halves rounded up; NaN where a pixel is not good.
std::vector<double> ProfileOf(const measure::CFrame& frame, const SLine& line);

enum class EFigure { Mean, Highest, Lowest };
/// NaN of no values.
double FigureOf(const std::vector<float>& values, EFigure figure);

/// How many values of each set fall into each of equal bins between the least and the greatest of all sets; the last
/// bin holds the greatest, too. Puts the edges of the bins and the curves into the plot.
void PutHistogram(SPlot& plot, const std::vector<std::string>& names, const std::vector<std::vector<float>>& sets);

}  // namespace ovix::app
