#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Fabric/Report.h"
#include "Test/Fabric/RunFixture.h"

namespace Fabric {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Strings = std::vector<std::string>;

/// The missing publications of a group, each line as "reason: switches: paths".
Strings missingOf(const Report& report, std::size_t group = 0) {
  Strings lines;
  for (const Report::Missing& missing : report.publishGroups.at(group).missing) {
    std::string line = reasonOf(missing) + ":";
    for (const std::uint32_t at : missing.switches) line += " " + report.switches[at].label();
    line += ":";
    for (const std::string& path : missing.paths) line += " " + path;
    lines.push_back(line);
  }
  return lines;
}

/// "published/waiting/not admitted/not connected"
std::string countsOf(const Report& report, std::size_t group = 0) {
  const Report::PublishCounts& counts = report.publishGroups.at(group).counts;
  std::string out;
  for (const std::size_t count :
       {counts.published, counts.waiting, counts.notAdmitted, counts.notConnected}) {
    if (!out.empty()) out += '/';
    out += std::to_string(count);
  }
  return out;
}

std::string readinessOf(const Report& report, std::size_t group = 0) {
  return text(report.publishGroups.at(group).readiness);
}

TEST(PublishReportTest, AllPublished_NothingIsMissing) {
  const Report report = outcomeOf(R"(
controller: {leader: g}
switches: {"02:00:00:00:00:01": {count: 3, name: "s{n}", connected: true, services: {A: 3}}}
entities: {/c/a: T, /c/each: "Orm::Dir"}
services:
  A:
    publish:
      generation: g
      ready: true
      groups:
        default:
          paths: {/c/a: {remote: a, type: T}}
          dirs: {/c/each: {remote: each, type: Each, ready: true}}
)")
                            .report;
  ASSERT_EQ(report.publishGroups.size(), 1U);
  EXPECT_EQ(report.publishGroups[0].service, "A");
  EXPECT_EQ(report.publishGroups[0].group, "default");
  EXPECT_EQ(report.publishGroups[0].paths, 2U);
  EXPECT_EQ(report.publishGroups[0].notInForce, "");
  EXPECT_EQ(readinessOf(report), "ready");
  EXPECT_EQ(countsOf(report), "3/0/0/0");
  EXPECT_THAT(missingOf(report), IsEmpty());
  EXPECT_THAT(report.groups, IsEmpty());
}

TEST(PublishReportTest, EachReasonOfTheLibrary) {
  const Report report = outcomeOf(R"(
controller: {leader: g}
switches:
  "02:00:00:00:00:01": {name: well, connected: true, services: {A: 3}}
  "02:00:00:00:00:02": {name: gone, services: {A: 3}}
  "02:00:00:00:00:03": {name: unreachable, connected: true, reachable: false, services: {A: 3}}
  "02:00:00:00:00:04": {name: mute, connected: true}
  "02:00:00:00:00:05": {name: old, connected: true, services: {A: 2}}
  "02:00:00:00:00:06": {name: other, connected: true, services: {A: 3}}
entities: {/c/a: T, /c/each: "Orm::Dir"}
services:
  A:
    publish:
      generation: g
      groups:
        default:
          versions: [3]
          systems:
            ["02:00:00:00:00:01", "02:00:00:00:00:02", "02:00:00:00:00:03", "02:00:00:00:00:04",
             "02:00:00:00:00:05"]
          paths: {/c/a: {}, /c/late: {}}
          dirs: {/c/each: {}}
events:
  - at: 5
    apply: {switches: {"02:00:00:00:00:09": {name: unseen, connected: true}}}
until: 5.5
)")
                            .report;
  EXPECT_THAT(
      missingOf(report),
      ElementsAre("not decided yet: unseen: /c/a /c/each",
                  "not connected: gone: /c/a "
                  "/c/late /c/each",
                  "no connection configuration: unreachable: /c/a /c/late /c/each",
                  "no version negotiated: mute: /c/a /c/each",
                  "no version negotiated: mute unseen: /c/late",
                  "version not in filter: old: /c/a /c/late /c/each",
                  "system not in filter: other: /c/a /c/late /c/each",
                  "local entity missing: well: /c/late", "not ready to publish: well: /c/each"));
  EXPECT_EQ(countsOf(report), "0/1/5/1");
  EXPECT_EQ(readinessOf(report), "not ready");
}

TEST(PublishReportTest, MissingEntity_SaysWhenItIsLookedForNext_AndHoldsTheReadinessBack) {
  const char* const fabric = R"(
controller: {leader: g}
switches: {"02:00:00:00:00:01": {name: s1, connected: true, services: {A: 3}}}
entities: {/c/a: T}
services:
  A:
    publish: {generation: g, ready: true, groups: {default: {paths: {/c/a: {}, /c/late: {}}}}}
events:
  - {at: 7.5, apply: {entities: {/c/late: T}}}
)";
  const Report before = outcomeOf(std::string(fabric) + "until: 7.9\n").report;
  EXPECT_THAT(missingOf(before), ElementsAre("local entity missing: s1: /c/late"));
  EXPECT_EQ(before.publishGroups[0].missing[0].timeFirst, 8.0);
  EXPECT_EQ(before.publishGroups[0].missing[0].timeLast, 8.0);
  EXPECT_EQ(countsOf(before), "0/1/0/0");
  EXPECT_EQ(readinessOf(before), "held back");

  const Report after = outcomeOf(std::string(fabric) + "until: 8\n").report;
  EXPECT_THAT(missingOf(after), IsEmpty());
  EXPECT_EQ(countsOf(after), "1/0/0/0");
  EXPECT_EQ(readinessOf(after), "ready");
}

