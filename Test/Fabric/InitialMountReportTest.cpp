#include <gtest/gtest.h>

#include "Fabric/InitialMountReport.h"
#include "Test/Fabric/RunFixture.h"

namespace Fabric {
namespace {

std::string joined(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

/// Two switches, of which the second takes its time, and one service.
constexpr const char* kFabric = R"(
controller: {leader: gen-1, heartbeat: 2}
switches:
  "02:00:00:00:00:01": {name: leaf1, connected: true, services: {Topology: 3}}
  "02:00:00:00:00:02":
    connected: true
    services: {Topology: 3}
    mount: {delay: 60, paths: {topology/links: failed}}
services:
  Topology:
    mount:
      generation: gen-1
      groups:
        default: {paths: {topology/status: {}, topology/links: {}}}
)";

/// The line of the one group, or "not tracked".
std::string lineOf(const Report::Group& group) {
  return group.initialMounts ? phaseText(*group.initialMounts, joined) : "not tracked";
}
std::string lineAt(const std::string& fabric, const std::string& rest) {
  const Report report = outcomeOf(fabric + rest).report;
  EXPECT_EQ(report.groups.size(), 1U);
  return lineOf(report.groups.at(0));
}

TEST(InitialMountReportTest, ConnectionPeriod_SaysItsEnd) {
  EXPECT_EQ(lineAt(kFabric, "until: 5"), "waiting for the connection period until 6 s");
}

TEST(InitialMountReportTest, ConnectionPeriodWithoutSwitch_HasNoEnd) {
  EXPECT_EQ(lineAt("controller: {leader: g}\nservices:\n  T: {mount: {generation: g, groups: {d: "
                   "{paths: {a: {}}}}}}\n",
                   "until: 5"),
            "waiting for the connection period, which begins with the first switch");
}

TEST(InitialMountReportTest, Mounting_SaysWhichSwitchesAndPathsAndUntilWhen) {
  EXPECT_EQ(lineAt(kFabric, "until: 7"),
            "mounting: 02:00:00:00:00:02 (topology/status, topology/links); window ends at 246 s");
}

TEST(InitialMountReportTest, MountingWithPathsDone_NamesTheOthers) {
  const std::string slow = R"(
controller: {leader: gen-1, heartbeat: 2}
switches:
  "02:00:00:00:00:01":
    {name: leaf1, connected: true, services: {Topology: 3}, mount: {paths: {b: stalled}}}
services:
  Topology: {mount: {generation: gen-1, groups: {default: {paths: {a: {}, b: {}}}}}}
)";
  EXPECT_EQ(lineAt(slow, "until: 7"), "mounting: leaf1 (b); window ends at 246 s");
}

TEST(InitialMountReportTest, MountingWithTheSwitchGone_SaysSo) {
  EXPECT_EQ(lineAt(kFabric, R"(
events:
  - {at: 10, apply: {switches: {"02:00:00:00:00:02": {connected: false}}}}
until: 20
)"),
            "mounting: 02:00:00:00:00:02 (topology/status, topology/links; gone); window ends at "
            "246 s");
}

TEST(InitialMountReportTest, Processing_SaysHowManyAndWhich) {
  const std::string unprocessed = std::string(kFabric) + R"(
events:
  - at: 1
    apply:
      switches:
        "02:00:00:00:00:0a": {name: lab1, connected: true}
        "02:00:00:00:00:0b": {connected: true}
)";
  EXPECT_EQ(lineAt(unprocessed, "until: 10"),
            "waiting for 2 of 4 switches to be processed: lab1, 02:00:00:00:00:0b");
  EXPECT_EQ(lineAt(unprocessed, R"(  - at: 20
    apply: {switches: {"02:00:00:00:00:0c": {connected: true, services: {Topology: 3}}}}
until: 30
)"),
            "waiting for 2 of 4 switches to be processed: lab1, 02:00:00:00:00:0b; 1 that came "
            "later count in place of as many");
}

TEST(InitialMountReportTest, Flushing_SaysWhichConnectionsAndUntilWhen) {
  EXPECT_EQ(
      lineAt(std::string(kFabric) + "attrlog: {a: {sync: never}, b: {sync: 1}, c: {sync: never}, "
                                    "d: {connected: false, sync: never}, e: {demuxer: false}}\n",
             "until: 65.5"),
      "flushing: a, c; given up at 180 s");
}

