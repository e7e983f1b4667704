#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Fabric/MissingLines.h"

namespace Fabric {
namespace {

using Controller::Admission;
using testing::ElementsAre;
using testing::IsEmpty;
using Cause = Report::Cause;
using Indices = Report::SwitchIndices;

const MissingLines::Reason kFailed{Cause::failed, Admission::admitted, {}};
const MissingLines::Reason kOldVersion{Cause::refused, Admission::versionNotInFilter, {}};

TEST(MissingLinesTest, NothingNoted_NoLine) {
  MissingLines lines(2);
  lines.pathEnds("p");
  EXPECT_THAT(lines.lines(), IsEmpty());
  EXPECT_THAT(lines.worst(), ElementsAre(std::nullopt, std::nullopt));
}

TEST(MissingLinesTest, SameReasonAndSwitches_OneLine_OtherSwitchesAnother) {
  MissingLines lines(3);
  for (const char* const path : {"p", "q"}) {
    lines.note(kOldVersion, 0);
    lines.note(kOldVersion, 2);
    lines.pathEnds(path);
  }
  lines.note(kOldVersion, 2);
  lines.pathEnds("r");
  const auto found = lines.lines();
  ASSERT_EQ(found.size(), 2U);
  EXPECT_EQ(found[0].admission, Admission::versionNotInFilter);
  EXPECT_EQ(found[0].switches, (Indices{0, 2}));
  EXPECT_THAT(found[0].paths, ElementsAre("p", "q"));
  EXPECT_EQ(found[1].switches, Indices{2});
  EXPECT_THAT(found[1].paths, ElementsAre("r"));
}

TEST(MissingLinesTest, WorstOfASwitch_IsThatOfAnyPath) {
  MissingLines lines(2);
  lines.note(kFailed, 1);
  lines.pathEnds("p");
  lines.note(kOldVersion, 0);
  lines.note(kOldVersion, 1);
  lines.pathEnds("q");
  EXPECT_THAT(lines.worst(), ElementsAre(kOldVersion, kFailed));
  EXPECT_EQ(lines.lines().front().cause, Cause::failed);
}

TEST(MissingLinesTest, Times_SpanSwitchesAndPaths) {
  MissingLines lines(2);
  lines.note(kFailed, 0, 8);
  lines.note(kFailed, 1, 3);
  lines.pathEnds("p");
  lines.note(kFailed, 0);
  lines.note(kFailed, 1, 12.5);
  lines.pathEnds("q");
  const auto found = lines.lines();
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].timeFirst, 3);
  EXPECT_EQ(found[0].timeLast, 12.5);
}

TEST(MissingLinesTest, NotedForAll_IsALineWithoutSwitches_UnlessSomeHaveIt) {
  MissingLines lines(2);
  lines.noteForAll(kOldVersion, 4);
  lines.pathEnds("p");
  lines.noteForAll(kOldVersion, 5);
  lines.note(kOldVersion, 1);
  lines.pathEnds("q");
  const auto found = lines.lines();
  ASSERT_EQ(found.size(), 2U);
  EXPECT_THAT(found[0].switches, IsEmpty());
  EXPECT_THAT(found[0].paths, ElementsAre("p"));
  EXPECT_EQ(found[0].timeLast, 4);
  EXPECT_EQ(found[1].switches, Indices{1});
  EXPECT_EQ(found[1].timeFirst, 5);
  EXPECT_EQ(lines.worst()[0], std::nullopt);
}

}  // namespace
}  // namespace Fabric
