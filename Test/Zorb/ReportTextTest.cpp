#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "Zorb/ReportText.h"

namespace Zorb {
namespace {

using Controller::Admission;
using Fabric::Report;
using testing::HasSubstr;
using testing::Not;
using Cause = Report::Cause;

class ReportTextTest : public testing::Test {
 protected:
  ReportTextTest() {
    report_.document = "fabric.yaml";
    report_.time = 900;
    report_.leader = "gen-1";
  }

  void switches(std::size_t count) {
    for (std::size_t at = 0; at != count; ++at) {
      report_.switches.push_back(
          {"id" + std::to_string(at), "leaf" + std::to_string(at + 1), true});
    }
  }
  Report::Group& group(const std::string& service, std::size_t paths) {
    report_.groups.push_back({service, "default", false, paths, "", {}, {}});
    return report_.groups.back();
  }
  Report::PublishGroup& publishGroup(const std::string& service, std::size_t paths) {
    report_.publishGroups.push_back(
        {service, "default", paths, Report::Readiness::ready, "", {}, {}});
    return report_.publishGroups.back();
  }
  static Report::Missing refused(Admission admission, Report::SwitchIndices switches,
                                 std::vector<std::string> paths) {
    Report::Missing line = missing(Cause::refused, std::move(switches), std::move(paths));
    line.admission = admission;
    return line;
  }
  static Report::Missing missing(Cause cause, Report::SwitchIndices switches,
                                 std::vector<std::string> paths) {
    Report::Missing missing;
    missing.cause = cause;
    missing.admission = Admission::versionNotInFilter;
    missing.switches = std::move(switches);
    missing.paths = std::move(paths);
    return missing;
  }
  static Report::Missing notConnected(Report::SwitchIndices switches,
                                      std::vector<std::string> paths) {
    return refused(Admission::notConnected, std::move(switches), std::move(paths));
  }

  std::string text(bool colours = false) const {
    std::ostringstream out;
    ReportText(report_, colours).write(out);
    return out.str();
  }