TEST(PublishReportTest, EntityThatWentWhileItWasPublished_IsMissingWithoutANextLook) {
  const Report report = outcomeOf(R"(
controller: {leader: g}
switches: {"02:00:00:00:00:01": {name: s1, connected: true, services: {A: 3}}}
entities: {/c/a: T}
services: {A: {publish: {generation: g, groups: {default: {paths: {/c/a: {}}}}}}}
events:
  - {at: 1, apply: {entities: {/c/a: null}}}
  - {at: 2, expect: {published: {systems: {s1: {mounts: {/c/a: {service: A}}}}}}}
  - {at: 3, apply: {switches: {s1: {services: {A: 4}}}}}
)")
                            .report;
  EXPECT_EQ(report.failedExpectations(), 0U);
  EXPECT_THAT(missingOf(report), ElementsAre("local entity missing: s1: /c/a"));
  EXPECT_EQ(report.publishGroups[0].missing[0].timeFirst, std::nullopt);
}

TEST(PublishReportTest, WithoutASwitch_WhatThePathsWaitForIsSaidAllTheSame) {
  const Report report = outcomeOf(R"(
controller: {leader: g}
entities: {/c/a: T, /c/each: "Orm::Dir"}
services:
  A:
    publish:
      generation: g
      groups: {default: {paths: {/c/a: {}, /c/late: {}}, dirs: {/c/each: {}, /c/none: {}}}}
)")
                            .report;
  EXPECT_THAT(missingOf(report), ElementsAre("local entity missing:: /c/late /c/none",
                                             "not ready to publish:: /c/each"));
  EXPECT_EQ(countsOf(report), "0/0/0/0");
}

TEST(PublishReportTest, PathOfAnotherService_AndPathThatLostItsEntry) {
  const char* const fabric = R"(
controller: {leader: g}
switches: {"02:00:00:00:00:01": {name: s1, connected: true, services: {A: 3, B: 2}}}
entities: {/c/shared: T, /c/b: T}
services:
  A: {publish: {generation: g, groups: {default: {paths: {/c/shared: {}}}}}}
  B: {publish: {generation: g, groups: {default: {paths: {/c/shared: {}, /c/b: {}}}}}}
)";
  const Report shared = outcomeOf(fabric).report;
  EXPECT_THAT(missingOf(shared, 0), IsEmpty());
  EXPECT_THAT(missingOf(shared, 1), ElementsAre("path already of service A: s1: /c/shared"));
  EXPECT_EQ(countsOf(shared, 0), "1/0/0/0");
  EXPECT_EQ(countsOf(shared, 1), "0/0/1/0");

  const Report lost = outcomeOf(std::string(fabric) + R"(
events:
  - {at: 1, apply: {services: {B: {publish: {groups: {default: {paths: {/c/shared: null}}}}}}}}
)")
                          .report;
  EXPECT_THAT(missingOf(lost, 0), ElementsAre("path not registered: s1: /c/shared"));
  EXPECT_THAT(missingOf(lost, 1), IsEmpty());
}

TEST(PublishReportTest, PathOfTwoGroupsOfAService_IsShownWithBoth) {
  const Report report = outcomeOf(R"(
controller: {leader: g}
switches: {"02:00:00:00:00:01": {name: s1, connected: true, services: {A: 3}}}
entities: {/c/a: T}
services:
  A: {publish: {generation: g, groups: {one: {paths: {/c/a: {}}}, two: {paths: {/c/a: {}}}}}}
)")
                            .report;
  EXPECT_EQ(countsOf(report, 0), "1/0/0/0");
  EXPECT_EQ(countsOf(report, 1), "1/0/0/0");
}

TEST(PublishReportTest, ServiceNameInPlaceOfTheKey_IsWhatReadinessAndEntriesGoBy) {
  const Report report = outcomeOf(R"(
controller: {leader: g}
switches: {"02:00:00:00:00:01": {name: s1, connected: true, services: {Real: 3}}}
entities: {/c/a: T}
services:
  Key:
    publish:
      generation: g
      serviceName: Real
      ready: true
      groups: {default: {paths: {/c/a: {}}}}
)")
                            .report;
  EXPECT_EQ(report.publishGroups.at(0).service, "Key");
  EXPECT_EQ(readinessOf(report), "ready");
  EXPECT_EQ(countsOf(report), "1/0/0/0");
}

TEST(PublishReportTest, GroupsThatAreNotInForce) {
  const Report report = outcomeOf(R"(
controller: {leader: gen-2}
services:
  Old: {publish: {generation: gen-1, ready: true, groups: {g: {paths: {/p: {}}}}}}
  None: {publish: {groups: {g: {paths: {/p: {}}}}}}
  Nameless: {publish: {generation: gen-2, serviceName: "", groups: {g: {paths: {/p: {}}}}}}
  Blind: {publish: {generation: gen-2, status: false, groups: {g: {paths: {/p: {}}}}}}
  Empty: {publish: {generation: gen-2, ready: true, groups: {g: {}}}}
)")
                            .report;
  Strings reasons;
  for (const Report::PublishGroup& group : report.publishGroups) {
    reasons.push_back(group.service + ", " + text(group.readiness) + ": " + group.notInForce);
  }
  EXPECT_THAT(reasons,
              ElementsAre("Old, not ready: written under gen-1, the leader's is gen-2",
                          "None, not ready: written under no generation, the leader's is gen-2",
                          "Nameless, not ready: the configuration has no service name",
                          "Blind, not ready: the service has no publish status",
                          "Empty, ready: the group has no paths"));
  EXPECT_EQ(outcomeOf("services: {A: {publish: {groups: {g: {paths: {/p: {}}}}}}}")
                .report.publishGroups.at(0)
                .notInForce,
            "no leader is known");
}

}  // namespace
}  // namespace Fabric
