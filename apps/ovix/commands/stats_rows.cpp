#include "apps/ovix/commands/stats_rows.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cmath>

#include "apps/ovix/facts/scene_json.h"

namespace ovix::app {

using measure::EPixels;
using measure::SPixelFigures;

namespace {

Json NumberOrNull(double value) { return std::isfinite(value) ? Json(value) : Json(); }

Json FlagsJson(u8 status) {
    Json flags = Json::array();
    for (const SStatusFlag& flag : kStatusFlags) {
        if (status & flag.bit) flags.push_back(flag.key);
    }
    return flags;
}

Json ExtremeJson(double value, SPoint at, u8 status) {
    return {{"value", NumberOrNull(ShortestDouble(static_cast<float>(value)))},
            {"x", at.x},
            {"y", at.y},
            {"status", FlagsJson(status)}};
}

Json ProfileJson(const std::vector<SProfilePixel>& profile) {
    Json pixels = Json::array();
    for (const SProfilePixel& pixel : profile) {
        pixels.push_back({{"x", pixel.at.x},
                          {"y", pixel.at.y},
                          {"value", NumberOrNull(ShortestDouble(pixel.value))},
                          {"status", FlagsJson(pixel.status)}});
    }
    return pixels;
}

Json HistogramJson(const measure::SHistogram& histogram) {
    Json edges = Json::array();
    if (!histogram.counts.empty()) {
        for (std::size_t i = 0; i <= histogram.counts.size(); ++i) edges.push_back(histogram.Edge(i));
    }
    return {{"edges", edges}, {"counts", histogram.counts}, {"below", histogram.below}, {"above", histogram.above}};
}

Json GoodJson(const SPixelFigures& figures) {
    Json json{{"counted", figures.count}};
    if (!figures.count) return json;
    json["min"] = ShortestDouble(static_cast<float>(figures.minimum));
    json["max"] = ShortestDouble(static_cast<float>(figures.maximum));
    json["mean"] = NumberOrNull(figures.mean);
    json["std"] = NumberOrNull(figures.standardDeviation);
    return json;
}

Json RegionJson(const measure::CPixelSet& region) {
    const measure::SShape& shape = region.Shape();
    const measure::SRegion& box = region.Bounds();
    Json json{{"region", shape.name},
              {"kind", measure::ShapeWord(shape.kind)},
              {"area", {{"x", box.x}, {"y", box.y}, {"width", box.width}, {"height", box.height}}}};
    if (shape.kind == measure::EShape::Rectangle) return json;
    for (const SPoint at : shape.points) json["points"].push_back({at.x, at.y});
    if (shape.kind == measure::EShape::Circle) json["radius"] = shape.radius;
    return json;
}

void AddFigures(SStatsRow& row, const measure::CFrame& frame, const SStatsWish& wish) {
    row.figures = measure::FiguresOf(frame, *row.region, wish.pixels);
    const auto statusAt = [&](SPoint at) {
        return frame.status[static_cast<std::size_t>(at.y) * frame.width + static_cast<std::size_t>(at.x)];
    };
    if (row.HasFigures()) {
        row.minimumStatus = statusAt(row.figures.minimumPosition);
        row.maximumStatus = statusAt(row.figures.maximumPosition);
    }
    if (wish.ofGood && wish.pixels == EPixels::Counted) {
        const bool same = row.figures.count == row.figures.good;
        row.ofGood = same ? row.figures : measure::FiguresOf(frame, *row.region, EPixels::Good);
    }
    if (wish.percents.empty() && !wish.bins) return;
    std::vector<float> values = measure::ValuesOf(frame, *row.region, wish.pixels);
    std::ranges::sort(values);
    for (const double percent : wish.percents) row.percentiles.push_back(measure::Percentile(values, percent));
    if (!wish.bins) return;
    row.histogram = wish.binLimits
                        ? measure::MakeHistogram(values, wish.bins, wish.binLimits->first, wish.binLimits->second)
                        : measure::MakeHistogram(values, wish.bins);
}

}  // namespace

SStatsRow RowOf(const std::string& file, const measure::CFrame& frame, const measure::CPixelSet& region,
                const SStatsWish& wish) {
    SStatsRow row{.file = file,
                  .frame = frame.number,
                  .time = frame.time,
                  .counter = frame.counter,
                  .preset = frame.preset,
                  .region = &region};
    if (!wish.profile) {
        AddFigures(row, frame, wish);
        return row;
    }
    for (const SPoint at : measure::LinePixels(region.Shape().points[0], region.Shape().points[1])) {
        const std::size_t i = static_cast<std::size_t>(at.y) * frame.width + static_cast<std::size_t>(at.x);
        row.profile.push_back({at, frame.values[i], frame.status[i]});
    }
    return row;
}

Json StatusJson(const SPixelFigures& figures) {
    Json counts{{"good", figures.good}};
    for (const SStatusFlag& flag : kStatusFlags) {
        if (const u32 pixels = CountedUnder(figures, flag)) counts[flag.key] = pixels;
    }
    return counts;
}

Json RowJson(const SStatsRow& row, const SStatsWish& wish) {
    Json json{{"file", row.file},
              {"frame", row.frame},
              {"time", row.time ? Json(TimeText(*row.time)) : Json()},
              {"counter", row.counter ? Json(*row.counter) : Json()},
              {"preset", row.preset ? Json(*row.preset) : Json()}};
    json.update(RegionJson(*row.region));
    if (wish.profile) {
        json["profile"] = ProfileJson(row.profile);
        return json;
    }
    const SPixelFigures& s = row.figures;
    json.update({{"pixels", s.pixels}, {"counted", s.count}, {"status", StatusJson(s)}});
    if (row.HasFigures()) {
        json["min"] = ExtremeJson(s.minimum, s.minimumPosition, row.minimumStatus);
        json["max"] = ExtremeJson(s.maximum, s.maximumPosition, row.maximumStatus);
        json["mean"] = NumberOrNull(s.mean);
        json["std"] = NumberOrNull(s.standardDeviation);
    }
    if (row.ofGood) json["ofGood"] = GoodJson(*row.ofGood);
    for (std::size_t i = 0; i < row.percentiles.size(); ++i)
        json["percentiles"][fmt::format("{}", wish.percents[i])] = NumberOrNull(row.percentiles[i]);
    if (row.histogram) json["histogram"] = HistogramJson(*row.histogram);
    return json;
}

}  // namespace ovix::app