TEST(InitialMountReportTest, FlushingWithEveryRoundReached_SaysThatItIsToBeSeen) {
  EXPECT_EQ(lineAt(std::string(kFabric) + "attrlog: {b: {sync: 0.2}}\n", "until: 60.5"),
            "flushing: done, to be seen by the next look; given up at 180 s");
}

TEST(InitialMountReportTest, Complete_SaysSinceWhen) {
  EXPECT_EQ(lineAt(kFabric, "until: 100"), "complete at 60 s");
}

TEST(InitialMountReportTest, GroupOfAProxyOrAnotherGeneration_IsNotTracked) {
  const Report report = outcomeOf(R"(
controller: {leader: gen-1}
services:
  Old: {mount: {generation: gen-0, groups: {default: {paths: {a: {}}}}}}
  Topology-Proxy: {proxy: true, mount: {generation: gen-1, groups: {default: {paths: {b: {}}}}}}
until: 1
)")
                            .report;
  ASSERT_EQ(report.groups.size(), 2U);
  EXPECT_EQ(lineOf(report.groups[0]), "not tracked");
  EXPECT_EQ(lineOf(report.groups[1]), "not tracked");
}

// ---- the same in the other documents

TEST(InitialMountOutputTest, State_HasPeriodAndSortedInitialSwitches) {
  const auto state = outcomeOf(R"(
controller: {leader: gen-1, heartbeat: 2}
switches:
  "02:00:00:00:00:0b": {connected: true}
  "02:00:00:00:00:0a": {connected: true}
  "02:00:00:00:00:0c": {}
until: 6
)")
                         .state;
  EXPECT_EQ(state.at("initialMounts"), nlohmann::json::parse(R"({"connectionPeriodComplete": true,
      "initialSwitches": ["02:00:00:00:00:0a", "02:00:00:00:00:0b"]})"));
}

TEST(InitialMountOutputTest, Events_TellThePeriodBeforeTheGroupsThatCompleteWithIt) {
  const auto outcome = outcomeOf(R"(
controller: {leader: gen-1, heartbeat: 2}
switches:
  "02:00:00:00:00:01": {name: leaf1, connected: true, services: {Topology: 3}}
services:
  Topology:
    mount: {generation: gen-1, groups: {a: {paths: {x: {}}}, b: {paths: {y: {}}}}}
events:
  - {at: 20, apply: {controller: {leader: gen-2}}}
until: 30
)");
  std::vector<nlohmann::json> told;
  for (const auto& event : outcome.events) {
    const auto kind = event.at("event").get<std::string>();
    if (kind == "connectionPeriodComplete" || kind == "initialMountsComplete") {
      told.push_back(event);
    }
  }
  EXPECT_EQ(nlohmann::json(told), nlohmann::json::parse(R"([
    {"t": 6, "event": "connectionPeriodComplete"},
    {"t": 6, "event": "initialMountsComplete", "service": "Topology", "group": "a", "complete": true},
    {"t": 6, "event": "initialMountsComplete", "service": "Topology", "group": "b", "complete": true},
    {"t": 20, "event": "initialMountsComplete", "service": "Topology", "group": "a", "complete": false},
    {"t": 20, "event": "initialMountsComplete", "service": "Topology", "group": "b", "complete": false}
  ])"));
}

TEST(InitialMountOutputTest, PeriodThatEndsWithoutAGroup_IsToldOnce) {
  const auto outcome = outcomeOf(R"(
controller: {heartbeat: 2}
switches: {"02:00:00:00:00:01": {connected: true}, "02:00:00:00:00:02": {name: late}}
events:
  - {at: 20, apply: {switches: {late: {connected: true}}}}
until: 40
)");
  ASSERT_EQ(outcome.events.size(), 1U);
  EXPECT_EQ(outcome.events[0],
            nlohmann::json::parse(R"({"t": 6, "event": "connectionPeriodComplete"})"));
}

}  // namespace
}  // namespace Fabric
