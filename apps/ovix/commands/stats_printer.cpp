#include "apps/ovix/commands/stats_printer.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>

#include "apps/ovix/cli/console.h"
#include "apps/ovix/cli/number_text.h"
#include "apps/ovix/facts/findings.h"
#include "apps/ovix/facts/scene_json.h"
#include "apps/ovix/status_flags.h"
#include "apps/ovix/text_table.h"

namespace ovix::app {

namespace {

u32 Flagged(const SStatsRow& row, const SStatusFlag& flag) {
    return row.figures.flagged[static_cast<std::size_t>(std::countr_zero(flag.bit))];
}
std::string Counted(const SStatsRow& row, const SStatusFlag& flag) { return fmt::format("{}", Flagged(row, flag)); }
std::string Good(const SStatsRow& row) { return fmt::format("{}", row.figures.good); }

Json StatusJson(const SStatsRow& row) {
    Json counts{{"good", row.figures.good}};
    for (const SStatusFlag& flag : kStatusFlags) {
        if (const u32 pixels = Flagged(row, flag)) counts[flag.key] = pixels;
    }
    return counts;
}

/// Below this nothing counts: the figures are then what a fresh record holds.
bool HasFigures(const SStatsRow& row) { return row.figures.count > 0; }

class CTablePrinter final : public IStatsPrinter {
  public:
    void Begin(const SStatsHead& head) override {
        head_ = head;
        nameWidth_ = std::max<std::size_t>(head.longestName, 6);
        frameWidth_ = std::max<std::size_t>(fmt::format("{}", head.lastFrame).size(), 5);
        Print(fmt::format("{} in {}, standard deviation in {}\n\n", head.text.quantity, head.text.symbol,
                          head.text.difference));
        Line("frame", "region",
             {"pixels", "min", "at x,y", "max", "at x,y", "mean", "std", "good", "outside", "under", "over", "no data",
              "excluded"});
    }
    void Row(const SStatsRow& row) override {
        const reduce::CStats& s = row.figures;
        const auto value = [&](double v) { return HasFigures(row) ? ShownValue(v, head_.unit) : "-"; };
        const auto place = [&](SPoint p) { return HasFigures(row) ? fmt::format("{},{}", p.x, p.y) : "-"; };
        const u64 pixels = u64{row.region.width} * row.region.height;
        Line(fmt::format("{}", row.frame), row.region.name,
             {fmt::format("{}", pixels), value(s.minimum), place(s.minimumPosition), value(s.maximum),
              place(s.maximumPosition), value(s.mean), value(s.standardDeviation), Good(row),
              Counted(row, kStatusFlags[0]), Counted(row, kStatusFlags[1]), Counted(row, kStatusFlags[2]),
              Counted(row, kStatusFlags[5]), fmt::format("{}", pixels - s.count)});
    }
    void End(const SStatsEnd&) override {}

  private:
    void Line(const std::string& frame, const std::string& region, const std::vector<std::string>& cells) {
        std::string line = fmt::format("{:>{}}  {}{}", frame, frameWidth_, region,
                                       std::string(nameWidth_ - std::min(nameWidth_, TextWidth(region)), ' '));
        for (const std::string& cell : cells) line += fmt::format("  {:>9}", cell);
        Print(line + '\n');
    }

    SStatsHead head_;
    std::size_t nameWidth_ = 0;
    std::size_t frameWidth_ = 0;
};

class CCsvPrinter final : public IStatsPrinter {
  public:
    void Begin(const SStatsHead& head) override {
        const std::string unit = " (" + head.text.symbol + ")";
        std::string line = "frame,region,x (px),y (px),width (px),height (px),counted (px)";
        for (const char* name : {"min", "max", "mean"}) line += ',' + CsvField(name + unit);
        line += ',' + CsvField("std (" + head.text.difference + ")") +
                ",min x (px),min y (px),max x (px),max y (px),good (px)";
        for (const SStatusFlag& flag : kStatusFlags) line += fmt::format(",{} (px)", flag.key);
        Print(line + '\n');
    }
    void Row(const SStatsRow& row) override {
        const reduce::CStats& s = row.figures;
        std::string line = fmt::format("{},{},{},{},{},{},{}", row.frame, CsvField(row.region.name), row.region.x,
                                       row.region.y, row.region.width, row.region.height, s.count);
        if (HasFigures(row)) {
            line += fmt::format(",{},{},{},{},{},{},{},{}", ExactNumber(ShortestDouble(static_cast<float>(s.minimum))),
                                ExactNumber(ShortestDouble(static_cast<float>(s.maximum))), ExactNumber(s.mean),
                                ExactNumber(s.standardDeviation), s.minimumPosition.x, s.minimumPosition.y,
                                s.maximumPosition.x, s.maximumPosition.y);
        } else {
            line += ",,,,,,,,";
        }
        line += ',' + Good(row);
        for (const SStatusFlag& flag : kStatusFlags) line += ',' + Counted(row, flag);
        Print(line + '\n');
    }
    void End(const SStatsEnd&) override {}
};

class CJsonPrinter final : public IStatsPrinter {
  public:
    void Begin(const SStatsHead& head) override {
        std::string open = JsonText({{"schema", kSchemaVersion},
                                     {"quantity", head.text.quantity},
                                     {"unit", head.text.symbol},
                                     {"deviationUnit", head.text.difference},
                                     {"parameters", head.parameters}});
        open.pop_back();
        Print(open + ",\n\"rows\":[");
    }
    void Row(const SStatsRow& row) override {
        Print((first_ ? "\n" : ",\n") + JsonText(Describe(row)));
        first_ = false;
    }
    void End(const SStatsEnd& end) override {
        Print(fmt::format("\n],\n\"skipped\":{},\"complete\":{},\"findings\":{}}}\n", end.skipped, end.complete,
                          JsonText(FindingsJson(end.findings))));
    }

  private:
    static Json Describe(const SStatsRow& row) {
        const reduce::CStats& s = row.figures;
        const SRegion& r = row.region;
        Json item = {{"frame", row.frame},
                     {"region", r.name},
                     {"area", {{"x", r.x}, {"y", r.y}, {"width", r.width}, {"height", r.height}}},
                     {"counted", s.count},
                     {"status", StatusJson(row)}};
        if (!HasFigures(row)) return item;
        const auto extreme = [](double value, SPoint at) {
            return Json{{"value", ShortestDouble(static_cast<float>(value))}, {"x", at.x}, {"y", at.y}};
        };
        item["min"] = extreme(s.minimum, s.minimumPosition);
        item["max"] = extreme(s.maximum, s.maximumPosition);
        item["mean"] = s.mean;
        item["std"] = s.standardDeviation;
        return item;
    }

    bool first_ = true;
};

}  // namespace

std::unique_ptr<IStatsPrinter> MakeTablePrinter() { return std::make_unique<CTablePrinter>(); }
std::unique_ptr<IStatsPrinter> MakeCsvPrinter() { return std::make_unique<CCsvPrinter>(); }
std::unique_ptr<IStatsPrinter> MakeJsonPrinter() { return std::make_unique<CJsonPrinter>(); }

}  // namespace ovix::app
