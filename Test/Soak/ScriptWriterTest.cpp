#include <gtest/gtest.h>

#include "Fabric/Document.h"
#include "Fabric/InputError.h"
#include "Fabric/Reader.h"
#include "Soak/ScriptWriter.h"

namespace Soak {
namespace {

using Fabric::Document;

TEST(ScriptWriterTest, EveryScriptOfEveryProfileIsADocument) {
  for (const Profile& profile : profiles()) {
    for (std::uint64_t number = 1; number != 30; ++number) {
      const Script script = randomScript({number, &profile, 40});
      const Document document = Document::parse("soak.json", script.text());
      EXPECT_EQ(document.events().size(), script.events.size());
      EXPECT_GE(document.start().block(Fabric::Block::switches).size(), profile.fewest);
      EXPECT_LE(document.start().block(Fabric::Block::switches).size(), profile.most);
    }
  }
}

TEST(ScriptWriterTest, ASeedHasOneScript) {
  EXPECT_EQ(randomScript({5, &profiles()[0], 40}).text(),
            randomScript({5, &profiles()[0], 40}).text());
  EXPECT_NE(randomScript({5, &profiles()[0], 40}).text(),
            randomScript({6, &profiles()[0], 40}).text());
}

TEST(ScriptWriterTest, AScriptIsTakenApartAsItWasPutTogether) {
  const std::string text = randomScript({5, &profiles()[0], 40}).text();
  EXPECT_EQ(Script::of(Fabric::read("soak.json", text)).text(), text);
}

constexpr const char* kFabric = R"(
controller: {leader: gen-7}
switches: {"02:00:00:00:00:01": {name: leaf1, connected: true, services: {Isis: 4}}}
services: {Isis: {mount: {generation: gen-7, groups: {all: {paths: {isis/state: {}}}}}}}
events: [{at: 3, apply: {switches: {leaf1: {connected: false}}}}]
)";

TEST(ScriptWriterTest, AroundAFabric_ItsOwnEventsComeFirst) {
  const Script script = scriptAround({1, &profiles()[0], 20}, "own.yaml", kFabric);
  ASSERT_GT(script.events.size(), 1U);
  EXPECT_EQ(script.events.front().find("at")->number(), 3);
  EXPECT_GE(script.events[1].find("at")->number(), 3);
  EXPECT_NE(script.text().find("isis/state"), std::string::npos);
  EXPECT_NO_THROW(Document::parse("soak.json", script.text()));
}

TEST(ScriptWriterTest, AroundAFabric_WithoutRandomEventsItIsTheFabric) {
  const Script script = scriptAround({1, &profiles()[0], 0}, "own.yaml", kFabric);
  EXPECT_EQ(script.events.size(), 1U);
  EXPECT_EQ(script.start.find("until"), nullptr);
}

TEST(ScriptWriterTest, AroundSomethingElse_IsAnInputError) {
  EXPECT_THROW(scriptAround({}, "own.yaml", "switches: 7"), Fabric::InputError);
}

TEST(ScriptWriterTest, ProfilesAreFoundByName) {
  EXPECT_EQ(profile("leadership")->name, "leadership");
  EXPECT_EQ(profile("sleeping"), nullptr);
}

}  // namespace
}  // namespace Soak
