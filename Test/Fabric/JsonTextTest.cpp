#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "Fabric/JsonText.h"

namespace Fabric {
namespace {

using WhenEmpty = JsonSink::WhenEmpty;
using Layout = JsonText::Layout;

template <class Write>
std::string written(Layout layout, Write write) {
  std::ostringstream out;
  {
    JsonText json(out, layout);
    write(json);
  }
  return out.str();
}

std::string stringOf(std::string_view text) {
  std::string out;
  appendJsonString(out, text);
  return out;
}

std::string secondsOf(Orm::Seconds value) {
  std::string out;
  appendSeconds(out, value);
  return out;
}

TEST(JsonTextTest, Indented_MembersOnLinesOfTheirOwn) {
  EXPECT_EQ(written(Layout::indented,
                    [](JsonText& json) {
                      json.beginObject(WhenEmpty::keep);
                      json.wholeMember("a", 1);
                      json.object("b", WhenEmpty::keep, [&] { json.booleanMember("c", false); });
                      json.array("d", WhenEmpty::keep, [&] {
                        json.text("x");
                        json.text("y");
                      });
                      json.endObject();
                    }),
            "{\n  \"a\": 1,\n  \"b\": {\n    \"c\": false\n  },\n"
            "  \"d\": [\n    \"x\",\n    \"y\"\n  ]\n}\n");
}

TEST(JsonTextTest, OneLine_EachRootIsOneLine) {
  EXPECT_EQ(written(Layout::oneLine,
                    [](JsonText& json) {
                      for (const char* const name : {"a", "b"}) {
                        json.beginObject(WhenEmpty::keep);
                        json.textMember("name", name);
                        json.secondsMember("t", 0.5);
                        json.endObject();
                      }
                    }),
            "{\"name\":\"a\",\"t\":0.5}\n{\"name\":\"b\",\"t\":0.5}\n");
}

TEST(JsonTextTest, EmptyObjectIsLeftOut_WithThoseAroundItThatHoldNothingElse) {
  EXPECT_EQ(written(Layout::oneLine,
                    [](JsonText& json) {
                      json.beginObject(WhenEmpty::keep);
                      json.object("outer", WhenEmpty::leaveOut, [&] {
                        json.object("inner", WhenEmpty::leaveOut, [] {});
                        json.array("list", WhenEmpty::leaveOut, [] {});
                      });
                      json.wholeMember("after", 1);
                      json.endObject();
                    }),
            "{\"after\":1}\n");
}

TEST(JsonTextTest, EmptyObjectIsKept_AndSoIsWhatIsAroundIt) {
  EXPECT_EQ(written(Layout::oneLine,
                    [](JsonText& json) {
                      json.beginObject(WhenEmpty::keep);
                      json.object("outer", WhenEmpty::leaveOut, [&] {
                        json.object("gone", WhenEmpty::leaveOut, [] {});
                        json.object("kept", WhenEmpty::keep, [] {});
                        json.object("gone too", WhenEmpty::leaveOut, [] {});
                      });
                      json.endObject();
                    }),
            "{\"outer\":{\"kept\":{}}}\n");
}

TEST(JsonTextTest, EmptyRootIsKept) {
  EXPECT_EQ(written(Layout::indented,
                    [](JsonText& json) {
                      json.beginObject(WhenEmpty::leaveOut);
                      json.endObject();
                    }),
            "{}\n");
}

TEST(JsonTextTest, EmptyTextMemberIsLeftOutWhenAskedTo) {
  EXPECT_EQ(written(Layout::oneLine,
                    [](JsonText& json) {
                      json.beginObject(WhenEmpty::keep);
                      json.textMemberUnlessEmpty("a", "");
                      json.textMember("b", "");
                      json.endObject();
                    }),
            "{\"b\":\"\"}\n");
}

TEST(JsonTextTest, LongDocument_IsWholeAlthoughItIsHandedOnInParts) {
  constexpr int kMembers = 20'000;
  const std::string text = written(Layout::indented, [](JsonText& json) {
    json.beginObject(WhenEmpty::keep);
    for (int at = 0; at != kMembers; ++at) {
      json.object(std::to_string(at), WhenEmpty::leaveOut, [&] {
        json.object("nothing", WhenEmpty::leaveOut, [] {});
        if (at % 2 == 0) json.wholeMember("value", at);
      });
    }
    json.endObject();
  });
  const auto tree = nlohmann::json::parse(text);
  EXPECT_EQ(tree.size(), kMembers / 2U);
  EXPECT_EQ(tree.at("19998").at("value"), 19998);
  EXPECT_FALSE(tree.contains("19999"));
}

TEST(JsonTextTest, StringsAreEscaped) {
  EXPECT_EQ(stringOf("plain/\xc3\xa4"), "\"plain/\xc3\xa4\"");
  EXPECT_EQ(stringOf("a\"b\\c\nd\te\x01"
                     "f"),
            "\"a\\\"b\\\\c\\nd\\te\\u0001f\"");
  EXPECT_EQ(stringOf(""), "\"\"");
  EXPECT_EQ(stringOf("\""), "\"\\\"\"");
}

TEST(JsonTextTest, SecondsToTheMicrosecondWithoutTrailingZeros) {
  EXPECT_EQ(secondsOf(0), "0");
  EXPECT_EQ(secondsOf(12.5), "12.5");
  EXPECT_EQ(secondsOf(300.1), "300.1");
  EXPECT_EQ(secondsOf(0.1 + 0.2), "0.3");
  EXPECT_EQ(secondsOf(0.000001), "0.000001");
  EXPECT_EQ(secondsOf(1e9), "1000000000");
  EXPECT_EQ(secondsOf(-2.25), "-2.25");
}

TEST(JsonTextTest, WholeNumbersOfBothEnds) {
  EXPECT_EQ(written(Layout::oneLine,
                    [](JsonText& json) {
                      json.beginArray(WhenEmpty::keep);
                      json.whole(std::numeric_limits<std::int64_t>::min());
                      json.whole(4294967295);
                      json.endArray();
                    }),
            "[-9223372036854775808,4294967295]\n");
}

}  // namespace
}  // namespace Fabric
