#include <gmock/gmock.h>

#include "Test/Zorb/CommandFixture.h"

namespace Zorb {
namespace {

using testing::HasSubstr;
using testing::Not;

using SoakCommandTest = CommandFixture;

TEST_F(SoakCommandTest, PrintsWhatWasRunAndThatAllHeld) {
  EXPECT_EQ(zorb({"soak", "--runs", "4", "--jobs", "2"}), 0);
  EXPECT_THAT(out(), HasSubstr("4 runs, seeds from 1, mixed: "));
  EXPECT_THAT(out(), HasSubstr("every invariant held\n"));
  EXPECT_THAT(errors(), HasSubstr(" runs a second"));
}

TEST_F(SoakCommandTest, TheSameSeedsGiveTheSameDigest) {
  EXPECT_EQ(zorb({"soak", "--runs", "3", "--seed", "5", "--jobs", "1"}), 0);
  const std::string before = out();
  EXPECT_EQ(zorb({"soak", "--runs", "3", "--seed", "5", "--jobs", "3", "--traces"}), 0);
  EXPECT_EQ(out(), before);
  EXPECT_EQ(zorb({"soak", "--runs", "3", "--seed", "6"}), 0);
  EXPECT_NE(out(), before);
}

/// A document that the controller answers by stopping.
constexpr const char* kStops = R"(
controller: {leader: g}
services:
  T: {publish: {generation: g, groups: {d: {dirs: {/x: {}}}}}}
  U: {mount: {generation: g, groups: {d: {paths: {a: {}}}}}}
switches: {"02:00:00:00:00:01": {services: {T: 1}}, "02:00:00:00:00:02": {}}
events:
  - {at: 1, apply: {switches: {"02:00:00:00:00:02": {connected: false}}}}
  - {at: 2, apply: {switches: {"02:00:00:00:00:01": {connected: true}}}}
)";

TEST_F(SoakCommandTest, AFailureIsToldWithTheCommandThatRepeatsIt) {
  const std::string fabric = file("stops.yaml", kStops);
  EXPECT_EQ(zorb({"soak", "--runs", "1", "--events", "0", "--fabric", fabric}), 1);
  EXPECT_THAT(errors(), HasSubstr("zorb: seed 1, event 2, at "));
  EXPECT_THAT(errors(), HasSubstr("Publish path doesn't exist"));
  EXPECT_THAT(errors(),
              HasSubstr("zorb soak --runs 1 --seed 1 --events 0 --fabric " + fabric + "\n"));
  EXPECT_THAT(out(), Not(HasSubstr("held")));
}

TEST_F(SoakCommandTest, AFailureIsMadeSmall_AndStillFails) {
  const std::string fabric = file("stops.yaml", kStops);
  const std::string small = path("small.json");
  EXPECT_EQ(zorb({"soak", "--runs", "1", "--events", "0", "--fabric", fabric, "--shrink", small}),
            1);
  EXPECT_THAT(contentOf("small.json"), HasSubstr("/x"));
  EXPECT_THAT(contentOf("small.json"), Not(HasSubstr("\"U\"")));
  EXPECT_THAT(contentOf("small.json"), Not(HasSubstr("02:00:00:00:00:02")));
  EXPECT_EQ(zorb({"soak", "--runs", "1", "--events", "0", "--fabric", small}), 1);
}

TEST_F(SoakCommandTest, TheDocumentOfARunCanBeHad) {
  const std::string saved = path("run.json");
  EXPECT_EQ(zorb({"soak", "--runs", "1", "--seed", "12", "--save", saved}), 0);
  EXPECT_EQ(zorb({"sim", saved, "--quiet"}), 0);
}

TEST_F(SoakCommandTest, WrongUseIsToldAndDoesNothing) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> wrong = {
      {{"--profile", "sleeping"}, "--profile: there is no profile \"sleeping\""},
      {{"--runs", "0"}, "--runs: expected 1 to 1000000000"},
      {{"--events", "100001"}, "--events: expected 0 to 100000"},
      {{"--events", "0"}, "--events 0 does nothing without --fabric"},
      {{"--fabric", path("none.yaml")}, "none.yaml"},
      {{"--seed", "many"}, "--seed"}};
  for (auto [arguments, text] : wrong) {
    arguments.insert(arguments.begin(), "soak");
    EXPECT_EQ(zorb(arguments), 2);
    EXPECT_THAT(errors(), HasSubstr(text));
    EXPECT_EQ(out(), "");
  }
}

TEST_F(SoakCommandTest, HelpNamesTheProfiles) {
  EXPECT_EQ(zorb({"soak", "--help"}), 0);
  EXPECT_THAT(out(), HasSubstr("leadership"));
  EXPECT_THAT(out(), HasSubstr("Exit status"));
}

}  // namespace
}  // namespace Zorb
