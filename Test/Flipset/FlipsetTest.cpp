#include <gtest/gtest.h>

#include <string>

#include "Platform/Flipset/Flipset.h"

namespace {

constexpr const char* kFile = "ControllerCommon.json";

/// Leaves no toggle set.
class FlipsetTest : public testing::Test {
 protected:
  void TearDown() override { Flipset::toggleDelAll(); }

  static std::string errorOf(std::string_view text) {
    try {
      Flipset::textIs("f.json", text);
    } catch (const Flipset::ToggleError& error) {
      return error.what();
    }
    return "";
  }
};

TEST_F(FlipsetTest, Unset_HasTheDefaultOfWhoeverAsks) {
  EXPECT_TRUE(Flipset::toggle(kFile, "Any", true));
  EXPECT_FALSE(Flipset::toggle(kFile, "Any", false));
  Flipset::toggleIs(kFile, "Other", true);
  EXPECT_FALSE(Flipset::toggle(kFile, "Any", false));
}

TEST_F(FlipsetTest, ToggleIs_SetsTheToggleOfThatFileAlone) {
  Flipset::toggleIs(kFile, "Any", true);
  EXPECT_TRUE(Flipset::toggle(kFile, "Any", false));
  EXPECT_FALSE(Flipset::toggle("Other.json", "Any", false));
  Flipset::toggleIs(kFile, "Any", false);
  EXPECT_FALSE(Flipset::toggle(kFile, "Any", true));
}

TEST_F(FlipsetTest, ToggleDel_PutsTheDefaultBack) {
  Flipset::toggleDel(kFile, "Any");
  Flipset::toggleIs(kFile, "Any", false);
  Flipset::toggleIs(kFile, "Other", false);
  Flipset::toggleDel(kFile, "Never");
  Flipset::toggleDel(kFile, "Any");
  EXPECT_TRUE(Flipset::toggle(kFile, "Any", true));
  EXPECT_FALSE(Flipset::toggle(kFile, "Other", true));
  Flipset::toggleDelAll();
  EXPECT_TRUE(Flipset::toggle(kFile, "Other", true));
}

TEST_F(FlipsetTest, TextIs_SetsWhatItNamesAndLeavesTheRest) {
  Flipset::toggleIs(kFile, "Kept", true);
  Flipset::toggleIs(kFile, "Changed", true);
  Flipset::textIs(kFile, R"({ "ControllerMountMonitor" : true,
    "Changed":false,	"":true, "ä": true
  }
)");
  EXPECT_TRUE(Flipset::toggle(kFile, "ControllerMountMonitor", false));
  EXPECT_FALSE(Flipset::toggle(kFile, "Changed", true));
  EXPECT_TRUE(Flipset::toggle(kFile, "", false));
  EXPECT_TRUE(Flipset::toggle(kFile, "ä", false));
  EXPECT_TRUE(Flipset::toggle(kFile, "Kept", false));
}

TEST_F(FlipsetTest, TextIs_AnEmptyObjectSetsNothing) {
  EXPECT_EQ(errorOf("{}"), "");
  EXPECT_EQ(errorOf(" \r\n\t{ \n } \n"), "");
}

TEST_F(FlipsetTest, TextIs_BadTextIsToldWithItsExactPlace) {
  const struct {
    const char* text;
    const char* error;
  } bad[] = {
      {"", "f.json:1:1: the file ends, expected '{'"},
      {"  \n  ", "f.json:2:3: the file ends, expected '{'"},
      {"[]", "f.json:1:1: found '[', expected '{'"},
      {"true", "f.json:1:1: found 't', expected '{'"},
      {"\xef\xbb\xbf{}", "f.json:1:1: found byte 0xef, expected '{'"},
      {"{", "f.json:1:2: the file ends, expected a toggle's name in double quotes"},
      {"{ a: true }", "f.json:1:3: found 'a', expected a toggle's name in double quotes"},
      {"{'a': true}", "f.json:1:2: found ''', expected a toggle's name in double quotes"},
      {"{\"a\" true}", "f.json:1:6: found 't', expected ':'"},
      {"{\"a\"}", "f.json:1:5: found '}', expected ':'"},
      {"{\"a\":}", "f.json:1:6: found '}', expected true or false"},
      {"{\"a\": 1}", "f.json:1:7: found '1', expected true or false"},
      {"{\"a\": \"true\"}", "f.json:1:7: found '\"', expected true or false"},
      {"{\"a\": null}", "f.json:1:7: found 'n', expected true or false"},
      {"{\"a\": True}", "f.json:1:7: found 'T', expected true or false"},
      {"{\"a\": tru", "f.json:1:7: found 't', expected true or false"},
      {"{\"a\": {}}", "f.json:1:7: found '{', expected true or false"},
      {"{\"a\": trueish}", "f.json:1:11: found 'i', expected ',' or '}'"},
      {"{\"a\": true", "f.json:1:11: the file ends, expected ',' or '}'"},
      {"{\"a\": true \"b\": true}", "f.json:1:12: found '\"', expected ',' or '}'"},
      {"{\"a\": true,}", "f.json:1:12: found '}', expected a toggle's name in double quotes"},
      {"{\"a\": true,,}", "f.json:1:12: found ',', expected a toggle's name in double quotes"},
      {"{\n  \"a\": true,\n  \"b\": maybe\n}", "f.json:3:8: found 'm', expected true or false"},
      {"{\n  \"a\": true,\n  \"a\": false\n}",
       "f.json:3:3: the toggle \"a\" is set twice, expected it once"},
      {"{\"\xc3\": true, \"\xc3\": false}",
       "f.json:1:13: the toggle \"?\" is set twice, expected it once"},
      {"{\"a\x7f\": true, \"a\x7f\": false}",
       "f.json:1:14: the toggle \"a?\" is set twice, expected it once"},
      {"{\"a", "f.json:1:4: the file ends, expected '\"' at the end of the name"},
      {"{\"a\\\"\": true}",
       "f.json:1:4: found '\\', expected a name without escapes and control characters"},
      {"{\"a\nb\": true}",
       "f.json:1:4: found byte 0x0a, expected a name without escapes and control characters"},
      {"{} {}", "f.json:1:4: found '{', expected the end of the file"},
      {"{}}", "f.json:1:3: found '}', expected the end of the file"},
      {"{} // no comments", "f.json:1:4: found '/', expected the end of the file"},
      {"{\"a\": true}\r\n\x01", "f.json:2:1: found byte 0x01, expected the end of the file"},
  };
  for (const auto& [text, error] : bad) EXPECT_EQ(errorOf(text), error) << text;
}

TEST_F(FlipsetTest, TextIs_ANulIsNotTheEnd) {
  EXPECT_EQ(errorOf(std::string_view("{}\0", 3)),
            "f.json:1:3: found byte 0x00, expected the end of the file");
}

TEST_F(FlipsetTest, TextIs_BadTextChangesNothing) {
  Flipset::toggleIs("f.json", "a", true);
  EXPECT_NE(errorOf("{\"a\": false, \"b\": true, \"c\": 3}"), "");
  EXPECT_TRUE(Flipset::toggle("f.json", "a", false));
  EXPECT_FALSE(Flipset::toggle("f.json", "b", false));
}

}  // namespace
