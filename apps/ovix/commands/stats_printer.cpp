#include "apps/ovix/commands/stats_printer.h"

#include <fmt/format.h>

#include <utility>

#include "apps/ovix/facts/error_json.h"
#include "apps/ovix/facts/findings.h"
#include "apps/ovix/facts/scene_json.h"
#include "apps/ovix/output/output_file.h"
#include "apps/ovix/text/number_text.h"

namespace ovix::app {

namespace {

std::string Exact(double value) { return ExactNumber(ShortestDouble(static_cast<float>(value))); }

template <class T>
std::string OrNothing(const std::optional<T>& value) {
    return value ? fmt::format("{}", *value) : std::string();
}

class CCsvPrinter final : public IStatsPrinter {
  public:
    CCsvPrinter(const SStatsWish& wish, StatsSink sink) : wish_(wish), sink_(std::move(sink)) {}

    void Begin(const SStatsHead& head) override {
        if (unit_.empty()) {
            unit_ = head.text.symbol;
            deviation_ = head.text.difference;
            sink_(wish_.profile ? ProfileHead() : FiguresHead(), {});
        } else if (unit_ != head.text.symbol) {
            throw CFault({.file = head.file,
                          .expected = "values in " + unit_ + " as in the file before",
                          .found = head.text.symbol,
                          .advice = "--unit says which"});
        }
    }
    void Row(const SStatsRow& row) override {
        const std::string start =
            fmt::format("{},{},{},{},{},{}", CsvField(row.file), row.frame, row.time ? TimeText(*row.time) : "",
                        OrNothing(row.counter), OrNothing(row.preset), CsvField(row.region->Shape().name));
        sink_(wish_.profile ? ProfileLines(start, row) : start + FiguresLine(row), {});
    }

  private:
    static constexpr const char* kStart = "file,frame,time (UTC),counter,preset,region";

    std::string Field(const std::string& name, const std::string& unit) const {
        return ',' + CsvField(name + " (" + unit + ")");
    }
    std::string ProfileHead() const {
        return fmt::format("{},i,x (px),y (px){},status\n", kStart, Field("value", unit_));
    }
    static std::string ProfileLines(const std::string& start, const SStatsRow& row) {
        std::string lines;
        for (std::size_t i = 0; i < row.profile.size(); ++i) {
            const SProfilePixel& pixel = row.profile[i];
            lines +=
                fmt::format("{},{},{},{},{},{}\n", start, i, pixel.at.x, pixel.at.y, Exact(pixel.value), pixel.status);
        }
        return lines;
    }

    std::string FiguresHead() const {
        std::string line = std::string(kStart) + ",kind,x (px),y (px),width (px),height (px),pixels (px),counted (px)";
        line += Field("min", unit_) + Field("max", unit_) + Field("mean", unit_) + Field("std", deviation_);
        line += ",min x (px),min y (px),max x (px),max y (px),good (px)";
        for (const SStatusFlag& flag : kStatusFlags) line += fmt::format(",{} (px)", flag.key);
        if (wish_.pixels == measure::EPixels::Counted)
            line += Field("min of good", unit_) + Field("max of good", unit_) + Field("mean of good", unit_) +
                    Field("std of good", deviation_);
        for (const double percent : wish_.percents) line += Field(fmt::format("p{}", percent), unit_);
        if (!wish_.bins) return line + '\n';
        const measure::SHistogram bins{
            .low = wish_.binLimits->first, .high = wish_.binLimits->second, .counts = std::vector<u64>(wish_.bins)};
        line += ",below (px)";
        for (std::size_t i = 0; i < bins.counts.size(); ++i)
            line += ',' + CsvField(fmt::format("{} to {} {} (px)", bins.Edge(i), bins.Edge(i + 1), unit_));
        return line + ",above (px)\n";
    }
    static std::string FourFigures(const measure::SPixelFigures& s) {
        if (!s.count) return ",,,,";
        return fmt::format(",{},{},{},{}", Exact(s.minimum), Exact(s.maximum), ExactNumber(s.mean),
                           ExactNumber(s.standardDeviation));
    }
    static std::string FiguresLine(const SStatsRow& row) {
        const measure::SPixelFigures& s = row.figures;
        const measure::SRegion& box = row.region->Bounds();
        std::string line = fmt::format(",{},{},{},{},{},{},{}", measure::ShapeWord(row.region->Shape().kind), box.x,
                                       box.y, box.width, box.height, s.pixels, s.count);
        line += FourFigures(s);
        line += s.count ? fmt::format(",{},{},{},{}", s.minimumPosition.x, s.minimumPosition.y, s.maximumPosition.x,
                                      s.maximumPosition.y)
                        : ",,,,";
        line += fmt::format(",{}", s.good);
        for (const SStatusFlag& flag : kStatusFlags) line += fmt::format(",{}", CountedUnder(s, flag));
        if (row.ofGood) line += FourFigures(*row.ofGood);
        for (const double value : row.percentiles) line += ',' + ExactNumber(value);
        if (row.histogram) {
            line += fmt::format(",{}", row.histogram->below);
            for (const u64 count : row.histogram->counts) line += fmt::format(",{}", count);
            line += fmt::format(",{}", row.histogram->above);
        }
        return line + '\n';
    }

