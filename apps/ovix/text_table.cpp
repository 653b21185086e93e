#include "apps/ovix/text_table.h"

#include <algorithm>
#include <utility>

namespace ovix::app {

std::size_t TextWidth(const std::string& text) {
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

CTextTable::CTextTable(std::vector<SColumn> columns) : columns_(std::move(columns)) {}

void CTextTable::Row(std::vector<std::string> cells) {
    cells.resize(columns_.size());
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

    std::string text;
    const auto line = [&](const std::vector<std::string>& cells) {
        for (std::size_t i = 0; i < cells.size(); ++i) {
            const std::string blanks(widths[i] - TextWidth(cells[i]), ' ');
            text += columns_[i].align == Right ? blanks + cells[i] : cells[i] + blanks;
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
