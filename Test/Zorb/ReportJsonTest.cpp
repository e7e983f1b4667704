#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "Zorb/ReportJson.h"

namespace Zorb {
namespace {

using Fabric::Report;

nlohmann::json jsonOf(const Report& report) {
  std::ostringstream out;
  writeReportJson(report, out);
  return nlohmann::json::parse(out.str());
}

TEST(ReportJsonTest, EmptyReport) {
  EXPECT_EQ(jsonOf({}), nlohmann::json::parse(R"({
    "document": "", "time": 0, "switches": {"known": 0, "connected": 0, "inactive": 0},
    "groups": [], "publishGroups": [], "expectations": {"checked": 0, "failed": 0, "notReached": 0}})"));
}

TEST(ReportJsonTest, WholeReport) {
  static const StructuredLog::LogHandle kHandle("ID", 3, "%s", "", "");
  Report report;
  report.document = "fabric.yaml";
  report.time = 12.5;
  report.interrupted = true;
  report.leader = "gen-1";
  report.switches = {{"id1", "leaf1", true, false}, {"id2", "", false, true}};
  Report::Missing failed;
  failed.cause = Report::Cause::failed;
  failed.switches = {0};
  failed.paths = {"p", "q"};
  failed.timeFirst = 1;
  failed.timeLast = 2.5;
  Report::Missing refused;
  refused.admission = Controller::Admission::notConnected;
  refused.switches = {1};
  refused.paths = {"p"};
  report.groups = {{"A", "g", true, 2, "", {1, 2, 3, 4, 5}, {failed, refused}},
                   {"B", "g", false, 1, "no leader is known", {}, {}}};
  Report::Missing absent;
  absent.admission = Controller::Admission::entityMissing;
  absent.switches = {0};
  absent.paths = {"/c/a", "/c/b"};
  absent.timeFirst = 13;
  absent.timeLast = 13.5;
  Report::Missing held;
  held.cause = Report::Cause::publishedByOther;
  held.holder = "B";
  held.paths = {"/c/a"};
  using Readiness = Report::Readiness;
  report.publishGroups = {{"A", "g", 2, Readiness::heldBack, "", {1, 2, 3, 4}, {absent, held}},
                          {"B", "g", 1, Readiness::notReady, "no leader is known", {}, {}}};
  report.log = {{300.5, &kHandle, "text"}};
  report.expectations = {{1, {7, 3}, {}}, {2, {9, 5}, {{"a.b", "1", "2"}}}};
  report.expectationsNotReached = 4;
  EXPECT_EQ(jsonOf(report), nlohmann::json::parse(R"({
    "document": "fabric.yaml", "time": 12.5, "interrupted": true, "leader": "gen-1",
    "switches": {"known": 2, "connected": 1, "inactive": 1, "notConnected": ["id2"],
                 "names": {"id1": "leaf1"}},
    "groups": [
      {"service": "A", "group": "g", "proxy": true, "paths": 2,
       "switches": {"mounted": 1, "inProgress": 2, "failed": 3, "notAdmitted": 4,
                    "notConnected": 5},
       "notMounted": [
         {"reason": "failed", "askedFirst": 1, "askedLast": 2.5, "paths": ["p", "q"],
          "switches": ["id1"]},
         {"reason": "not connected", "paths": ["p"], "switches": ["id2"]}]},
      {"service": "B", "group": "g", "proxy": false, "paths": 1,
       "notInForce": "no leader is known"}],
    "publishGroups": [
      {"service": "A", "group": "g", "readiness": "held back", "paths": 2,
       "switches": {"published": 1, "waiting": 2, "notAdmitted": 3, "notConnected": 4},
       "notPublished": [
         {"reason": "local entity missing", "nextLookFirst": 13, "nextLookLast": 13.5,
          "paths": ["/c/a", "/c/b"], "switches": ["id1"]},
         {"reason": "path already of service B", "paths": ["/c/a"], "switches": []}]},
      {"service": "B", "group": "g", "readiness": "not ready", "paths": 1,
       "notInForce": "no leader is known"}],
    "log": [{"time": 300.5, "id": "ID", "severity": 3, "text": "text"}],
    "expectations": {"checked": 2, "failed": 1, "notReached": 4, "failures": [
      {"time": 2, "line": 9, "column": 5, "path": "a.b", "expected": "1", "actual": "2"}]}})"));
}

}  // namespace
}  // namespace Zorb
