#include <gtest/gtest.h>

#include <sstream>

#include "Zorb/Table.h"

namespace Zorb {
namespace {

constexpr auto kLeft = Table::Align::left;
constexpr auto kRight = Table::Align::right;

std::string textOf(const Table& table, std::size_t indent = 0, bool colours = false) {
  std::ostringstream out;
  table.write(out, indent, colours);
  return out.str();
}

TEST(TableTest, ColumnsAreAligned) {
  Table table({kLeft, kRight, kLeft});
  table.add({{"a"}, {"1"}, {"x"}});
  table.add({{"long"}, {"200"}, {"y"}});
  EXPECT_EQ(textOf(table), "a       1  x\nlong  200  y\n");
  EXPECT_EQ(textOf(table, 2), "  a       1  x\n  long  200  y\n");
}

TEST(TableTest, NoBlanksAtTheEndOfALine) {
  Table table({kLeft, kLeft, kRight});
  table.add({{"a"}});
  table.add({{"b"}, {""}, {"1"}});
  table.add({{"c"}, {"word"}, {""}});
  table.add({});
  EXPECT_EQ(textOf(table), "a\nb        1\nc  word\n\n");
}

TEST(TableTest, WidthsCountCharacters) {
  Table table({kLeft, kLeft});
  table.add({{"\xc3\xa4\xc3\xb6"}, {"x"}});
  table.add({{"abc"}, {"y"}});
  EXPECT_EQ(textOf(table), "\xc3\xa4\xc3\xb6   x\nabc  y\n");
}

TEST(TableTest, ColoursDoNotCount) {
  Table table({kLeft, kLeft});
  table.add({{"a", Style::bad}, {"x"}});
  table.add({{"bb"}, {"y"}});
  EXPECT_EQ(textOf(table, 0, true), "\x1b[31ma\x1b[0m   x\nbb  y\n");
  EXPECT_EQ(textOf(table), "a   x\nbb  y\n");
}

}  // namespace
}  // namespace Zorb
