#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <limits>

#include "apps/ovix/commands/stats_printer.h"
#include "apps/ovix/text/console.h"
#include "apps/ovix/text/number_text.h"
#include "apps/ovix/text/text_table.h"

namespace ovix::app {

namespace {

constexpr int kAsked = 9;  ///< worth of a column that is never left out

/// A column that takes its width before its first cell is known.
struct SColumn {
    std::string title;
    std::size_t width;
    int worth;  ///< those of the lowest worth are the first to be left out where a terminal is too narrow
    std::function<std::string(const SStatsRow& row, std::size_t i)> cell;
    bool left = false;
};

std::string StatusWords(u8 status) {
    std::string words;
    for (const SStatusFlag& flag : kStatusFlags) {
        if (status & flag.bit) words += (words.empty() ? "" : ", ") + std::string(flag.text);
    }
    return words.empty() ? "good" : words;
}

template <class T>
std::string OrDash(const std::optional<T>& value) {
    return value ? fmt::format("{}", *value) : "-";
}

class CTablePrinter final : public IStatsPrinter {
  public:
    explicit CTablePrinter(const SStatsWish& wish) : wish_(wish) {}

    void Begin(const SStatsHead& head) override {
        if (begun_ && unit_ == head.unit && symbol_ == head.text.symbol && fileWidth_ >= TextWidth(head.file)) return;
        unit_ = head.unit;
        symbol_ = head.text.symbol;
        fileWidth_ = std::max<std::size_t>(TextWidth(head.file), 4);
        columns_.clear();
        AddStart(head);
        wish_.profile ? AddProfile() : AddFigures();
        LeaveOut();
        std::string title = fmt::format("{}{} in {}", begun_ ? "\n" : "", head.text.quantity, symbol_);
        if (!wish_.profile)
            title += fmt::format(
                ", standard deviation in {}, of {}", head.text.difference,
                wish_.pixels == measure::EPixels::Good ? "pixels without any flag (--good-only)" : "pixels that count");
        Print(title + "\n\n");
        Line([](const SColumn& column) { return column.title; });
        begun_ = true;
    }
    void Row(const SStatsRow& row) override {
        const std::size_t lines = wish_.profile ? row.profile.size() : 1;
        for (std::size_t i = 0; i < lines; ++i) Line([&](const SColumn& column) { return column.cell(row, i); });
    }
    void Close() override {
        if (starred_) Print("\n* of a pixel that bears a flag; --good-only leaves those out\n");
        if (leftOut_) Print(fmt::format("\n{} columns do not fit the terminal; --csv has all\n", leftOut_));
    }

