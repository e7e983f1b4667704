#include "Zorb/Table.h"

#include <algorithm>
#include <ostream>
#include <string_view>

namespace Zorb {

namespace {

constexpr std::size_t kGap = 2;

std::size_t widthOf(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xc0) != 0x80;
  }));
}

}  // namespace

void Table::write(std::ostream& out, std::size_t indent, bool colours) const {
  std::vector<std::size_t> widths(columns_.size());
  for (const auto& row : rows_) {
    for (std::size_t at = 0; at != row.size(); ++at) {
      widths[at] = std::max(widths[at], widthOf(row[at].text));
    }
  }
  for (const auto& row : rows_) {
    std::string line;
    std::size_t blanks = indent;
    for (std::size_t at = 0; at != row.size(); ++at) {
      const Cell& cell = row[at];
      const std::size_t padding = widths[at] - widthOf(cell.text);
      const bool right = columns_[at] == Align::right;
      if (right) blanks += padding;
      if (!cell.text.empty()) {
        line.append(blanks, ' ');
        line += styled(cell.text, cell.style, colours);
        blanks = 0;
      }
      blanks += kGap + (right ? 0 : padding);
    }
    out << line << '\n';
  }
}

}  // namespace Zorb
