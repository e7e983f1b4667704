#include <gtest/gtest.h>

#include <algorithm>
#include <string>

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

TEST(ScriptWriterTest, AroundAFabric_EveryScriptIsADocument) {
  for (std::uint64_t number = 1; number != 50; ++number) {
    const Script script = scriptAround({number, &profiles()[0], 40}, "own.yaml", kFabric);
    EXPECT_NO_THROW(Document::parse("soak.json", script.text())) << number;
  }
}

TEST(ScriptWriterTest, AroundAFabric_WithoutRandomEventsItIsTheFabric) {
  const Script script = scriptAround({1, &profiles()[0], 0}, "own.yaml", kFabric);
  EXPECT_EQ(script.events.size(), 1U);
  EXPECT_EQ(script.start.find("until"), nullptr);
}

TEST(ScriptWriterTest, AroundSomethingElse_IsAnInputError) {
  EXPECT_THROW(scriptAround({}, "own.yaml", "switches: 7"), Fabric::InputError);
}

/// The service that a patch is about; empty when it is about none, or several.
std::string serviceOf(const Fabric::Value* patch) {
  const Fabric::Value* const services = patch ? patch->find("services") : nullptr;
  if (!services || services->object().size() != 1) return {};
  return *(*services->object().begin()).key;
}

bool isWithin(const Fabric::Value& event) {
  const Fabric::Value* const note = event.find("note");
  return note && note->string().find("fault within") == 0;
}

/// In half of the runs nothing is changed within notifications. In the others what is changed while
/// the generation of a service changes is mostly something of that service.
TEST(ScriptWriterTest, WhileAGenerationChangesItsServiceIs) {
  std::size_t without = 0;
  std::size_t same = 0;
  std::size_t other = 0;
  for (std::uint64_t number = 1; number != 300; ++number) {
    const Script script = randomScript({number, profile("leadership"), 40});
    without += std::none_of(script.events.begin(), script.events.end(), isWithin) ? 1U : 0U;
    for (std::size_t at = 1; at < script.events.size(); ++at) {
      const Fabric::Value& event = script.events[at];
      const std::string service = serviceOf(event.find("apply"));
      if (service.empty() || isWithin(event) || !isWithin(script.events[at - 1])) continue;
      if (Fabric::toJson(*event.find("apply")).find("generation") == std::string::npos) continue;
      (serviceOf(script.events[at - 1].find("apply")) == service ? same : other) += 1;
    }
  }
  EXPECT_GT(without, 100U);
  EXPECT_LT(without, 200U);
  EXPECT_GT(same, 50U);
  EXPECT_GT(same, other);
}

TEST(ScriptWriterTest, ProfilesAreFoundByName) {
  EXPECT_EQ(profile("leadership")->name, "leadership");
  EXPECT_EQ(profile("sleeping"), nullptr);
}

}  // namespace
}  // namespace Soak
