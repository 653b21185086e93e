#pragma once

#include <string>
#include <vector>

#include "apps/ovix/plot/plot_drawing.h"
#include "measure/measure.h"

namespace ovix::app {

/// The finite values of the good pixels of a region, in rows from the top.
std::vector<float> GoodValues(const measure::CFrame& frame, const measure::CPixelSet& region);

/// The values along a line in its order, one for each of `measure::LinePixels`; NaN where a pixel is not good.
std::vector<double> ProfileOf(const measure::CFrame& frame, const measure::CPixelSet& line);

enum class EFigure { Mean, Highest, Lowest };
/// NaN of no values.
double FigureOf(const std::vector<float>& values, EFigure figure);

/// How many values of each set fall into each of equal bins between the least and the greatest of all sets; the last
/// bin holds the greatest, too. Puts the edges of the bins and the curves into the plot.
void PutHistogram(SPlot& plot, const std::vector<std::string>& names, const std::vector<std::vector<float>>& sets);

}  // namespace ovix::app
