#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Fabric/Document.h"
#include "Fabric/InputError.h"
#include "Fabric/SwitchView.h"

namespace Fabric {
namespace {

Document parsed(std::string_view text) { return Document::parse("f", text); }

std::string complaint(std::string_view text) {
  try {
    parsed(text);
  } catch (const InputError& error) {
    return error.what();
  }
  return {};
}

std::string blockJson(const Model& model, Block block) { return toJson(Value(model.block(block))); }

/// The ids of all switches, or the name of each that has one.
std::vector<std::string> switches(const Model& model) {
  std::vector<std::string> names;
  for (const Object::Member& member : model.block(Block::switches)) {
    const std::string_view name = SwitchView(&member.value).name();
    names.emplace_back(name.empty() ? *member.key : std::string(name));
  }
  return names;
}

using Names = std::vector<std::string>;

TEST(DocumentTest, EmptyObject_IsADocumentWithDefaults) {
  const Document document = parsed("{}");
  EXPECT_EQ(document.name(), "f");
  EXPECT_TRUE(document.events().empty());
  EXPECT_EQ(document.until(), 600);
  EXPECT_TRUE(document.start().block(Block::switches).empty());
}

TEST(DocumentTest, Until_IsAfterTheLastEventUnlessItIsGiven) {
  EXPECT_EQ(parsed("events: [{at: 1}, {at: 12.5}]").until(), 612.5);
  EXPECT_EQ(parsed("{until: 5, events: [{at: 1}, {at: 12.5}]}").until(), 5);
}

TEST(DocumentTest, NullSetting_IsTheSameAsNotWritten) {
  const Document document = parsed(
      "controller:\nservices: {T: {mount: }}\nuntil:\nevents:\nentities: ~\n"
      "switches: {'02:00:00:00:00:01': {name: null, services: }}\n");
  EXPECT_EQ(blockJson(document.start(), Block::services), R"({"T":{}})");
  EXPECT_EQ(blockJson(document.start(), Block::switches), R"({"02:00:00:00:00:01":{}})");
  EXPECT_EQ(document.until(), 600);
}

TEST(DocumentTest, MemberThatIsNull_IsRefused) {
  EXPECT_EQ(complaint("switches:\n  '02:00:00:00:00:01':\n"),
            "f:2:3: \"02:00:00:00:00:01\" is null, expected an object; {} is one that leaves "
            "everything out");
}

TEST(DocumentTest, Run_IsWrittenOutInDocumentOrder) {
  const Document document = parsed(
      "switches:\n"
      "  '02:00:00:00:00:FE': {count: 3, name: 'spine{n}-{n}', connected: true}\n"
      "  '02:00:00:00:00:01': {name: 'leaf{n}'}\n"
      "  '03:00:00:00:00:00': {count: 2}\n");
  EXPECT_EQ(blockJson(document.start(), Block::switches),
            R"({"02:00:00:00:00:fe":{"name":"spine1-1","connected":true},)"
            R"("02:00:00:00:00:ff":{"name":"spine2-2","connected":true},)"
            R"("02:00:00:00:01:00":{"name":"spine3-3","connected":true},)"
            R"("02:00:00:00:00:01":{"name":"leaf{n}"},)"
            R"("03:00:00:00:00:00":{},"03:00:00:00:00:01":{}})");
}

TEST(DocumentTest, RunUpToTheLastAddress_IsAllowedAndNoFurther) {
  EXPECT_EQ(
      parsed("switches: {'ff:ff:ff:ff:ff:fe': {count: 2}}").start().block(Block::switches).size(),
      2U);
  EXPECT_EQ(complaint("switches: {'ff:ff:ff:ff:ff:fe': {count: 3}}"),
            "f:1:41: a run beyond ff:ff:ff:ff:ff:ff, expected at most 2 switches here");
}

TEST(DocumentTest, ShortForms_StandForTheirLongForms) {
  const Document document = parsed(
      "switches: {'02:00:00:00:00:01': {services: {A: 3, B: {version: 1}, C: {}}}}\n"
      "services: {T: {mount: {groups: {g: {systems: ['02:00:00:00:00:0A'], versions: [3, "
      "'7']}}}}}\n");
  EXPECT_EQ(blockJson(document.start(), Block::switches),
            R"({"02:00:00:00:00:01":{"services":{)"
            R"("A":{"enabled":true,"reported":true,"negotiated":true,"version":3},)"
            R"("B":{"version":1},"C":{}}}})");
  EXPECT_EQ(blockJson(document.start(), Block::services),
            R"({"T":{"mount":{"groups":{"g":{"systems":{"02:00:00:00:00:0a":true},)"
            R"("versions":{"3":true,"7":true}}}}}})");
}

TEST(DocumentTest, EntityPaths_AreMadeCanonical) {
  const Document document = parsed("entities: {/a/b: X, 'c//d/': Orm::Dir}");
  EXPECT_EQ(blockJson(document.start(), Block::entities), R"({"/a/b":"X","/c/d":"Orm::Dir"})");
  EXPECT_EQ(complaint("entities: {/a/b: X, a//b: Y}"),
            "f:1:21: \"/a/b\" is there twice, expected it once");
  EXPECT_EQ(complaint("entities: {/: Orm::Dir}"),
            "f:1:12: \"/\" is the root itself, expected a path below it");
}

TEST(DocumentTest, EntityBelowOneThatIsNoDirectory_IsRefused) {
  const std::string refusal =
      "the entity \"/a\" has \"/a/b/c\" below it, expected an Orm::Dir there";
  EXPECT_EQ(complaint("entities: {/a: X, /a/b/c: Y}"), "f:1:19: " + refusal);
  EXPECT_EQ(complaint("entities: {/a/b/c: Y, /a: X}"), "f:1:12: " + refusal);
  EXPECT_EQ(complaint("entities: {/a: 'Orm::Dir', /a/b/c: Y, /ab: X}"), "");
  EXPECT_EQ(complaint("entities: {/a/b/c: Y}\nevents:\n- {at: 1, apply: {entities: {/a: X}}}"),
            "f:3:30: " + refusal);
  EXPECT_EQ(complaint("entities: {/a/b/c: Y}\nevents:\n"
                      "- {at: 1, apply: {entities: {/a: X, /a/b/c: null}}}\n"
                      "- {at: 1, apply: {entities: {/a: null, /a/b: Z}}}\n"),
            "");
}

TEST(DocumentTest, Event_HasWhatItSays) {
  const Document document = parsed(
      "events:\n"
      "  - at: 1.5\n"
      "    note: \"two\\nlines\"\n"
      "  - {at: 1.5, expect: {time: 1.5}, apply: {controller: {leader: g}}}\n");
  ASSERT_EQ(document.events().size(), 2U);
  const Event& first = document.events()[0];
  EXPECT_EQ(first.at, 1.5);
  EXPECT_EQ(first.note, "two\nlines");
  EXPECT_FALSE(first.apply.has_value());
  EXPECT_FALSE(first.expect.has_value());
  EXPECT_EQ(first.mark, (Mark{2, 5}));
  const Event& second = document.events()[1];
  EXPECT_EQ(toJson(*second.expect), R"({"time":1.5})");
  ASSERT_EQ(second.apply->steps.size(), 1U);
  EXPECT_EQ(second.apply->steps[0].block, Block::controller);
}

TEST(DocumentTest, Events_AreCheckedAgainstWhatTheOnesBeforeLeft) {
  const std::string start = "switches: {'02:00:00:00:00:01': {name: leaf1}}\nevents:\n";
  EXPECT_EQ(complaint(start + "- {at: 1, apply: {switches: {leaf1: {name: leaf2}}}}\n"
                              "- {at: 2, apply: {switches: {leaf1: {connected: true}}}}\n"),
            "f:4:30: \"leaf1\" matches no switch, expected an id, or a display name or shell "
            "pattern of switches that are there; did you mean \"leaf2\"?");
  EXPECT_EQ(complaint(start + "- {at: 1, apply: {switches: {'leaf*': null}}}\n"
                              "- {at: 2, apply: {switches: {'leaf*': null}}}\n")
                .substr(0, 33),
            "f:4:30: \"leaf*\" matches no switch");
}

TEST(DocumentTest, Start_IsNotChangedByTheCheckOfItsEvents) {
  const Document document = parsed(
      "switches: {'02:00:00:00:00:00': {count: 20, name: 's{n}', services: {T: 1}}}\n"
      "events: [{at: 1, apply: {switches: {'*': {services: {T: null}}, s3: null}}}]\n");
  EXPECT_EQ(document.start().block(Block::switches).size(), 20U);
  EXPECT_NE(
      document.start().find(Block::switches, "02:00:00:00:00:02")->find("services")->find("T"),
      nullptr);
  Model model = document.start();
  model.apply(*document.events()[0].apply);
  EXPECT_EQ(model.block(Block::switches).size(), 19U);
  EXPECT_EQ(switches(model).at(2), "s4");
}

TEST(DocumentTest, SwitchKeyOfAnExpectation_HasToBeASwitchAtSomeTime) {
  const std::string start = "switches: {'02:00:00:00:00:01': {name: leaf1}}\nevents:\n";
  const std::string refusal =
      " is no switch of this document, expected an id or the display name that a switch has at "
      "some time";
  EXPECT_EQ(complaint(start + "- {at: 1, expect: {mounts: {leef1: null}}}"),
            "f:3:29: \"leef1\"" + refusal);
  EXPECT_EQ(complaint(start + "- {at: 1, expect: {mountStatus: {T: {systems: {x: null}}}}}"),
            "f:3:48: \"x\"" + refusal);
  EXPECT_EQ(complaint(start + "- {at: 1, expect: {published: {systems: {x: null}}}}"),
            "f:3:42: \"x\"" + refusal);
  EXPECT_EQ(
      complaint(start + "- {at: 1, expect: {mounts: {leaf1: null, leaf2: null}}}\n"
                        "- {at: 2, apply: {switches: {leaf1: {name: leaf2}}}}\n"
                        "- {at: 3, expect: {mounts: {leaf1: null, '02:00:00:00:00:09': null}}}\n"),
      "");
}

TEST(DocumentTest, MemberRemovedAndBroughtBackInOnePatch_IsThereForLaterEvents) {
  const std::string text =
      "switches: {'02:00:00:00:00:01': {name: leaf1}}\n"
      "services: {T: {}}\n"
      "events:\n"
      "- {at: 1, apply: {switches: {'*': null, '02:00:00:00:00:01': {connected: true}}}}\n"
      "- {at: 2, apply: {switches: {'02:*': {connected: false}}, services: {T: null}}}\n"
      "- {at: 3, apply: {services: {T: {proxy: true}}}}\n";
  EXPECT_EQ(complaint(text), "");
  EXPECT_EQ(complaint(text + "- {at: 4, apply: {services: {T: {proxy: true}}}}\n").substr(0, 24),
            "f:7:34: \"proxy\" of the s");
  EXPECT_EQ(complaint(text + "- {at: 4, apply: {switches: {leaf1: {}}}}\n").substr(0, 24),
            "f:7:30: \"leaf1\" matches ");
}

TEST(DocumentTest, ThousandsOfPatternEvents_ShareWhatTheyMatch) {
  std::string text = "switches: {'02:00:00:00:00:00': {count: 4000, name: 'leaf{n}'}}\nevents:\n";
  for (int at = 0; at < 200; ++at) {
    text += "- {at: 1, apply: {switches: {'leaf*': {connected: " +
            std::string(at % 2 == 0 ? "true" : "false") + "}}}}\n";
  }
  const Document document = parsed(text);
  const KeyList& first = document.events().front().apply->steps.front().keys;
  EXPECT_EQ(first->size(), 4000U);
  EXPECT_EQ(first, document.events().back().apply->steps.front().keys);
}

}  // namespace
}  // namespace Fabric
