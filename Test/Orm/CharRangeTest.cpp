#include <gtest/gtest.h>

#include "Platform/Orm/CharRange.h"

namespace {

using Orm::CharRange;

TEST(CharRangeTest, NeedString_PassesOverWhatComesNext) {
  CharRange range("group:path");
  EXPECT_TRUE(range.needString("group"));
  EXPECT_TRUE(range.needString(":"));
  EXPECT_EQ(range.rest(), "path");
  EXPECT_FALSE(range.consumed());
  EXPECT_TRUE(range.needString("path"));
  EXPECT_TRUE(range.consumed());
  EXPECT_FALSE(range.failed());
}

TEST(CharRangeTest, NeedString_OfNothingIsAlwaysThere) {
  CharRange range("");
  EXPECT_TRUE(range.needString(""));
  EXPECT_TRUE(range.consumed());
}

TEST(CharRangeTest, NeedString_OfAnythingElseFailsForGood) {
  CharRange range("group");
  EXPECT_FALSE(range.needString("groups"));
  EXPECT_TRUE(range.failed());
  EXPECT_FALSE(range.needString("group"));
  EXPECT_EQ(range.readUntil("p"), "");
  EXPECT_EQ(range.readUntilLast("p"), "");
  EXPECT_FALSE(range.consumed());
  EXPECT_EQ(range.rest(), "group");
}

TEST(CharRangeTest, ReadUntil_StopsAtTheFirstDelimiterWhichStays) {
  CharRange range("a::b::c");
  EXPECT_EQ(range.readUntil("::"), "a");
  EXPECT_EQ(range.rest(), "::b::c");
  EXPECT_EQ(range.readUntil("::"), "");
  EXPECT_TRUE(range.needString("::"));
  EXPECT_EQ(range.readUntil("c"), "b::");
}

TEST(CharRangeTest, ReadUntilLast_StopsAtTheLastDelimiterWhichStays) {
  CharRange range("a/b/c");
  EXPECT_EQ(range.readUntilLast("/"), "a/b");
  EXPECT_EQ(range.rest(), "/c");
}

TEST(CharRangeTest, ReadUntil_WithoutADelimiterFails) {
  CharRange first("abc");
  EXPECT_EQ(first.readUntil("/"), "");
  EXPECT_TRUE(first.failed());
  CharRange last("abc");
  EXPECT_EQ(last.readUntilLast("/"), "");
  EXPECT_TRUE(last.failed());
}

TEST(CharRangeTest, Consumed_IsFalseAfterAFailureThoughNothingIsLeft) {
  CharRange range("");
  EXPECT_FALSE(range.needString("x"));
  EXPECT_FALSE(range.consumed());
}

}  // namespace
