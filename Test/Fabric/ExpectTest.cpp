#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "Fabric/Expect.h"
#include "Fabric/Reader.h"

namespace Fabric {
namespace {

constexpr const char* kState = R"({
  "time": 12.5,
  "registry": {"mountEntries": {"topology/status": {"type": "Topology::Status", "flags": "r"}},
               "publishReady": {"Topology": false}},
  "mounts": {"02:00:00:00:00:0a": {"topology/status": {"state": "mounted", "retries": 4294967295}}},
  "mountStatus": {"Topology": {"systems": {"02:00:00:00:00:0a": {"default": {"processed": true}}}},
                  "systems": {}},
  "published": {"systems": {"02:00:00:00:00:0a": {"processed": {"Topology": true}}}},
  "initialMounts": {"connectionPeriodComplete": false,
                    "initialSwitches": ["02:00:00:00:00:0a", "02:00:00:00:00:0b"]},
  "log": [{"time": 300.1, "id": "X"}]
})";

std::optional<std::string> leaf1(std::string_view name) {
  return name == "leaf1" ? std::optional<std::string>("02:00:00:00:00:0a") : std::nullopt;
}

/// The failures, each as "path: expected, actual".
std::vector<std::string> failing(std::string_view expect) {
  std::vector<std::string> lines;
  for (const ExpectFailure& failure :
       failures(read("expect", expect), nlohmann::json::parse(kState), leaf1)) {
    lines.push_back(failure.path + ": " + failure.expected + ", " + failure.actual);
  }
  return lines;
}

using Lines = std::vector<std::string>;

TEST(ExpectTest, EveryNamedMemberEqual_Holds) {
  EXPECT_EQ(failing("{}"), Lines{});
  EXPECT_EQ(failing("{time: 12.5, registry: {mountEntries: {topology/status: {flags: r}}}}"),
            Lines{});
  EXPECT_EQ(failing("{registry: {publishReady: {Topology: false}}}"), Lines{});
}

TEST(ExpectTest, DifferentMember_IsReportedWithPathAndBothValues) {
  EXPECT_EQ(
      failing("{time: 12, mounts: {leaf1: {topology/status: {state: failed}}}}"),
      (Lines{"time: 12, 12.5", "mounts.leaf1.topology/status.state: \"failed\", \"mounted\""}));
}

TEST(ExpectTest, SwitchKeys_AreIdsInEitherCaseOrDisplayNames) {
  for (const char* key : {"leaf1", "\"02:00:00:00:00:0a\"", "\"02:00:00:00:00:0A\""}) {
    const std::string name = key;
    EXPECT_EQ(failing("{mounts: {" + name + ": {topology/status: {state: mounted}}}}"), Lines{});
    EXPECT_EQ(failing("{mountStatus: {Topology: {systems: {" + name +
                      ": {default: {processed: true}}}}}}"),
              Lines{});
    EXPECT_EQ(failing("{published: {systems: {" + name + ": {processed: {Topology: true}}}}}"),
              Lines{});
  }
}

TEST(ExpectTest, ServiceCalledSystems_IsNoObjectOfSwitches) {
  EXPECT_EQ(failing("{mountStatus: {systems: {initialMountsComplete: {leaf1: null}}}}"), Lines{});
}

TEST(ExpectTest, NameThatIsNoSwitchNow_IsAbsent) {
  EXPECT_EQ(failing("{mounts: {leaf2: null}}"), Lines{});
  EXPECT_EQ(failing("{mounts: {leaf2: {x: {state: mounted}}}}"),
            Lines{"mounts.leaf2.x.state: \"mounted\", absent"});
}

TEST(ExpectTest, Null_ExpectsNoMember) {
  EXPECT_EQ(failing("{mounts: {\"02:00:00:00:00:01\": null}, publishStatus: null}"), Lines{});
  EXPECT_EQ(failing("{time: null}"), Lines{"time: absent, 12.5"});
}

TEST(ExpectTest, WhatIsInsideAnAbsentObject_IsAbsent) {
  EXPECT_EQ(failing("{publishStatus: {Topology: {default: null}}}"), Lines{});
  EXPECT_EQ(failing("{publishStatus: {Topology: {default: {state: 1}}}}"),
            Lines{"publishStatus.Topology.default.state: 1, absent"});
}

TEST(ExpectTest, EmptyValue_ExpectsNoMoreThanNone) {
  EXPECT_EQ(
      failing("{publishStatus: {}, registry: {mountEntries: {a: {flags: '', mounters: {}}}}}"),
      Lines{});
  EXPECT_EQ(failing("{log: []}"), Lines{R"(log: [], [{"id":"X","time":300.1}])"});
}

TEST(ExpectTest, Numbers_AreEqualToAMicrosecond) {
  EXPECT_EQ(failing("{time: 12.5000004}"), Lines{});
  EXPECT_EQ(failing("{time: 12.500001}"), Lines{"time: 12.500001, 12.5"});
  EXPECT_EQ(failing("{mounts: {leaf1: {topology/status: {retries: 4294967295}}}}"), Lines{});
}

TEST(ExpectTest, Arrays_AreComparedWhole) {
  EXPECT_EQ(failing("{log: [{time: 300.1, id: X}]}"), Lines{});
  EXPECT_EQ(failing("{log: [{id: X}]}").size(), 1U);
  EXPECT_EQ(failing("{initialMounts: {initialSwitches: ['02:00:00:00:00:0a']}}").size(), 1U);
  EXPECT_EQ(
      failing("{initialMounts: {initialSwitches: ['02:00:00:00:00:0b', '02:00:00:00:00:0a']}}")
          .size(),
      1U);
}

TEST(ExpectTest, OtherType_IsNotEqual) {
  EXPECT_EQ(failing("{time: '12.5'}"), Lines{"time: \"12.5\", 12.5"});
  EXPECT_EQ(failing("{time: {a: null}}"), Lines{"time: {\"a\":null}, 12.5"});
  EXPECT_EQ(failing("{initialMounts: {connectionPeriodComplete: 0}}").size(), 1U);
  EXPECT_EQ(failing("{mounts: true}").size(), 1U);
}

}  // namespace
}  // namespace Fabric
