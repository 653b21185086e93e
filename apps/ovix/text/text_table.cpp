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
void CTextTable::Narrow(std::vector<std::size_t>& widths, std::size_t room) const {
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

std::string CTextTable::Text() const {
    std::vector<std::string> titles;
    titles.reserve(columns_.size());
    for (const SColumn& column : columns_) titles.push_back(column.title);
    std::vector<std::size_t> widths(columns_.size());
    const auto widen = [&](const std::vector<std::string>& cells) {
        for (std::size_t i = 0; i < cells.size(); ++i) widths[i] = std::max(widths[i], TextWidth(cells[i]));
    };
    widen(titles);
    for (const auto& row : rows_) widen(row);

    constexpr std::size_t kIndent = 2;  // that some callers put ahead of each line
    if (const auto room = TerminalWidth()) Narrow(widths, std::max(*room, kIndent) - kIndent);
    std::string text;
    const auto line = [&](const std::vector<std::string>& cells) {
        for (std::size_t i = 0; i < cells.size(); ++i) {
            const std::string cell = Shortened(cells[i], widths[i]);
            const std::string blanks(widths[i] - TextWidth(cell), ' ');
            text += columns_[i].align == Right ? blanks + cell : cell + blanks;
            text += "  ";
        }
        text.erase(text.find_last_not_of(' ') + 1);
        text += '\n';
    };
    if (std::any_of(titles.begin(), titles.end(), [](const std::string& title) { return !title.empty(); })) {
        line(titles);
        std::vector<std::string> rules;
        rules.reserve(widths.size());
        for (std::size_t width : widths) {
            std::string rule;
            for (std::size_t i = 0; i < width; ++i) rule += "─";
            rules.push_back(rule);
        }
        line(rules);
    }
    for (const auto& row : rows_) line(row);
    return text;
}

}  // namespace ovix::app
