#include "apps/ovix/text/text_table.h"

#include <algorithm>
#include <utility>

#include "apps/ovix/fault.h"
#include "apps/ovix/text/console.h"

namespace ovix::app {

std::size_t TextWidth(const std::string& text) {
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

namespace {

/// The first characters, with an ellipsis where some are left out.
std::string Shortened(const std::string& text, std::size_t width) {
    if (TextWidth(text) <= width) return text;
    std::size_t end = 0;
    for (std::size_t shown = 0; end < text.size(); ++end) {
        const bool begins = (static_cast<unsigned char>(text[end]) & 0xC0) != 0x80;
        if (begins && ++shown == width) break;
    }
    return text.substr(0, end) + "…";
}

}  // namespace

/// Takes from the widest columns of words what a terminal has no room for; numbers are never shortened.
void CTextTable::Narrow(Widths& widths, std::size_t room) const {
    constexpr std::size_t kLeast = 12;
    for (;;) {
        std::size_t sum = 2 * (widths.size() - 1), widest = widths.size();
        for (std::size_t i = 0; i < widths.size(); ++i) {
            sum += widths[i];
            const bool words = columns_[i].align == Left && widths[i] > kLeast;
            if (words && (widest == widths.size() || widths[i] > widths[widest])) widest = i;
        }
        if (sum <= room || widest == widths.size()) return;
        widths[widest] -= std::min(sum - room, widths[widest] - kLeast);
    }
}

CTextTable::CTextTable(std::vector<SColumn> columns) : columns_(std::move(columns)) {}

void CTextTable::Row(std::vector<std::string> cells) {
    cells.resize(columns_.size());
    for (std::string& cell : cells) cell = Printable(cell);
    rows_.push_back(std::move(cells));
}

/// The columns that stand beside each other, group by group.
std::vector<std::vector<std::size_t>> CTextTable::Groups(const Widths& widths, std::optional<std::size_t> room) const {
    std::vector<std::vector<std::size_t>> groups(1);
    std::size_t used = 0;
    for (std::size_t i = 0; i < widths.size(); ++i) {
        if (room && groups.back().size() > 1 && used + widths[i] > *room) {
            groups.push_back({0});
            used = widths[0] + 2;
        }
        groups.back().push_back(i);
        used += widths[i] + 2;
    }
    return groups;
}

std::string CTextTable::Line(const std::vector<std::string>& cells, const Widths& widths,
                             const std::vector<std::size_t>& group) const {
    std::string line;
    for (const std::size_t i : group) {
        const std::string cell = Shortened(cells[i], widths[i]);
        const std::string blanks(widths[i] - TextWidth(cell), ' ');
        line += (columns_[i].align == Right ? blanks + cell : cell + blanks) + "  ";
    }
    line.erase(line.find_last_not_of(' ') + 1);
    return line + '\n';
}

std::string CTextTable::Text() const {
    std::vector<std::string> titles;
    titles.reserve(columns_.size());
    for (const SColumn& column : columns_) titles.push_back(column.title);
    Widths widths(columns_.size());
    const auto widen = [&](const std::vector<std::string>& cells) {
        for (std::size_t i = 0; i < cells.size(); ++i) widths[i] = std::max(widths[i], TextWidth(cells[i]));
    };
    widen(titles);
    for (const auto& row : rows_) widen(row);

    constexpr std::size_t kIndent = 2;  // that some callers put ahead of each line
    std::optional<std::size_t> room = TerminalWidth();
    if (room) {
        *room = std::max(*room, kIndent) - kIndent;
        Widths narrow = widths;
        Narrow(narrow, *room);
        // Words are cut where that is enough; else nothing but what is wider than the terminal alone.
        if (Groups(narrow, room).size() == 1) widths = narrow;
        for (std::size_t i = 0; i < widths.size(); ++i) {
            if (columns_[i].align == Left) widths[i] = std::min(widths[i], *room);
        }
    }
    std::vector<std::string> rules(widths.size());
    for (std::size_t i = 0; i < widths.size(); ++i) {
        for (std::size_t x = 0; x < widths[i]; ++x) rules[i] += "─";
    }
    const bool titled = std::ranges::any_of(titles, [](const std::string& title) { return !title.empty(); });
    std::string text;
    for (const std::vector<std::size_t>& group : Groups(widths, room)) {
        if (!text.empty()) text += '\n';
        if (titled) text += Line(titles, widths, group) + Line(rules, widths, group);
        for (const auto& row : rows_) text += Line(row, widths, group);
    }
    return text;
}

}  // namespace ovix::app