    SStatsWish wish_;
    StatsSink sink_;
    std::string unit_;
    std::string deviation_;
};

/// One input gives one document, several a list of such.
class CJsonPrinter final : public IStatsPrinter {
  public:
    CJsonPrinter(const SStatsWish& wish, StatsSink sink, bool hasRows)
        : wish_(wish), sink_(std::move(sink)), hasRows_(hasRows) {}

    void Open(std::size_t inputs) override {
        several_ = inputs > 1;
        if (several_) sink_(fmt::format("{{\"schema\":{},\"sources\":[", kSchemaVersion), kEndOfList);
    }
    void Begin(const SStatsHead& head) override {
        std::string open = JsonText({{"schema", kSchemaVersion},
                                     {"file", head.file},
                                     {"quantity", head.text.quantity},
                                     {"unit", head.text.symbol},
                                     {"deviationUnit", head.text.difference},
                                     {"pixels", wish_.pixels == measure::EPixels::Good ? "good" : "counted"},
                                     {"parameters", head.parameters}});
        open.pop_back();
        firstRow_ = true;
        sink_(Next() + open + (hasRows_ ? ",\n\"rows\":[" : ""),
              std::string("\n],\n\"complete\":false,\"interrupted\":true}") + (several_ ? kEndOfList : "\n"));
    }
    void Row(const SStatsRow& row) override {
        if (hasRows_) sink_((firstRow_ ? "\n" : ",\n") + JsonText(RowJson(row, wish_)), {});
        firstRow_ = false;
    }
    void End(const SStatsEnd& end) override {
        sink_(fmt::format("{}\"skipped\":{},\"complete\":{},\"findings\":{}}}{}", hasRows_ ? "\n],\n" : ",\n",
                          end.skipped, end.complete, JsonText(FindingsJson(end.findings)), several_ ? "" : "\n"),
              several_ ? kEndOfList : "");
    }
    void Failed(const std::string& file, const CFault& fault) override {
        Json failed{{"schema", kSchemaVersion}, {"file", file}, {"complete", false}, {"error", ErrorJson(fault)}};
        if (hasRows_) failed["rows"] = Json::array();
        sink_(Next() + JsonText(failed), {});
    }
    void Close() override {
        if (several_) sink_(kEndOfList, "");
    }

  private:
    /// What stands ahead of an input's document.
    std::string Next() {
        const bool first = std::exchange(firstSource_, false);
        return several_ ? first ? "\n" : ",\n" : "";
    }
    static constexpr const char* kEndOfList = "\n]}\n";

    SStatsWish wish_;
    StatsSink sink_;
    bool hasRows_;
    bool several_ = false;
    bool firstSource_ = true;
    bool firstRow_ = true;
};

/// What is told to it is told to all printers of the files.
class CFilePrinter final : public IStatsPrinter {
  public:
    CFilePrinter(const SStatsWish& wish, bool json, const std::filesystem::path& target, bool overwrite) {
        files_.push_back(std::make_unique<COutputFile>(target, overwrite));
        if (!json) files_.push_back(std::make_unique<COutputFile>(target.string() + ".json", overwrite));
        if (!json) printers_.push_back(MakeCsvPrinter(wish, Into(0)));
        printers_.push_back(MakeJsonPrinter(wish, Into(files_.size() - 1), json));
    }

    void Open(std::size_t inputs) override {
        for (const auto& printer : printers_) printer->Open(inputs);
    }
    void Begin(const SStatsHead& head) override {
        for (const auto& printer : printers_) printer->Begin(head);
    }
    void Row(const SStatsRow& row) override {
        for (const auto& printer : printers_) printer->Row(row);
        ++rows_;
    }
    void End(const SStatsEnd& end) override {
        for (const auto& printer : printers_) printer->End(end);
    }
    void Failed(const std::string& file, const CFault& fault) override {
        for (const auto& printer : printers_) printer->Failed(file, fault);
    }
    /// The rows come last: who sees them finds the rest there.
    void Close() override {
        const std::string target = files_.front()->Target().string();
        if (!rows_) throw CAppError(ExitBadData, target + ": no row to write");
        for (const auto& printer : printers_) printer->Close();
        while (!files_.empty()) {
            files_.back()->Commit();
            files_.pop_back();
        }
        Say(fmt::format("{}: {} {}", target, rows_, rows_ == 1 ? "row" : "rows"));
    }

  private:
    StatsSink Into(std::size_t file) {
        return [to = files_[file].get()](std::string_view text, std::optional<std::string_view>) {
            to->Write(text.data(), text.size());
        };
    }

    std::vector<std::unique_ptr<COutputFile>> files_;
    std::vector<std::unique_ptr<IStatsPrinter>> printers_;
    u64 rows_ = 0;
};

}  // namespace

std::unique_ptr<IStatsPrinter> MakeCsvPrinter(const SStatsWish& wish, StatsSink sink) {
    return std::make_unique<CCsvPrinter>(wish, std::move(sink));
}

std::unique_ptr<IStatsPrinter> MakeJsonPrinter(const SStatsWish& wish, StatsSink sink, bool hasRows) {
    return std::make_unique<CJsonPrinter>(wish, std::move(sink), hasRows);
}

std::unique_ptr<IStatsPrinter> MakeFilePrinter(const SStatsWish& wish, bool json, const std::filesystem::path& target,
                                               bool overwrite) {
    return std::make_unique<CFilePrinter>(wish, json, target, overwrite);
}

}  // namespace ovix::app
