#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "Platform/Orm/String.h"
#include "Platform/Orm/StringForm.h"

namespace {

enum class Colour { red, green };
void appendTo(std::string& out, Colour colour) { out += colour == Colour::red ? "red" : "green"; }

struct Point {
  int x;
  int y;
  void appendTo(std::string& out) const {
    Orm::appendStringForm(out, x);
    out += ',';
    Orm::appendStringForm(out, y);
  }
};

TEST(StringFormTest, Numbers_AreDecimal) {
  EXPECT_EQ(Orm::stringForm(0), "0");
  EXPECT_EQ(Orm::stringForm(-17), "-17");
  EXPECT_EQ(Orm::stringForm(std::int8_t{-128}), "-128");
  EXPECT_EQ(Orm::stringForm(std::uint8_t{65}), "65");
  EXPECT_EQ(Orm::stringForm(std::numeric_limits<std::uint64_t>::max()), "18446744073709551615");
  EXPECT_EQ(Orm::stringForm(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
}

TEST(StringFormTest, Fractions_AreTheShortestTextThatGivesThemBack) {
  EXPECT_EQ(Orm::stringForm(0.1), "0.1");
  EXPECT_EQ(Orm::stringForm(300.0), "300");
  EXPECT_EQ(Orm::stringForm(0.1 + 0.2), "0.30000000000000004");
  EXPECT_EQ(Orm::stringForm(-1e300), "-1e+300");
  EXPECT_EQ(Orm::stringForm(std::numeric_limits<double>::infinity()), "inf");
  EXPECT_EQ(Orm::stringForm(-std::numeric_limits<double>::denorm_min()), "-5e-324");
}

TEST(StringFormTest, BooleansAndCharacters_AreNoNumbers) {
  EXPECT_EQ(Orm::stringForm(true), "true");
  EXPECT_EQ(Orm::stringForm(false), "false");
  EXPECT_EQ(Orm::stringForm('x'), "x");
}

TEST(StringFormTest, Texts_AreThemselves) {
  EXPECT_EQ(Orm::stringForm("literal"), "literal");
  EXPECT_EQ(Orm::stringForm(std::string("string")), "string");
  EXPECT_EQ(Orm::stringForm(std::string_view("view")), "view");
  EXPECT_EQ(Orm::stringForm(Orm::String("shared")), "shared");
  EXPECT_EQ(Orm::stringForm(Orm::String()), "");
}

TEST(StringFormTest, ClassesAndEnumerations_SayTheirOwn) {
  EXPECT_EQ(Orm::stringForm(Point{1, -2}), "1,-2");
  EXPECT_EQ(Orm::stringForm(Colour::green), "green");
}

TEST(StringFormTest, Append_KeepsWhatIsThere) {
  std::string text("a");
  Orm::appendStringForm(text, 1);
  Orm::appendStringForm(text, "b");
  EXPECT_EQ(text, "a1b");
}

}  // namespace
