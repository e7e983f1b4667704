#include <gtest/gtest.h>

#include "Fabric/JsonTree.h"
#include "Fabric/Reader.h"

namespace Fabric {
namespace {

using WhenEmpty = JsonSink::WhenEmpty;

constexpr const char* kLeaf1 = "02:00:00:00:00:0a";
constexpr const char* kLeaf2 = "02:00:00:00:00:0b";

const SwitchResolver kNames = [](std::string_view name) {
  return name == "leaf1" ? std::optional<std::string>(kLeaf1) : std::nullopt;
};

/// Writes a small state document and says what of it was asked for.
std::string treeFor(std::string_view expect) {
  const Value value = read("expect", expect);
  JsonTree tree(value, kNames);
  tree.beginObject(WhenEmpty::keep);
  tree.array("log", WhenEmpty::leaveOut, [&] {
    tree.beginObject(WhenEmpty::keep);
    tree.textMember("id", "X");
    tree.endObject();
  });
  tree.object("mounts", WhenEmpty::leaveOut, [&] {
    for (const char* const id : {kLeaf1, kLeaf2}) {
      tree.object(id, WhenEmpty::leaveOut, [&] {
        for (const char* const path : {"p", "q"}) {
          tree.object(path, WhenEmpty::keep, [&] {
            tree.wholeMember("retries", 3);
            tree.textMember("state", "mounted");
          });
        }
      });
    }
  });
  tree.object("registry", WhenEmpty::leaveOut, [&] {
    tree.object("mountEntries", WhenEmpty::leaveOut,
                [&] { tree.object("p", WhenEmpty::keep, [] {}); });
    tree.object("publishReady", WhenEmpty::leaveOut, [&] { tree.booleanMember("T", false); });
  });
  tree.secondsMember("time", 1.5);
  tree.endObject();
  return tree.root().dump();
}

TEST(JsonTreeTest, OnlyWhatIsAskedForIsBuilt) {
  EXPECT_EQ(treeFor("{time: 0}"), R"({"time":1.5})");
  EXPECT_EQ(treeFor("{registry: {publishReady: {T: true}}}"),
            R"({"registry":{"publishReady":{"T":false}}})");
}

TEST(JsonTreeTest, WhatIsAskedForWholeIsBuiltWhole) {
  EXPECT_EQ(treeFor("{registry: null}"),
            R"({"registry":{"mountEntries":{"p":{}},"publishReady":{"T":false}}})");
  EXPECT_EQ(treeFor("{log: []}"), R"({"log":[{"id":"X"}]})");
}

TEST(JsonTreeTest, SwitchesAreFoundByNameAndById) {
  const std::string leaf1 =
      R"({"mounts":{"02:00:00:00:00:0a":{"p":{"retries":3,"state":"mounted"},)"
      R"("q":{"retries":3,"state":"mounted"}}}})";
  EXPECT_EQ(treeFor("{mounts: {leaf1: {p: {state: mounted}}}}"), leaf1);
  EXPECT_EQ(treeFor("{mounts: {\"02:00:00:00:00:0A\": null}}"), leaf1);
}

TEST(JsonTreeTest, NothingIsThereForNamesOfNobody) {
  EXPECT_EQ(treeFor("{mounts: {leaf9: {p: {state: mounted}}}, none: 1}"), "{}");
}

}  // namespace
}  // namespace Fabric
