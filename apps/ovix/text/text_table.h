#pragma once

#include <optional>
#include <string>
#include <vector>

namespace ovix::app {

/// Rows of UTF-8 text in aligned columns under a header. Widths count characters, not bytes.
class CTextTable {
  public:
    enum EAlign { Left, Right };
    struct SColumn {
        std::string title;  ///< with the unit where the column holds numbers of one
        EAlign align = Left;
    };

    /// Columns whose titles are all empty have no header line.
    explicit CTextTable(std::vector<SColumn> columns);
    /// Missing cells are empty; surplus ones are dropped. Characters that a terminal would obey are shown.
    void Row(std::vector<std::string> cells);
    /// All lines, each with its newline and without trailing blanks. On a terminal, columns of words are shortened
    /// until they fit; where that is not enough, columns go below each other in groups, each of which begins with the
    /// first column.
    std::string Text() const;

  private:
    using Widths = std::vector<std::size_t>;
    void Narrow(Widths& widths, std::size_t room) const;
    std::vector<std::vector<std::size_t>> Groups(const Widths& widths, std::optional<std::size_t> room) const;
    std::string Line(const std::vector<std::string>& cells, const Widths& widths,
                     const std::vector<std::size_t>& group) const;

    std::vector<SColumn> columns_;
    std::vector<std::vector<std::string>> rows_;
};

/// The number of characters of a UTF-8 text; each is taken to be one cell wide.
std::size_t TextWidth(const std::string& text);

}  // namespace ovix::app
