#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Fabric/Report.h"
#include "Test/Fabric/RunFixture.h"

namespace Fabric {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Strings = std::vector<std::string>;

/// The missing mounts of a group, each line as "reason: switches: paths".
Strings missingOf(const Report& report, const Report::Group& group) {
  Strings lines;
  for (const Report::Missing& missing : group.missing) {
    std::string line = reasonOf(missing) + ":";
    for (const std::uint32_t at : missing.switches) line += " " + report.switches[at].label();
    line += ":";
    for (const std::string& path : missing.paths) line += " " + path;
    lines.push_back(line);
  }
  return lines;
}

Strings missingOf(const Report& report) {
  EXPECT_EQ(report.groups.size(), 1U);
  return missingOf(report, report.groups.at(0));
}

/// "mounted/in progress/failed/not admitted/not connected"
std::string countsOf(const Report::Group& group) {
  const Report::Counts& counts = group.counts;
  std::string out;
  for (const std::size_t count : {counts.mounted, counts.inProgress, counts.failed,
                                  counts.notAdmitted, counts.notConnected}) {
    if (!out.empty()) out += '/';
    out += std::to_string(count);
  }
  return out;
}

TEST(ReportTest, HeaderOfARun) {
  const Report report = outcomeOf(std::string(kOneMount) + R"(
events:
  - at: 1
    apply: {switches: {"02:00:00:00:00:02": {inactive: true}}}
until: 7.5
)")
                            .report;
  EXPECT_EQ(report.document, "fabric.yaml");
  EXPECT_EQ(report.time, 7.5);
  EXPECT_EQ(report.leader, "gen-1");
  EXPECT_EQ(report.switches.size(), 2U);
  EXPECT_EQ(report.connectedSwitches(), 1U);
  EXPECT_EQ(report.inactiveSwitches(), 1U);
  EXPECT_EQ(report.switches[0].label(), "leaf1");
  EXPECT_EQ(report.switches[1].label(), "02:00:00:00:00:02");
}

TEST(ReportTest, AllMounted_NothingIsMissing) {
  const Report report = outcomeOf(kOneMount).report;
  ASSERT_EQ(report.groups.size(), 1U);
  EXPECT_EQ(report.groups[0].service, "Topology");
  EXPECT_EQ(report.groups[0].group, "default");
  EXPECT_EQ(report.groups[0].paths, 1U);
  EXPECT_FALSE(report.groups[0].proxy);
  EXPECT_EQ(report.groups[0].notInForce, "");
  EXPECT_EQ(countsOf(report.groups[0]), "1/0/0/0/0");
  EXPECT_THAT(missingOf(report), IsEmpty());
}

TEST(ReportTest, EachReasonOfTheLibrary) {
  const Report report = outcomeOf(R"(
controller: {leader: g}
switches:
  "02:00:00:00:00:01": {name: mounted, connected: true, services: {A: 3}}
  "02:00:00:00:00:02": {name: gone, services: {A: 3}}
  "02:00:00:00:00:03": {name: unreachable, connected: true, reachable: false, services: {A: 3}}
  "02:00:00:00:00:04": {name: mute, connected: true}
  "02:00:00:00:00:05": {name: old, connected: true, services: {A: 2}}
  "02:00:00:00:00:06": {name: other, connected: true, services: {A: 3}}
  "02:00:00:00:00:07": {name: poor, connected: true, services: {A: 3}, mount: {outcome: failed}}
  "02:00:00:00:00:08": {name: slow, connected: true, services: {A: 3}, mount: {outcome: stalled}}
services:
  A:
    mount:
      generation: g
      groups:
        default:
          versions: [3]
          systems:
            ["02:00:00:00:00:01", "02:00:00:00:00:02", "02:00:00:00:00:03", "02:00:00:00:00:04",
             "02:00:00:00:00:05", "02:00:00:00:00:07", "02:00:00:00:00:08"]
          paths: {p: {}, q: {}}
events:
  - at: 5
    apply: {switches: {"02:00:00:00:00:09": {name: unseen, connected: true}}}
)")
                            .report;
  EXPECT_THAT(missingOf(report),
              ElementsAre("failed: poor: p q", "still in progress: slow: p q",
                          "not decided yet: unseen: p q", "not connected: gone: p q",
                          "no connection configuration: unreachable: p q",
                          "no version negotiated: mute: p q", "version not in filter: old: p q",
                          "system not in filter: other: p q"));
  EXPECT_EQ(countsOf(report.groups[0]), "1/1/1/5/1");
}

TEST(ReportTest, PathsWithOneReasonAreOneLine_OthersAreApart) {
  const Report report = outcomeOf(R"(
controller: {leader: g}
switches:
  "02:00:00:00:00:01": {count: 3, name: "s{n}", connected: true, services: {A: 1},
                        mount: {paths: {p: failed, r: failed}}}
  "02:00:00:00:00:09": {name: s9, connected: true, services: {A: 1},
                        mount: {paths: {p: failed, r: failed, q: stalled}}}
services: {A: {mount: {generation: g, groups: {default: {paths: {p: {}, q: {}, r: {}}}}}}}
)")
                            .report;
  EXPECT_THAT(missingOf(report),
              ElementsAre("failed: s1 s2 s3 s9: p r", "still in progress: s9: q"));
  // A switch counts once, for the worst that a path has.
  EXPECT_EQ(countsOf(report.groups[0]), "0/0/4/0/0");
}

TEST(ReportTest, TimesAreThoseOfTheRequests) {
  const Report report = outcomeOf(R"(
controller: {leader: g}
switches:
  "02:00:00:00:00:01": {name: s1, connected: true, services: {A: 1}, mount: {outcome: stalled}}
services: {A: {mount: {generation: g, groups: {default: {paths: {p: {}}}}}}}
events:
  - at: 2.5
    apply:
      switches:
        "02:00:00:00:00:02":
          {name: s2, connected: true, services: {A: 1}, mount: {outcome: stalled}}
)")
                            .report;
  ASSERT_EQ(report.groups.at(0).missing.size(), 1U);
  const Report::Missing& missing = report.groups[0].missing[0];
  EXPECT_EQ(missing.switches, (Report::SwitchIndices{0, 1}));
  EXPECT_EQ(missing.timeFirst, 0.0);
  EXPECT_EQ(missing.timeLast, 2.5);
}

TEST(ReportTest, KeptForAnInactiveSwitch) {
  const Report report = outcomeOf(R"(
controller: {leader: g}
switches: {"02:00:00:00:00:01": {name: s1, connected: true, services: {A: 1}}}
services:
  A: {mount: {generation: g, groups: {keep: {preserve: true, paths: {p: {}}}, drop: {paths: {q: {}}}}}}
events:
  - at: 1
    apply: {switches: {s1: {inactive: true, connected: false}}}
)")
                            .report;
  ASSERT_EQ(report.groups.size(), 2U);
  EXPECT_THAT(missingOf(report, report.groups[0]), ElementsAre("not connected, state kept: s1: p"));
  EXPECT_THAT(missingOf(report, report.groups[1]), ElementsAre("not connected: s1: q"));
  EXPECT_EQ(countsOf(report.groups[0]), "0/0/0/0/1");
}

TEST(ReportTest, PathOfAnotherGroup_AndPathThatLostItsMounter) {
  const char* const fabric = R"(
controller: {leader: g}
switches: {"02:00:00:00:00:01": {name: s1, connected: true, services: {A: 1}}}
services:
  A: {mount: {generation: g, groups: {one: {paths: {p: {}}}, two: {paths: {p: {}, q: {}}}}}}
)";
  const Report shared = outcomeOf(fabric).report;
  EXPECT_THAT(missingOf(shared, shared.groups[0]), IsEmpty());
  EXPECT_THAT(missingOf(shared, shared.groups[1]), ElementsAre("path already of group one: s1: p"));
  EXPECT_EQ(countsOf(shared.groups[1]), "0/0/0/1/0");

