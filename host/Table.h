#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace host {

// A table of texts in columns, measured as a terminal shows them. Columns without a text in any row are left
// out.
class Table {
 public:
  enum class Align { Left, Right };

  struct Column {
    std::string Title;
    Align Alignment = Align::Left;
    bool Wraps = false;  // gives way when the table is too wide; nothing is cut off
  };

  explicit Table(std::vector<Column> oColumns) : m_oColumns(std::move(oColumns)) {}

  // One cell for each column.
  void Add(std::vector<std::string> zvCells);

  // The whole table, at most lvWidth columns wide where the columns that wrap allow it.
  std::string Text(std::size_t lvWidth) const;

 private:
  std::vector<std::size_t> Widths(std::size_t lvWidth) const;
  std::string Line(const std::vector<std::string>& zvCells, const std::vector<std::size_t>& lvWidths) const;

  std::vector<Column> m_oColumns;
  std::vector<std::vector<std::string>> m_oRows;
};

}  // namespace host
