#include <gtest/gtest.h>

#include <string>

#include "Fabric/Glob.h"

namespace Fabric {
namespace {

TEST(GlobTest, Star_StandsForAnyCharacters) {
  EXPECT_TRUE(globMatches("*", ""));
  EXPECT_TRUE(globMatches("*", "leaf1"));
  EXPECT_TRUE(globMatches("leaf*", "leaf"));
  EXPECT_TRUE(globMatches("*a*b*", "xaxbx"));
  EXPECT_TRUE(globMatches("**1", "leaf/1"));
  EXPECT_FALSE(globMatches("leaf*", "spine1"));
  EXPECT_FALSE(globMatches("*a*b", "ba"));
}

TEST(GlobTest, QuestionMark_StandsForOneCharacter) {
  EXPECT_TRUE(globMatches("leaf?", "leaf1"));
  EXPECT_FALSE(globMatches("leaf?", "leaf"));
  EXPECT_FALSE(globMatches("leaf?", "leaf10"));
}

TEST(GlobTest, Set_StandsForOneOfItsCharacters) {
  EXPECT_TRUE(globMatches("leaf[1-3x]", "leaf2"));
  EXPECT_TRUE(globMatches("leaf[1-3x]", "leafx"));
  EXPECT_FALSE(globMatches("leaf[1-3x]", "leaf4"));
  EXPECT_TRUE(globMatches("leaf[!1-3]", "leaf4"));
  EXPECT_FALSE(globMatches("leaf[^1-3]", "leaf2"));
  EXPECT_TRUE(globMatches("[]]", "]"));
  EXPECT_TRUE(globMatches("[a-]*", "-x"));
  EXPECT_TRUE(globMatches("*[5-7]0", "leaf160"));
}

TEST(GlobTest, SetWithoutItsEnd_StandsForItself) {
  EXPECT_TRUE(globMatches("a[1", "a[1"));
  EXPECT_TRUE(globMatches("a[", "a["));
  EXPECT_TRUE(globMatches("a[!", "a[!"));
  EXPECT_FALSE(globMatches("a[1", "a1"));
}

TEST(GlobTest, Backslash_TakesTheMeaningFromTheNext) {
  EXPECT_TRUE(globMatches("a\\*", "a*"));
  EXPECT_FALSE(globMatches("a\\*", "ab"));
  EXPECT_TRUE(globMatches("a\\", "a\\"));
}

TEST(GlobTest, ManyStars_CostTheProductOfBothSizes) {
  std::string pattern;
  for (int at = 0; at < 1000; ++at) {
    pattern += "*a";
  }
  EXPECT_FALSE(globMatches(pattern + "b", std::string(4000, 'a')));
}

TEST(GlobTest, OnlyTextsWithSuchCharacters_ArePatterns) {
  EXPECT_TRUE(isGlob("leaf*"));
  EXPECT_TRUE(isGlob("leaf?"));
  EXPECT_TRUE(isGlob("leaf[12]"));
  EXPECT_FALSE(isGlob("leaf1"));
}

}  // namespace
}  // namespace Fabric
