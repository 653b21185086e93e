#pragma once

#include <bit>
#include <optional>
#include <string>
#include <vector>

#include "apps/ovix/json.h"
#include "apps/ovix/status_flags.h"
#include "apps/ovix/units.h"
#include "measure/measure.h"

namespace ovix::app {

/// What is to be said of each region of a frame.
struct SStatsWish {
    measure::EPixels pixels = measure::EPixels::Counted;
    std::vector<double> percents = {};                        ///< of which percentiles are shown
    u64 bins = 0;                                             ///< of the histogram; 0 for none
    std::optional<std::pair<double, double>> binLimits = {};  ///< none: from the lowest to the highest value
    bool profile = false;                                     ///< the values along a line, and no figures
    bool ofGood = true;                                       ///< figures of good pixels beside those of all that count
};

/// One pixel of a profile.
struct SProfilePixel {
    SPoint at;
    float value = 0;
    u8 status = 0;
};

/// What is said of one region of one frame. Regions are borrowed.
struct SStatsRow {
    std::string file = {};
    u64 frame = 0;
    std::optional<measure::Time> time = {};
    std::optional<u64> counter = {};
    std::optional<u8> preset = {};
    const measure::CPixelSet* region = nullptr;
    measure::SPixelFigures figures = {};
    u8 minimumStatus = 0;  ///< the flags of the pixels where the extremes are
    u8 maximumStatus = 0;
    std::optional<measure::SPixelFigures> ofGood = {};  ///< where wished, and `figures` are of all that count
    std::vector<double> percentiles = {};
    std::optional<measure::SHistogram> histogram = {};
    std::vector<SProfilePixel> profile = {};

    /// Below this nothing counts: the figures are then what a fresh record holds.
    bool HasFigures() const { return figures.count > 0; }
};

/// Pure: any number of threads may do it at a time.
SStatsRow RowOf(const std::string& file, const measure::CFrame& frame, const measure::CPixelSet& region,
                const SStatsWish& wish);

/// The pixels of a region under a flag, where each counts once, under the heaviest that it bears.
inline u32 CountedUnder(const measure::SPixelFigures& figures, const SStatusFlag& flag) {
    return figures.byHighestFlag[static_cast<std::size_t>(std::countr_zero(flag.bit))];
}

/// How many pixels of a region bear no flag ("good"), and how many are counted under each flag; a pixel with several
/// counts once, under the heaviest, so that all add up to the region.
Json StatusJson(const measure::SPixelFigures& figures);

/// Everything in a row. The unit stands in the document around it.
Json RowJson(const SStatsRow& row, const SStatsWish& wish);

}  // namespace ovix::app
