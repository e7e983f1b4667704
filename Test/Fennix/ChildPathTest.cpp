#include <gtest/gtest.h>

#include "Platform/Fennix/ChildPath.h"
#include "Platform/Orm/StringForm.h"

namespace {

using Fennix::ChildPath;

TEST(ChildPathTest, Text_IsTheDirectorysPathAndTheName) {
  const ChildPath path("/a/b", "c");
  EXPECT_EQ(path.text(), "/a/b/c");
  EXPECT_EQ(Orm::stringForm(path), "/a/b/c");
  EXPECT_FALSE(path.empty());
  EXPECT_EQ(path.directory(), "/a/b");
  EXPECT_EQ(path.name(), "c");
}

TEST(ChildPathTest, Text_BelowTheRootHasOneSlash) {
  const ChildPath path("/", "c");
  EXPECT_EQ(path.text(), "/c");
  EXPECT_EQ(Orm::stringForm(path), "/c");
}

TEST(ChildPathTest, NameWithoutADirectory_StandsBehindASlash) {
  const ChildPath path("", "c");
  EXPECT_FALSE(path.empty());
  EXPECT_EQ(path.text(), "/c");
}

TEST(ChildPathTest, Empty_HasNoText) {
  const ChildPath path;
  EXPECT_TRUE(path.empty());
  EXPECT_EQ(path.text(), "");
  EXPECT_EQ(Orm::stringForm(path), "");
}

TEST(ChildPathTest, Equality_IsThatOfBothParts) {
  EXPECT_EQ(ChildPath("/a", "b"), ChildPath("/a", "b"));
  EXPECT_NE(ChildPath("/a", "b"), ChildPath("/a", "c"));
  EXPECT_NE(ChildPath("/a", "b"), ChildPath("/b", "b"));
  EXPECT_NE(ChildPath("/a", "b"), ChildPath());
}

}  // namespace
