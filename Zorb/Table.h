#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "Zorb/Style.h"

namespace Zorb {

/// Rows of cells in aligned columns, two spaces apart. Widths count characters of UTF-8.
class Table {
 public:
  enum class Align : std::uint8_t { left, right };

  struct Cell {
    std::string text;
    Style style = Style::plain;
  };

  explicit Table(std::vector<Align> columns) : columns_(std::move(columns)) {}

  /// At most as many cells as there are columns; those that are missing are empty.
  void add(std::vector<Cell> row) { rows_.push_back(std::move(row)); }
  bool empty() const { return rows_.empty(); }

  /// Each row on a line of its own behind `indent` spaces, without blanks at its end.
  void write(std::ostream& out, std::size_t indent, bool colours) const;

 private:
  std::vector<Align> columns_;
  std::vector<std::vector<Cell>> rows_;
};

}  // namespace Zorb
