#include <gtest/gtest.h>

#include <array>
#include <string>

#include "Fabric/Object.h"
#include "Fabric/Quote.h"

namespace Fabric {
namespace {

constexpr std::array<std::string_view, 4> kWords = {"name", "connected", "reachable", "count"};

TEST(QuoteTest, LongText_IsCutBetweenCharacters) {
  EXPECT_EQ(quote("a\"b\n"), R"("a\"b\n")");
  EXPECT_EQ(quote(std::string(80, 'x')), '"' + std::string(80, 'x') + '"');
  EXPECT_EQ(quote(std::string(81, 'x')), '"' + std::string(80, 'x') + "\"...");
  EXPECT_EQ(quote(std::string(79, 'x') + "é"), '"' + std::string(79, 'x') + "\"...");
}

TEST(QuoteTest, Value_IsNamedByItsKind) {
  EXPECT_EQ(describe(Value()), "null");
  EXPECT_EQ(describe(Value(true)), "true");
  EXPECT_EQ(describe(Value(1.5)), "the number 1.5");
  EXPECT_EQ(describe(Value("yes")), "the string \"yes\"");
  EXPECT_EQ(describe(Value(Value::Array())), "a list");
  EXPECT_EQ(describe(Value(Object())), "an object");
}

TEST(QuoteTest, Alternatives_AreJoinedAsASentence) {
  EXPECT_EQ(alternatives(kWords), "name, connected, reachable or count");
  EXPECT_EQ(alternatives(std::span(kWords).first(1)), "name");
}

TEST(QuoteTest, ClosestWord_IsAtMostTwoSlipsAway) {
  EXPECT_EQ(closest("conected", kWords), "connected");
  EXPECT_EQ(closest("connetced", kWords), "connected");
  EXPECT_EQ(closest("nmae", kWords), "name");
  EXPECT_EQ(closest("Name", kWords), "name");
  EXPECT_EQ(closest("counts", kWords), "count");
  EXPECT_EQ(closest("colour", kWords), "");
  EXPECT_EQ(closest("x", kWords), "");
  EXPECT_EQ(closest(std::string(100'000, 'n'), kWords), "");
}

}  // namespace
}  // namespace Fabric