  Report report_;
};

TEST_F(ReportTextTest, NoService) {
  EXPECT_EQ(text(),
            "fabric.yaml at 900 s: leader gen-1, 0 of 0 switches connected\n"
            "No service asks for mounts or publications.\n");
}

TEST_F(ReportTextTest, NoLeader_AndInterrupted) {
  report_.leader = "";
  report_.interrupted = true;
  EXPECT_THAT(text(), testing::StartsWith(
                          "fabric.yaml at 900 s, where it was interrupted: no leader, 0 of 0"));
}

TEST_F(ReportTextTest, AllMounted) {
  switches(3);
  group("Topology", 2).counts.mounted = 3;
  EXPECT_EQ(text(),
            "fabric.yaml at 900 s: leader gen-1, 3 of 3 switches connected\n"
            "Everything that is admitted is mounted.\n"
            "\nMount groups, by switches\n"
            "  service   group    paths  mounted  in progress  failed  not admitted\n"
            "  Topology  default      2        3            -       -             -\n");
}

TEST_F(ReportTextTest, LongListsAreCut_ShortOnesAreNot) {
  switches(12);
  group("A", 5).missing = {missing(Cause::refused, {0, 1, 2, 3}, {"p", "q", "r"}),
                           missing(Cause::failed, {0, 1, 2, 3, 4}, {"p", "q", "r", "s"}),
                           missing(Cause::refused, {5}, {"p", "q", "r", "s", "t"})};
  EXPECT_THAT(text(), HasSubstr("4 switches  leaf1, leaf2, leaf3, leaf4     p, q, r\n"));
  EXPECT_THAT(text(), HasSubstr("5 switches  leaf1, leaf2, leaf3 (+2 more)  p, q (+2 more)\n"));
  EXPECT_THAT(text(), HasSubstr("1 switch    leaf6                          all 5 paths\n"));
}

TEST_F(ReportTextTest, TimesOfMountsThatAreNotThere) {
  switches(2);
  auto failed = missing(Cause::failed, {0}, {"p"});
  failed.timeFirst = failed.timeLast = 8;
  auto slow = missing(Cause::inProgress, {0, 1}, {"p"});
  slow.timeFirst = 8;
  slow.timeLast = 12.5;
  group("A", 1).missing = {failed, slow};
  EXPECT_THAT(text(), HasSubstr("failed, asked for at 8 s"));
  EXPECT_THAT(text(), HasSubstr("still in progress since 8 to 12.5 s"));
  EXPECT_THAT(text(), HasSubstr("Mounts from 1 switch have failed.\n"
                                "Mounts from 2 switches are still in progress.\n"));
  EXPECT_THAT(text(), Not(HasSubstr("Everything")));
}

TEST_F(ReportTextTest, GroupThatIsNotInForce) {
  group("A", 3).notInForce = "written under gen-0, the leader's is gen-1";
  group("B", 1);
  EXPECT_THAT(text(), HasSubstr("\nOne group is not in force.\n"));
  EXPECT_THAT(text(), HasSubstr("  A        default      3        -"));
  EXPECT_THAT(text(), HasSubstr("\nNot mounted, and why\n  A / default\n"
                                "    written under gen-0, the leader's is gen-1\n"));
}

TEST_F(ReportTextTest, SwitchesThatAreNotConnected_OnceForAllGroups) {
  switches(2);
  report_.switches[1].connected = false;
  group("A", 1).missing = {notConnected({1}, {"p"})};
  group("B", 1).missing = {notConnected({1}, {"q"})};
  report_.groups[0].counts.notConnected = 1;
  EXPECT_THAT(text(), HasSubstr("not admitted  not connected\n"));
  EXPECT_THAT(text(), HasSubstr("Not mounted, and why\n  Every group\n"
                                "    not connected  1 switch  leaf2\n"));
}

TEST_F(ReportTextTest, SwitchesThatAreNotConnected_ByGroupWhenTheyDiffer) {
  switches(3);
  group("A", 1).missing = {notConnected({1}, {"p"})};
  group("B", 1).missing = {notConnected({1, 2}, {"q"})};
  EXPECT_THAT(text(), Not(HasSubstr("Every group")));
  EXPECT_THAT(text(), HasSubstr("  A / default\n    not connected  1 switch    leaf2         p\n"
                                "  B / default\n    not connected  2 switches  leaf2, leaf3  q\n"));
}

// ---- publications

TEST_F(ReportTextTest, AllPublished) {
  switches(3);
  publishGroup("Topology", 2).counts.published = 3;
  EXPECT_EQ(text(),
            "fabric.yaml at 900 s: leader gen-1, 3 of 3 switches connected\n"
            "Everything that is admitted is published.\n"
            "\nPublish groups, by switches\n"
            "  service   group    readiness  paths  published  waiting  not admitted\n"
            "  Topology  default  ready          2          3        -             -\n");
}

TEST_F(ReportTextTest, AllMountedAndPublished) {
  group("A", 1);
  publishGroup("A", 1);
  EXPECT_THAT(text(), HasSubstr("\nEverything that is admitted is mounted and published.\n"));
}

TEST_F(ReportTextTest, MountedButNotPublished_AndTheOtherWayRound) {
  switches(1);
  group("A", 1);
  publishGroup("A", 1).missing = {refused(Admission::entityMissing, {0}, {"/c/a"})};
  EXPECT_THAT(text(), HasSubstr("\nEverything that is admitted is mounted.\n"
                                "The publication of 1 path waits for its local entity.\n"));
  report_.publishGroups.clear();
  publishGroup("A", 1);
  report_.groups[0].missing = {missing(Cause::failed, {0}, {"p"})};
  EXPECT_THAT(text(), HasSubstr("\nEverything that is admitted is published.\n"
                                "Mounts from 1 switch have failed.\n"));
}

TEST_F(ReportTextTest, WhatPublicationsWaitFor) {
  switches(3);
  auto absent = refused(Admission::entityMissing, {0, 1}, {"/c/a", "/c/b"});
  absent.timeFirst = absent.timeLast = 901;
  auto apart = refused(Admission::entityMissing, {}, {"/c/b", "/c/d"});
  apart.timeFirst = 900.5;
  apart.timeLast = 901;
  Report::PublishGroup& first = publishGroup("A", 3);
  first.readiness = Report::Readiness::heldBack;
  first.counts = {0, 2, 1, 0};
  first.missing = {absent, refused(Admission::notReady, {2}, {"/c/mine"})};
  publishGroup("B", 2).missing = {apart};
  report_.publishGroups[1].readiness = Report::Readiness::notReady;
  EXPECT_EQ(text(),
            "fabric.yaml at 900 s: leader gen-1, 3 of 3 switches connected\n"
            "Publications of 3 paths wait for their local entities.\n"
            "The publication of 1 path is not ready.\n"
            "\nPublish groups, by switches\n"
            "  service  group    readiness  paths  published  waiting  not admitted\n"
            "  A        default  held back      3          -        2             1\n"
            "  B        default  not ready      2          -        -             -\n"
            "\nNot published, and why\n"
            "  A / default\n"
            "    local entity missing, looked for again at 901 s           "
            "2 switches  leaf1, leaf2  /c/a, /c/b\n"
            "    not ready to publish                                      "
            "1 switch    leaf3         /c/mine\n"
            "  B / default\n"
            "    local entity missing, looked for again at 900.5 to 901 s  "
            "                          /c/b, /c/d\n");
}

TEST_F(ReportTextTest, PublicationsOfSwitchesThatAreNotConnected_AreApartFromMounts) {
  switches(2);
  report_.switches[1].connected = false;
  group("A", 1).missing = {notConnected({1}, {"p"})};
  publishGroup("A", 1).missing = {notConnected({1}, {"/c/a"})};
  publishGroup("B", 1).missing = {notConnected({1}, {"/c/b"})};
  report_.publishGroups[0].counts.notConnected = 1;
  EXPECT_THAT(text(), HasSubstr("  A        default  ready          1          -        -"
                                "             -              1\n"));
  EXPECT_THAT(text(), HasSubstr("\nNot mounted, and why\n  A / default\n"
                                "    not connected  1 switch  leaf2  p\n"));
  EXPECT_THAT(text(), HasSubstr("\nNot published, and why\n  Every group\n"
                                "    not connected  1 switch  leaf2\n"));
}

TEST_F(ReportTextTest, PublishGroupThatIsNotInForce_CountsWithTheMountGroups) {
  group("A", 1).notInForce = "no leader is known";
  publishGroup("B", 2).notInForce = "the group has no paths";
  report_.publishGroups[0].readiness = Report::Readiness::notReady;
  EXPECT_THAT(text(), HasSubstr("\n2 groups are not in force.\n"));
  EXPECT_THAT(text(), HasSubstr("  B        default  not ready      2          -        -"
                                "             -\n"));
  EXPECT_THAT(text(), HasSubstr("\nNot published, and why\n  B / default\n"
                                "    the group has no paths\n"));
  EXPECT_THAT(text(), Not(HasSubstr("Everything")));
}

TEST_F(ReportTextTest, PathOfAnotherService) {
  switches(1);
  auto held = missing(Cause::publishedByOther, {0}, {"/c/shared"});
  held.holder = "B";
  publishGroup("A", 1).missing = {held};
  EXPECT_THAT(text(), HasSubstr("    path already of service B  1 switch  leaf1  /c/shared\n"));
}

// ---- the rest

TEST_F(ReportTextTest, Log_LongOneIsCut) {
  static const StructuredLog::LogHandle kHandle("ID", 3, "%s", "", "");
  for (int at = 0; at != 25; ++at) {
    report_.log.push_back({9.5 + at, &kHandle, "text " + std::to_string(at)});
  }
  EXPECT_THAT(text(), HasSubstr("\nLog\n   9.5 s  ID  text 0\n  10.5 s  ID  text 1\n"));
  EXPECT_THAT(text(), HasSubstr("text 19\n  (+5 more)\n"));
  EXPECT_THAT(text(), Not(HasSubstr("text 20")));
}

TEST_F(ReportTextTest, Expectations) {
  report_.expectations = {{1, {7, 3}, {}}, {2, {9, 3}, {{"a.b", "1", std::string(500, 'x')}}}};
  report_.expectationsNotReached = 2;
  EXPECT_THAT(text(), HasSubstr("\nExpectations\n  1 holds, 1 does not, 2 were not reached\n"
                                "  fabric.yaml:9:3: not as expected at 2 s\n"
                                "    a.b: expected 1, is " +
                                std::string(300, 'x') + "...\n"));
}

TEST_F(ReportTextTest, LongValueIsNotCutWithinACharacter) {
  std::string value = "x";
  for (int at = 0; at != 200; ++at) value += "\xc3\xa4";
  report_.expectations = {{2, {9, 3}, {{"a", "1", value}}}};
  EXPECT_THAT(text(), HasSubstr("\xc3\xa4...\n"));
  EXPECT_THAT(text(), Not(HasSubstr("\xc3...")));
}

TEST_F(ReportTextTest, Colours) {
  switches(1);
  group("A", 1).missing = {missing(Cause::failed, {0}, {"p"})};
  EXPECT_THAT(text(true), HasSubstr("\x1b[31mMounts from 1 switch have failed.\x1b[0m\n"));
  EXPECT_THAT(text(true), HasSubstr("\x1b[1mfabric.yaml\x1b[0m at 900 s"));
}

}  // namespace
}  // namespace Zorb