  const Report lost = outcomeOf(std::string(fabric) + R"(
events:
  - at: 1
    apply: {services: {A: {mount: {groups: {two: {paths: {p: null}}}}}}}
)")
                          .report;
  EXPECT_THAT(missingOf(lost, lost.groups[0]), ElementsAre("path not registered: s1: p"));
  EXPECT_THAT(missingOf(lost, lost.groups[1]), IsEmpty());
}

TEST(ReportTest, GroupsThatAreNotInForce) {
  const Report report = outcomeOf(R"(
controller: {leader: gen-2}
services:
  Old: {mount: {generation: gen-1, groups: {g: {paths: {p: {}}}}}}
  None: {mount: {groups: {g: {paths: {p: {}}}}}}
  Nameless: {mount: {generation: gen-2, serviceName: "", groups: {g: {paths: {p: {}}}}}}
  Blind: {mount: {generation: gen-2, status: false, groups: {g: {paths: {p: {}}}}}}
  Empty: {mount: {generation: gen-2, groups: {g: {}}}}
  P-Proxy: {proxy: true, mount: {generation: gen-1, groups: {g: {paths: {q: {}}}}}}
)")
                            .report;
  Strings reasons;
  for (const Report::Group& group : report.groups) {
    reasons.push_back(group.service + (group.proxy ? " (proxy): " : ": ") + group.notInForce);
  }
  EXPECT_THAT(reasons, ElementsAre("Old: written under gen-1, the leader's is gen-2",
                                   "None: written under no generation, the leader's is gen-2",
                                   "Nameless: the configuration has no service name",
                                   "Blind: the service has no mount status",
                                   "Empty: the group has no paths", "P-Proxy (proxy): "));
  EXPECT_EQ(outcomeOf("services: {A: {mount: {groups: {g: {paths: {p: {}}}}}}}")
                .report.groups.at(0)
                .notInForce,
            "no leader is known");
}

TEST(ReportTest, ExpectationsThatFailed_AndThoseThatWereNotReached) {
  const Report report = outcomeOf(R"(
events:
  - {at: 1, expect: {time: 1}}
  - {at: 2, expect: {time: 1}}
  - {at: 3, expect: {time: 3}}
until: 2.5
)")
                            .report;
  EXPECT_EQ(report.expectations.size(), 2U);
  EXPECT_EQ(report.failedExpectations(), 1U);
  EXPECT_EQ(report.expectationsNotReached, 1U);
}

TEST(ReportTest, ReadingIt_ChangesNothing) {
  const Document document = Document::parse("fabric.yaml", kOneMount);
  std::ostringstream errors;
  SimulationRun run(document, errors);
  run.run();
  const auto state = [&run] {
    std::ostringstream out;
    JsonText json(out, JsonText::Layout::indented);
    run.writeState(json);
    json.flush();
    return out.str();
  };
  const std::string before = state();
  EXPECT_EQ(countsOf(run.report().groups.at(0)), "1/0/0/0/0");
  EXPECT_EQ(countsOf(run.report().groups.at(0)), "1/0/0/0/0");
  EXPECT_EQ(state(), before);
}

}  // namespace
}  // namespace Fabric
