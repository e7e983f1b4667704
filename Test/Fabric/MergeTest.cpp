#include <gtest/gtest.h>

#include "Fabric/Merge.h"
#include "Fabric/Reader.h"

namespace Fabric {
namespace {

std::string merged(std::string_view target, std::string_view patch) {
  Value value = read("target.json", target);
  merge(value, read("patch.json", patch));
  return toJson(value);
}

TEST(MergeTest, PublishedExamplesOfMergePatch_Hold) {
  EXPECT_EQ(merged(R"({"a":"b"})", R"({"a":"c"})"), R"({"a":"c"})");
  EXPECT_EQ(merged(R"({"a":"b"})", R"({"b":"c"})"), R"({"a":"b","b":"c"})");
  EXPECT_EQ(merged(R"({"a":"b"})", R"({"a":null})"), "{}");
  EXPECT_EQ(merged(R"({"a":"b","b":"c"})", R"({"a":null})"), R"({"b":"c"})");
  EXPECT_EQ(merged(R"({"a":["b"]})", R"({"a":"c"})"), R"({"a":"c"})");
  EXPECT_EQ(merged(R"({"a":"c"})", R"({"a":["b"]})"), R"({"a":["b"]})");
  EXPECT_EQ(merged(R"({"a":{"b":"c"}})", R"({"a":{"b":"d","c":null}})"), R"({"a":{"b":"d"}})");
  EXPECT_EQ(merged(R"({"a":[{"b":"c"}]})", R"({"a":[1]})"), R"({"a":[1]})");
  EXPECT_EQ(merged(R"(["a","b"])", R"(["c","d"])"), R"(["c","d"])");
  EXPECT_EQ(merged(R"({"a":"b"})", R"(["c"])"), R"(["c"])");
  EXPECT_EQ(merged(R"({"a":"foo"})", "null"), "null");
  EXPECT_EQ(merged(R"({"a":"foo"})", R"("bar")"), R"("bar")");
  EXPECT_EQ(merged(R"({"e":null})", R"({"a":1})"), R"({"e":null,"a":1})");
  EXPECT_EQ(merged("[1,2]", R"({"a":"b","c":null})"), R"({"a":"b"})");
  EXPECT_EQ(merged("{}", R"({"a":{"bb":{"ccc":null}}})"), R"({"a":{"bb":{}}})");
}

TEST(MergeTest, MemberThatStays_KeepsItsPlace) {
  EXPECT_EQ(merged(R"({"a":1,"b":2,"c":3})", R"({"d":4,"b":{"x":1},"a":null})"),
            R"({"b":{"x":1},"c":3,"d":4})");
}

TEST(MergeTest, ReplacingObject_RemovesWhatItLacksAndAppendsWhatIsNew) {
  Value target = read("t", "{f: {a: true, b: false, c: true}}");
  Value patch = read("p", "{f: {d: true, b: true}}");
  patch.mutableObject().find("f")->mutableObject().replacesIs(true);

  merge(target, patch);

  EXPECT_EQ(toJson(target), R"({"f":{"b":true,"d":true}})");
  EXPECT_FALSE(target.find("f")->object().replaces());
}

TEST(MergeTest, TreeSharedWithAnother_LeavesTheOtherAlone) {
  Value target = read("t", "{a: {b: 1}, c: {d: 2}}");
  const Value before = target;

  merge(target, read("p", "{a: {b: 3}}"));

  EXPECT_EQ(toJson(before), R"({"a":{"b":1},"c":{"d":2}})");
  EXPECT_EQ(toJson(target), R"({"a":{"b":3},"c":{"d":2}})");
  EXPECT_EQ(&target.find("c")->object(), &before.find("c")->object());
}

}  // namespace
}  // namespace Fabric
