#include <gtest/gtest.h>

#include "Fabric/StateDocument.h"
#include "Test/Fabric/RunFixture.h"

namespace Fabric {
namespace {

TEST(StateDocumentTest, OneMount_WholeDocument) {
  EXPECT_EQ(outcomeOf(std::string(kOneMount) + "until: 12.5\n").stateText, R"({
  "initialMounts": {
    "connectionPeriodComplete": true,
    "initialSwitches": [
      "02:00:00:00:00:01"
    ]
  },
  "mountStatus": {
    "Topology": {
      "initialMountsComplete": {
        "default": true
      },
      "mountedPathPrefix": {
        "topology/status": "/controller/mounts/topology/status"
      },
      "systems": {
        "02:00:00:00:00:01": {
          "default": {
            "paths": {
              "topology/status": {
                "mountedPath": "/controller/mounts/topology/status/02:00:00:00:00:01",
                "state": "mounted"
              }
            },
            "processed": true,
            "state": "mounted"
          }
        }
      }
    }
  },
  "mounts": {
    "02:00:00:00:00:01": {
      "topology/status": {
        "mountPath": "/controller/mounts/topology/status/02:00:00:00:00:01",
        "retries": 4294967295,
        "state": "mounted",
        "timeout": 2147483647
      }
    }
  },
  "published": {
    "systems": {
      "02:00:00:00:00:01": {
        "processed": {
          "Topology": true
        }
      }
    }
  },
  "registry": {
    "mountEntries": {
      "topology/status": {
        "flags": "r",
        "mounters": {
          "Topology": "default"
        },
        "targetPath": "/controller/mounts/topology/status",
        "type": "Topology::Status"
      }
    }
  },
  "time": 12.5
}
)");
}

TEST(StateDocumentTest, NothingThere_OnlyWhatIsAlwaysThere) {
  EXPECT_EQ(outcomeOf("until: 0\n").state,
            nlohmann::json::parse(
                R"({"initialMounts": {"connectionPeriodComplete": false}, "time": 0})"));
}

TEST(StateDocumentTest, StatusThatHoldsNothing_ItsObjectIsThere) {
  const auto state = outcomeOf("services: {Topology: {mount: {generation: other}}}").state;
  EXPECT_EQ(state.at("mountStatus"), nlohmann::json::parse(R"({"Topology": {}})"));
  EXPECT_FALSE(state.contains("registry"));
}

TEST(StateDocumentTest, EmptyTypeAndFlagsAreLeftOut) {
  const auto state = outcomeOf(R"(
services: {P-Proxy: {proxy: true, mount: {groups: {g: {paths: {a: {}}}}}}}
)")
                         .state;
  EXPECT_EQ(state.at("registry").at("mountEntries").at("a"),
            nlohmann::json::parse(
                R"({"targetPath": "/controller/mounts/a", "mounters": {"P-Proxy": "g"}})"));
}

TEST(StateDocumentTest, MembersAreSorted_WhateverTheOrderOfTheDocument) {
  const auto there = [](const char* switches, const char* services) {
    return outcomeOf(std::string("controller: {leader: g}\nswitches: {") + switches +
                     "}\nservices: {" + services + "}\nuntil: 1\n")
        .stateText;
  };
  const std::string one = R"("02:00:00:00:00:01": {connected: true, services: {A: 1, B: 1}})";
  const std::string two = R"("02:00:00:00:00:02": {connected: true, services: {B: 1, A: 1}})";
  const std::string a = "A: {mount: {generation: g, groups: {g: {paths: {a: {}, b: {}}}}}}";
  const std::string b = "B: {mount: {generation: g, groups: {g: {paths: {d: {}, c: {}}}}}}";
  const std::string b2 = "B: {mount: {generation: g, groups: {g: {paths: {c: {}, d: {}}}}}}";
  EXPECT_EQ(there((one + ", " + two).c_str(), (a + ", " + b).c_str()),
            there((two + ", " + one).c_str(), (b2 + ", " + a).c_str()));
}

TEST(StateDocumentTest, Publications_InTheRegistryTheirStatusAndTheControllerDatabase) {
  const auto state = outcomeOf(R"(
controller: {leader: g}
switches: {"02:00:00:00:00:01": {connected: true, services: {T: 3}}}
services:
  T:
    publish:
      generation: g
      ready: true
      groups:
        default:
          paths: {/a/config: {remote: config, type: "T::Config"}}
          dirs: {/a/perSwitch: {remote: mine, type: "T::Mine"}}
entities: {/a/config: "T::Config", /a/perSwitch: "Orm::Dir"}
until: 4
)")
                         .state;
  EXPECT_EQ(state.at("registry"), nlohmann::json::parse(R"({
    "publishEntries": {
      "/a/config": {"remotePath": "config", "type": "T::Config", "prefix": false, "service": "T",
                    "ready": true},
      "/a/perSwitch": {"remotePath": "mine", "type": "T::Mine", "prefix": true, "service": "T",
                       "ready": false}},
    "publishReady": {"T": true}})"));
  EXPECT_EQ(state.at("publishStatus"),
            nlohmann::json::parse(
                R"({"T": {"default": {"state": 1, "paths": {"/a/config": {"state": 1}}}}})"));
  EXPECT_EQ(state.at("published"), nlohmann::json::parse(R"({
    "ready": {"T": true},
    "systems": {"02:00:00:00:00:01": {
      "mounts": {"/a/config": {"remotePath": "config", "type": "T::Config", "flags": "rti",
                               "service": "T"}},
      "processed": {"T": true}}}})"));
}

TEST(StateDocumentTest, Log_InOrderWithItsTimes) {
  const auto log = outcomeOf(R"(
controller: {leader: g}
switches:
  "02:00:00:00:00:01": {name: b, connected: true, services: {A: 1}, mount: {outcome: stalled}}
  "02:00:00:00:00:02": {name: a, connected: true, services: {A: 1}, mount: {outcome: stalled}}
services: {A: {mount: {generation: g, groups: {g: {paths: {p: {}}}}}}}
)")
                       .state.at("log");
  EXPECT_EQ(log, nlohmann::json::parse(R"([
    {"time": 300, "id": "ZORB_MOUNT_TIMEOUT", "severity": 3,
     "text": "ZORB is unable to mount from switch b."},
    {"time": 300, "id": "ZORB_MOUNT_TIMEOUT", "severity": 3,
     "text": "ZORB is unable to mount from switch a."}])"));
}

TEST(StateDocumentTest, TimeToTheMicrosecond) {
  EXPECT_EQ(outcomeOf("until: 0.1234567\n").state.at("time"), 0.123457);
}

TEST(StateDocumentTest, Failures_NameWhatIsNotAsExpected) {
  const auto expectations = outcomeOf(std::string(kOneMount) + R"(
events:
  - at: 1
    expect:
      time: 1
      mounts: {leaf1: {topology/status: {state: failed, retries: 4294967295}, other: null}}
      registry: null
  - at: 2
    expect: {mounts: {leaf1: {topology/status: {state: mounted}}}}
)")
                                .expectations;
  ASSERT_EQ(expectations.size(), 2U);
  EXPECT_EQ(expectations[0].time, 1);
  EXPECT_EQ(expectations[0].mark, (Mark{13, 5}));
  ASSERT_EQ(expectations[0].failures.size(), 2U);
  EXPECT_EQ(expectations[0].failures[0].path, "mounts.leaf1.topology/status.state");
  EXPECT_EQ(expectations[0].failures[0].expected, "\"failed\"");
  EXPECT_EQ(expectations[0].failures[0].actual, "\"mounted\"");
  EXPECT_EQ(expectations[0].failures[1].path, "registry");
  EXPECT_EQ(expectations[0].failures[1].expected, "absent");
  EXPECT_TRUE(expectations[1].failures.empty());
}

}  // namespace
}  // namespace Fabric
