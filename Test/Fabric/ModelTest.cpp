#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Fabric/Document.h"
#include "Fabric/InputError.h"
#include "Fabric/Model.h"

namespace Fabric {
namespace {

constexpr const char* kStart = R"(
controller: {leader: gen-1, registryDir: /mounts}
switches:
  "02:00:00:00:00:01": {name: leaf1, connected: true, services: {T: 3}}
  "02:00:00:00:00:02": {name: leaf2}
  "02:00:00:00:00:0a": {name: Spine1}
  "02:00:00:00:00:0b": {}
services:
  T:
    proxy: true
    mount:
      groups:
        g:
          systems: ["02:00:00:00:00:01", "02:00:00:00:00:02", "02:00:00:00:00:0a"]
          paths: {a/b: {type: X}, c/d: {}}
  U: {}
entities: {/a/b: X}
attrlog: {standby: {sync: never}}
)";

Model startModel() { return Document::parse("start", kStart).start(); }

/// The steps of a patch, each as "block key,key: patch".
std::vector<std::string> steps(const Model& model, std::string_view patch) {
  std::vector<std::string> lines;
  for (const Step& step : model.parsePatch("p", patch).steps) {
    std::string line(blockName(step.block));
    for (const Text& key : *step.keys) {
      line += (key == step.keys->front() ? " " : ",") + *key;
    }
    lines.push_back(line + ": " + toJson(step.patch));
  }
  return lines;
}

std::string complaint(std::string_view patch) {
  try {
    startModel().parsePatch("p", patch);
  } catch (const InputError& error) {
    return error.what();
  }
  return {};
}

std::string memberAfter(std::string_view patch, Block block, std::string_view key) {
  Model model = startModel();
  model.apply(model.parsePatch("p", patch));
  const Value* member = model.find(block, key);
  return member == nullptr ? "none" : toJson(*member);
}

using Lines = std::vector<std::string>;

TEST(ModelTest, Steps_AreInThePatchsOwnOrder) {
  EXPECT_EQ(
      steps(startModel(),
            "{switches: {leaf2: {connected: true}, leaf1: null}, attrlog: {x: {}},"
            " controller: {heartbeat: 2}, services: {U: {enabled: absent}},"
            " entities: {c: Y}}"),
      (Lines{"switches 02:00:00:00:00:02: {\"connected\":true}", "switches 02:00:00:00:00:01: null",
             "attrlog x: {}", "controller : {\"heartbeat\":2}",
             "services U: {\"enabled\":\"absent\"}", "entities /c: \"Y\""}));
}

TEST(ModelTest, SwitchKey_IsAnIdANameOrAPatternOverBoth) {
  const Model model = startModel();
  EXPECT_EQ(steps(model, "{switches: {'02:00:00:00:00:0A': {}}}"),
            Lines{"switches 02:00:00:00:00:0a: {}"});
  EXPECT_EQ(steps(model, "{switches: {leaf2: {}}}"), Lines{"switches 02:00:00:00:00:02: {}"});
  EXPECT_EQ(steps(model, "{switches: {'*': {}}}"),
            Lines{"switches 02:00:00:00:00:01,02:00:00:00:00:02,02:00:00:00:00:0a,"
                  "02:00:00:00:00:0b: {}"});
  EXPECT_EQ(steps(model, "{switches: {'leaf[2-9]': {}}}"), Lines{"switches 02:00:00:00:00:02: {}"});
  EXPECT_EQ(steps(model, "{switches: {'*:0[AB]': {}}}"),
            Lines{"switches 02:00:00:00:00:0a,02:00:00:00:00:0b: {}"});
}

TEST(ModelTest, KeyThatMatchesNoSwitch_IsRefused) {
  const std::string refusal =
      " matches no switch, expected an id, or a display name or shell pattern of switches that "
      "are there";
  EXPECT_EQ(complaint("switches:\n  laef1: {}"),
            "p:2:3: \"laef1\"" + refusal + "; did you mean \"leaf1\"?");
  EXPECT_EQ(complaint("switches:\n  'core*': null"), "p:2:3: \"core*\"" + refusal);
  EXPECT_EQ(complaint("switches:\n  '02:00:00:00:00': {}"), "p:2:3: \"02:00:00:00:00\"" + refusal);
}

TEST(ModelTest, NamesAndPatterns_MeanTheSwitchesBeforeThePatch) {
  EXPECT_EQ(steps(startModel(),
                  "{switches: {'02:00:00:00:00:05': {name: leaf5}, 'leaf*': {connected: false}}}")
                .at(1),
            "switches 02:00:00:00:00:01,02:00:00:00:00:02: {\"connected\":false}");
  EXPECT_NE(complaint("{switches: {'02:00:00:00:00:05': {name: leaf5}, leaf5: {}}}"), "");
}

TEST(ModelTest, IdThatIsNotThere_IsANewSwitchOrRun) {
  EXPECT_EQ(steps(startModel(),
                  "{switches: {'02:00:00:00:00:ff': {count: 2, name: 'x{n}'},"
                  " '03:00:00:00:00:00': {count: 2, connected: true}}}"),
            (Lines{"switches 02:00:00:00:00:ff: {\"name\":\"x1\"}",
                   "switches 02:00:00:00:01:00: {\"name\":\"x2\"}",
                   "switches 03:00:00:00:00:00,03:00:00:00:00:01: {\"connected\":true}"}));
}

TEST(ModelTest, RemovalOfWhatIsNotThere_IsNoStep) {
  EXPECT_EQ(steps(startModel(),
                  "{switches: {'02:00:00:00:00:77': null}, services: {V: null},"
                  " entities: {/zz: null}, attrlog: {zz: null}}"),
            Lines{});
}

TEST(ModelTest, RunThatOverlaps_IsRefused) {
  EXPECT_EQ(complaint("switches:\n  '02:00:00:00:00:05': {count: 6}"),
            "p:2:3: the switch 02:00:00:00:00:0a is there already, expected ids and runs that do "
            "not overlap");
  EXPECT_EQ(complaint("switches:\n  '03:00:00:00:00:05': {count: 6}\n  '03:00:00:00:00:0a': {}"),
            "p:3:3: the switch 03:00:00:00:00:0a is there already, expected ids and runs that do "
            "not overlap");
}

TEST(ModelTest, CountOfASwitchThatIsThere_IsRefused) {
  const std::string refusal =
      "\"count\" of switches that are there already, expected it only with the first id of a new "
      "run";
  EXPECT_EQ(complaint("switches: {leaf1: {count: 1}}"), "p:1:20: " + refusal);
  EXPECT_EQ(complaint("switches: {'*': {count: null}}"), "p:1:18: " + refusal);
}

TEST(ModelTest, DisplayNames_HaveToBeUniqueAfterThePatch) {
  const auto refusal = [](std::string_view name, std::string_view id) {
    return "the display name \"" + std::string(name) + "\" of " + std::string(id) +
           " is another switch's too, expected unique names";
  };
  EXPECT_EQ(complaint("switches: {leaf2: {name: leaf1}}"),
            "p:1:26: " + refusal("leaf1", "02:00:00:00:00:02"));
  EXPECT_EQ(complaint("switches: {'leaf*': {name: x}}"),
            "p:1:28: " + refusal("x", "02:00:00:00:00:02"));
  EXPECT_EQ(complaint("switches: {'05:00:00:00:00:00': {count: 2, name: x}}"),
            "p:1:50: " + refusal("x", "05:00:00:00:00:01"));
  EXPECT_EQ(complaint("switches: {leaf1: {name: leaf2}, leaf2: {name: leaf1}}"), "");
  EXPECT_EQ(complaint("switches: {leaf2: {name: leaf1}, leaf1: null}"), "");
  EXPECT_EQ(complaint("switches: {leaf2: {name: leaf1}, leaf1: {name: ''}}"), "");
  EXPECT_EQ(complaint("switches: {leaf1: null, leaf2: {name: leaf1}, '*0b': {name: leaf1}}"),
            "p:1:61: " + refusal("leaf1", "02:00:00:00:00:0b"));
}

TEST(ModelTest, SwappedNames_AreFoundAfterwards) {
  Model model = startModel();
  model.apply(model.parsePatch("p", "{switches: {leaf1: {name: leaf2}, leaf2: {name: leaf1}}}"));
  EXPECT_EQ(model.switchId("leaf1"), "02:00:00:00:00:02");
  EXPECT_EQ(model.switchId("leaf2"), "02:00:00:00:00:01");
}

TEST(ModelTest, SwitchId_IsFoundByNameAndByIdInEitherCase) {
  Model model = startModel();
  EXPECT_EQ(model.switchId("Spine1"), "02:00:00:00:00:0a");
  EXPECT_EQ(model.switchId("02:00:00:00:00:0A"), "02:00:00:00:00:0a");
  EXPECT_EQ(model.switchId("02:00:00:00:00:77"), std::nullopt);
  EXPECT_EQ(model.switchId("spine1"), std::nullopt);
  EXPECT_EQ(model.switchId(""), std::nullopt);

  model.apply(model.parsePatch("p", "{switches: {Spine1: {name: null}, leaf1: null}}"));
  EXPECT_EQ(model.switchId("Spine1"), std::nullopt);
  EXPECT_EQ(model.switchId("leaf1"), std::nullopt);
  EXPECT_EQ(model.switchId("02:00:00:00:00:0a"), "02:00:00:00:00:0a");
}

TEST(ModelTest, Pattern_FollowsSwitchesThatComeGoAndAreRenamed) {
  Model model = startModel();
  const std::string all = "{switches: {'*': {}}}";
  const std::string leaves = "{switches: {'leaf*': {}}}";
  EXPECT_EQ(model.parsePatch("p", all).steps.at(0).keys->size(), 4U);
  EXPECT_EQ(model.parsePatch("p", leaves).steps.at(0).keys->size(), 2U);
  model.apply(model.parsePatch("p", "{switches: {'02:00:00:00:00:05': {name: leaf5}}}"));
  EXPECT_EQ(model.parsePatch("p", all).steps.at(0).keys->size(), 5U);
  EXPECT_EQ(model.parsePatch("p", leaves).steps.at(0).keys->size(), 3U);
  model.apply(model.parsePatch("p", "{switches: {leaf2: {name: x}, leaf1: null}}"));
  EXPECT_EQ(model.parsePatch("p", all).steps.at(0).keys->size(), 4U);
  EXPECT_EQ(model.parsePatch("p", leaves).steps.at(0).keys->size(), 1U);
}

TEST(ModelTest, Apply_GivesTheMemberBeforeAndKeepsItUnchanged) {
  Model model = startModel();
  const Patch patch =
      model.parsePatch("p", "{switches: {leaf1: {connected: null, services: {T: {version: 4}}}}}");

  const Value before = model.apply(patch.steps.at(0), patch.steps.at(0).keys->at(0));

  EXPECT_EQ(toJson(before), R"({"name":"leaf1","connected":true,"services":{"T":)"
                            R"({"enabled":true,"reported":true,"negotiated":true,"version":3}}})");
  EXPECT_EQ(toJson(*model.find(Block::switches, "02:00:00:00:00:01")),
            R"({"name":"leaf1","services":{"T":)"
            R"({"enabled":true,"reported":true,"negotiated":true,"version":4}}})");
}

TEST(ModelTest, Apply_OfSomethingNewOrRemoved_SaysSo) {
  Model model = startModel();
  const Patch patch = model.parsePatch("p", "{services: {V: {mount: {generation: g}}, U: null}}");

  EXPECT_TRUE(model.apply(patch.steps.at(0), patch.steps.at(0).keys->at(0)).isNull());
  EXPECT_EQ(toJson(model.apply(patch.steps.at(1), patch.steps.at(1).keys->at(0))), "{}");

  EXPECT_EQ(toJson(*model.find(Block::services, "V")), R"({"mount":{"generation":"g"}})");
  EXPECT_EQ(model.find(Block::services, "U"), nullptr);
}

TEST(ModelTest, Apply_OfTheController_GivesItsWholeBlock) {
  Model model = startModel();
  const Patch patch = model.parsePatch("p", "{controller: {leader: null, heartbeat: 1.5}}");
  const Value before = model.apply(patch.steps.at(0), patch.steps.at(0).keys->at(0));
  EXPECT_EQ(toJson(before), R"({"leader":"gen-1","registryDir":"/mounts"})");
  EXPECT_EQ(toJson(Value(model.block(Block::controller))),
            R"({"registryDir":"/mounts","heartbeat":1.5})");
}

TEST(ModelTest, FilterAsList_ReplacesAndAsObjectEdits) {
  const std::string inGroup = "{services: {T: {mount: {groups: {g: ";
  const auto systems = [&](const std::string& filter) {
    Model model = startModel();
    model.apply(model.parsePatch("p", inGroup + "{systems: " + filter + "}}}}}}"));
    const Value* group = model.find(Block::services, "T")->find("mount")->find("groups")->find("g");
    const Value* found = group->find("systems");
    return found == nullptr ? std::string("none") : toJson(*found);
  };
  EXPECT_EQ(systems("['02:00:00:00:00:07', '02:00:00:00:00:02']"),
            R"({"02:00:00:00:00:02":true,"02:00:00:00:00:07":true})");
  EXPECT_EQ(systems("{'02:00:00:00:00:02': false, '02:00:00:00:00:01': null}"),
            R"({"02:00:00:00:00:02":false,"02:00:00:00:00:0a":true})");
  EXPECT_EQ(systems("[]"), "{}");
  EXPECT_EQ(systems("null"), "none");
}

TEST(ModelTest, ServiceStatusAsNumber_SetsAllFour) {
  EXPECT_EQ(memberAfter("{switches: {leaf1: {services: {T: {reported: false}}}}}", Block::switches,
                        "02:00:00:00:00:01"),
            R"({"name":"leaf1","connected":true,"services":{"T":)"
            R"({"enabled":true,"reported":false,"negotiated":true,"version":3}}})");
  EXPECT_EQ(
      memberAfter("{switches: {leaf2: {services: {T: 0}}}}", Block::switches, "02:00:00:00:00:02"),
      R"({"name":"leaf2","services":{"T":)"
      R"({"enabled":true,"reported":true,"negotiated":true,"version":0}}})");
}

TEST(ModelTest, NullInsideSomethingNew_IsNotKept) {
  EXPECT_EQ(memberAfter("{services: {V: {enabled: null, mount: {groups: {g: null}}}}}",
                        Block::services, "V"),
            R"({"mount":{"groups":{}}})");
}

TEST(ModelTest, WhatCountsOnlyAtStart_IsRefusedInAPatch) {
  const std::string refusal =
      " in a patch, expected only what can change: it counts at the start alone";
  EXPECT_EQ(complaint("controller: {mountTimeout: 5}"), "p:1:14: \"mountTimeout\"" + refusal);
  EXPECT_EQ(complaint("controller: {mountMonitor: null}"), "p:1:14: \"mountMonitor\"" + refusal);
  EXPECT_EQ(complaint("until: 5"), "p:1:1: \"until\"" + refusal);
  EXPECT_EQ(complaint("events: []"), "p:1:1: \"events\"" + refusal);
  EXPECT_EQ(complaint("controller: null"),
            "p:1:13: null removes \"registryDir\", which counts at the start alone, expected only "
            "what can change");
}

TEST(ModelTest, Proxy_IsRefusedForAServiceThatIsThereAndTakenForANewOne) {
  EXPECT_EQ(complaint("services: {T: {proxy: true}}"),
            "p:1:16: \"proxy\" of the service \"T\", which is there already, expected it only for "
            "a new one");
  EXPECT_NE(complaint("services: {U: {proxy: null}}"), "");
  EXPECT_EQ(complaint("services: {V: {proxy: true}}"), "");
}

TEST(ModelTest, NullBlock_RemovesAllThatItHas) {
  EXPECT_EQ(steps(startModel(), "{services: null, switches: null, entities: null, attrlog: null}"),
            (Lines{"services T,U: null",
                   "switches 02:00:00:00:00:01,02:00:00:00:00:02,02:00:00:00:00:0a,"
                   "02:00:00:00:00:0b: null",
                   "entities /a/b: null", "attrlog standby: null"}));
}

TEST(ModelTest, PatchThatIsNoObject_IsRefused) {
  EXPECT_EQ(complaint("[1]"), "p:1:1: the patch is a list, expected an object");
  EXPECT_EQ(complaint("null"), "p:1:1: the patch is null, expected an object");
  EXPECT_EQ(complaint("switches: 5"), "p:1:11: \"switches\" is the number 5, expected an object");
}

TEST(ModelTest, RefusedPatch_ChangesNothing) {
  Model model = startModel();
  EXPECT_THROW(model.parsePatch("p", "{switches: {leaf1: null, nobody: {}}}"), InputError);
  EXPECT_EQ(model.block(Block::switches).size(), 4U);
  EXPECT_EQ(model.switchId("leaf1"), "02:00:00:00:00:01");
}

}  // namespace
}  // namespace Fabric
