#pragma once

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
    /// All lines, each with its newline and without trailing blanks; on a terminal, columns of words are shortened
    /// until they fit.
    std::string Text() const;

  private:
    void Narrow(std::vector<std::size_t>& widths, std::size_t room) const;

    std::vector<SColumn> columns_;
    std::vector<std::vector<std::string>> rows_;
};

/// The number of characters of a UTF-8 text; each is taken to be one cell wide.
std::size_t TextWidth(const std::string& text);

}  // namespace ovix::app