  private:
    void AddStart(const SStatsHead& head) {
        const std::size_t number = fmt::format("{}", head.lastFrame).size();
        columns_ = {
            {"file", fileWidth_, 1, [](const SStatsRow& row, std::size_t) { return Printable(row.file); }, true},
            {"frame", std::max<std::size_t>(number, 5), kAsked,
             [](const SStatsRow& row, std::size_t) { return fmt::format("{}", row.frame); }},
            {"time (UTC)", TextWidth("2026-11-21T08:15:00.250000Z"), 4,
             [](const SStatsRow& row, std::size_t) { return row.time ? TimeText(*row.time) : "-"; }, true},
            {"counter", 8, 3, [](const SStatsRow& row, std::size_t) { return OrDash(row.counter); }},
            {"preset", 6, 3, [](const SStatsRow& row, std::size_t) { return OrDash(row.preset); }},
            {"region", std::max<std::size_t>(head.longestName, 6), head.regions > 1 ? kAsked : 8,
             [](const SStatsRow& row, std::size_t) { return Printable(row.region->Shape().name); }, true}};
    }
    void Add(std::string title, int worth, std::function<std::string(const SStatsRow& row)> cell) {
        columns_.push_back({std::move(title), 9, worth,
                            [cell = std::move(cell)](const SStatsRow& row, std::size_t) { return cell(row); }});
    }
    void AddProfile() {
        const auto add = [this](const char* title, auto cell) {
            columns_.push_back(
                {title, 9, kAsked, [cell](const SStatsRow& row, std::size_t i) { return cell(row.profile[i]); }});
        };
        add("x", [](const SProfilePixel& pixel) { return fmt::format("{}", pixel.at.x); });
        add("y", [](const SProfilePixel& pixel) { return fmt::format("{}", pixel.at.y); });
        add("value", [this](const SProfilePixel& pixel) { return ShownValue(pixel.value, unit_); });
        add("status", [](const SProfilePixel& pixel) { return StatusWords(pixel.status); });
        columns_.back().left = true;
    }
    void AddFigures() {
        using Row = SStatsRow;
        const auto value = [this](const Row& row, double v, u8 status) {
            if (!row.HasFigures()) return std::string("-");
            starred_ = starred_ || status;
            return ShownValue(v, unit_) + (status ? "*" : "");
        };
        const auto place = [](const Row& row, SPoint at) {
            return row.HasFigures() ? fmt::format("{},{}", at.x, at.y) : "-";
        };
        Add("pixels", 7, [](const Row& row) { return fmt::format("{}", row.figures.pixels); });
        Add("min", kAsked, [=](const Row& row) { return value(row, row.figures.minimum, row.minimumStatus); });
        Add("at x,y", 5, [=](const Row& row) { return place(row, row.figures.minimumPosition); });
        Add("max", kAsked, [=](const Row& row) { return value(row, row.figures.maximum, row.maximumStatus); });
        Add("at x,y", 5, [=](const Row& row) { return place(row, row.figures.maximumPosition); });
        Add("mean", kAsked, [=](const Row& row) { return value(row, row.figures.mean, 0); });
        Add("std", 8, [=](const Row& row) { return value(row, row.figures.standardDeviation, 0); });
        for (std::size_t i = 0; i < wish_.percents.size(); ++i) {
            Add(fmt::format("{} %", wish_.percents[i]), kAsked,
                [this, i](const Row& row) { return ShownValue(row.percentiles[i], unit_); });
        }
        Add("good", 6, [](const Row& row) { return fmt::format("{}", row.figures.good); });
        const auto counted = [](const Row& row, std::initializer_list<std::size_t> flags) {
            u32 pixels = 0;
            for (const std::size_t flag : flags) pixels += CountedUnder(row.figures, kStatusFlags[flag]);
            return fmt::format("{}", pixels);
        };
        Add("outside", 2, [=](const Row& row) { return counted(row, {0}); });
        Add("under", 2, [=](const Row& row) { return counted(row, {1}); });
        Add("over", 2, [=](const Row& row) { return counted(row, {2}); });
        Add("excluded", 2, [=](const Row& row) { return counted(row, {3, 4}); });
        Add("no data", 2, [=](const Row& row) { return counted(row, {5}); });
    }
    /// A terminal too narrow has the less worthy columns left out, the last of them first; what is still too wide goes
    /// on in a second line.
    void LeaveOut() {
        leftOut_ = 0;
        const auto width = [this] {
            std::size_t sum = 0;
            for (const SColumn& column : columns_) sum += column.width + 2;
            return sum - 2;
        };
        const auto room = TerminalWidth();
        while (room && width() > *room && columns_.size() > 1) {
            const auto worst = std::ranges::min_element(columns_.rbegin(), columns_.rend(), {}, &SColumn::worth);
            if (worst->worth == kAsked) return;
            columns_.erase(std::next(worst).base());
            ++leftOut_;
        }
    }
    template <class Text>
    void Line(const Text& text) const {
        constexpr std::size_t kFurther = 4;  // blanks ahead of what goes on in another line
        const std::size_t room = TerminalWidth().value_or(std::numeric_limits<std::size_t>::max());
        std::string line, lines;
        const auto end = [&] {
            line.erase(line.find_last_not_of(' ') + 1);
            lines += line + '\n';
        };
        for (const SColumn& column : columns_) {
            const std::string cell = text(column);
            const std::string blanks(column.width - std::min(column.width, TextWidth(cell)), ' ');
            if (!line.empty() && TextWidth(line) + 2 + column.width > room) {
                end();
                line.assign(kFurther, ' ');
            }
            line += (line.empty() ? "" : "  ") + (column.left ? cell + blanks : blanks + cell);
        }
        end();
        Print(lines);
    }

    SStatsWish wish_;
    bool begun_ = false;
    EUnit unit_ = Counts;
    std::string symbol_;
    std::size_t fileWidth_ = 0;
    std::vector<SColumn> columns_;
    std::size_t leftOut_ = 0;
    bool starred_ = false;
};

}  // namespace

std::unique_ptr<IStatsPrinter> MakeTablePrinter(const SStatsWish& wish) {
    return std::make_unique<CTablePrinter>(wish);
}

}  // namespace ovix::app
