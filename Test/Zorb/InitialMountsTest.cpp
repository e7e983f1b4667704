// How the report shows how far the groups are with their initial mounts.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "Zorb/ReportJson.h"
#include "Zorb/ReportText.h"

namespace Zorb {
namespace {

using Fabric::InitialMounts;
using Fabric::Report;
using testing::HasSubstr;
using testing::Not;
using Phase = InitialMounts::Phase;

Report reportOf(std::initializer_list<InitialMounts> groups) {
  Report report;
  for (const InitialMounts& mounts : groups) {
    Report::Group& group = report.groups.emplace_back();
    group.service = "S" + std::to_string(report.groups.size());
    group.group = "default";
    group.initialMounts = mounts;
  }
  return report;
}

std::string textOf(const Report& report, bool colours = false) {
  std::ostringstream out;
  ReportText(report, colours).write(out);
  return out.str();
}

nlohmann::json jsonOf(const InitialMounts& mounts) {
  std::ostringstream out;
  writeReportJson(reportOf({mounts}), out);
  return nlohmann::json::parse(out.str()).at("groups").at(0).at("initialMounts");
}

TEST(InitialMountsTest, Text_HasALineForEachGroup) {
  EXPECT_THAT(textOf(reportOf({{Phase::connectionPeriod, 6.5, 0, {}, 0, {}},
                               {Phase::complete, 12, 3, {}, 0, {}}})),
              HasSubstr("\nInitial mounts\n"
                        "  S1 / default  waiting for the connection period until 6.5 s\n"
                        "  S2 / default  complete at 12 s\n"));
}

TEST(InitialMountsTest, Text_OfGroupsThatAreNotTracked_HasNoSection) {
  Report report = reportOf({{}});
  report.groups[0].initialMounts.reset();
  EXPECT_THAT(textOf(report), Not(HasSubstr("Initial mounts")));
}

TEST(InitialMountsTest, Text_CutsLongListsOfSwitches) {
  InitialMounts mounts{Phase::processing, {}, 9, {}, 0, {}};
  for (int at = 1; at != 8; ++at) {
    mounts.switches.push_back({"id", "leaf" + std::to_string(at), {}, false});
  }
  EXPECT_THAT(textOf(reportOf({mounts})),
              HasSubstr("waiting for 7 of 9 switches to be processed: leaf1, leaf2, leaf3 (+4 more)"
                        "\n"));
}

TEST(InitialMountsTest, Text_IsGreenWhenCompleteAndElseAsWhatIsUnderWay) {
  EXPECT_THAT(textOf(reportOf({{Phase::complete, 12, 3, {}, 0, {}}}), true),
              HasSubstr("\x1b[32mcomplete at 12 s\x1b[0m"));
  EXPECT_THAT(textOf(reportOf({{Phase::flushing, 9, 3, {}, 0, {"standby"}}}), true),
              HasSubstr("\x1b[33mflushing: standby; given up at 9 s\x1b[0m"));
}

TEST(InitialMountsTest, Json_OfEachPhase) {
  EXPECT_EQ(jsonOf({Phase::connectionPeriod, {}, 0, {}, 0, {}}),
            nlohmann::json::parse(R"({"phase": "connection period"})"));
  EXPECT_EQ(
      jsonOf({Phase::processing, {}, 2, {{"id1", "leaf1", {}, false}}, 0, {}}),
      nlohmann::json::parse(R"({"phase": "processing", "snapshot": 2, "waitsFor": {"id1": []}})"));
  EXPECT_EQ(jsonOf({Phase::mounting, 246.0, 2, {{"id1", "leaf1", {"a", "b"}, false}}, 0, {}}),
            nlohmann::json::parse(R"({"phase": "mounting", "until": 246, "snapshot": 2,
                                      "waitsFor": {"id1": ["a", "b"]}})"));
  EXPECT_EQ(jsonOf({Phase::flushing, 120.0, 2, {}, 0, {"standby"}}),
            nlohmann::json::parse(R"({"phase": "flushing", "until": 120, "snapshot": 2,
                                      "connections": ["standby"]})"));
  EXPECT_EQ(jsonOf({Phase::complete, 12.0, 2, {}, 0, {}}),
            nlohmann::json::parse(R"({"phase": "complete", "since": 12, "snapshot": 2})"));
}

}  // namespace
}  // namespace Zorb
