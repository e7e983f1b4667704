#include <gtest/gtest.h>

#include "Fabric/InputError.h"
#include "Soak/Crew.h"
#include "Soak/Life.h"
#include "Soak/ScriptWriter.h"

namespace Soak {
namespace {

TEST(LifeTest, ARunIsTheSameEachTimeAndInEachWay) {
  const std::string text = randomScript({3, &profiles()[0], 40}).text();
  Note note;
  const std::uint64_t digest = live(text, {}, note);
  EXPECT_GT(note.steps, note.events);
  EXPECT_GT(note.events, 0U);
  EXPECT_EQ(live(text, {}, note), digest);
  EXPECT_EQ(live(text, {.traces = true}, note), digest);
  EXPECT_NE(live(randomScript({4, &profiles()[0], 40}).text(), {}, note), digest);
}

TEST(LifeTest, WhatIsNoDocumentIsAnInputError) {
  Note note;
  EXPECT_THROW(live("{", {}, note), Fabric::InputError);
}

TEST(LifeTest, AnAssertionIsNotedBeforeTheProcessEnds) {
  // A published directory that is not there, and a connected switch.
  constexpr const char* kText = R"({"controller": {"leader": "g"},
    "services": {"T": {"publish": {"generation": "g", "groups": {"d": {"dirs": {"/x": {}}}}}}},
    "switches": {"02:00:00:00:00:01": {"connected": true, "services": {"T": 1}}}})";
  const Note sum = Crew([](std::uint64_t, Note& note) { live(kText, {}, note); }).run(1, 1);
  EXPECT_TRUE(sum.failed);
  EXPECT_NE(std::string(sum.text).find("Publish path doesn't exist"), std::string::npos)
      << sum.text;
}

/// Each fault does what it says, and no invariant minds.
TEST(LifeTest, FaultsAreDone) {
  constexpr const char* kText = R"({"controller": {"leader": "g"},
    "services": {"T": {"mount": {"generation": "g", "groups": {"d": {"paths": {"a": {}}}}}}},
    "switches": {"02:00:00:00:00:01": {"connected": true, "services": {"T": 1}}},
    "events": [
      {"at": 0, "note": "fault lose 02:00:00:00:00:01 a"},
      {"at": 1, "note": "fault state 02:00:00:00:00:01 a mounted"},
      {"at": 2, "note": "fault vanish 02:00:00:00:00:01 a"},
      {"at": 3, "note": "fault vanish 02:00:00:00:00:02 a"},
      {"at": 4, "note": "fault within groupState 1",
       "apply": {"switches": {"02:00:00:00:00:01": {"connected": true}}}},
      {"at": 5, "apply": {"switches": {"02:00:00:00:00:01": {"connected": false}}}}]})";
  Note note;
  EXPECT_NO_THROW(live(kText, {}, note));
  EXPECT_EQ(note.events, 2U);
}

/// One that takes the place of an entry that is just going would stop the process.
TEST(LifeTest, AnEntryOfAnotherServiceComesWhenThatOfTheFirstHasGone) {
  constexpr const char* kText = R"({"controller": {"leader": "g"},
    "services": {"T": {"publish": {"generation": "g", "groups": {"d": {"paths": {"/a": {}}}}}},
                 "U": {"publish": {"generation": "g", "groups": {"d": {}}}}},
    "events": [
      {"at": 1, "note": "fault within publishEntry 1",
       "apply": {"services": {"U": {"publish": {"groups": {"d": {"paths": {"/a": {}}}}}}}}},
      {"at": 1, "apply": {"services": {"T": {"publish": {"groups": {"d": {"paths": null}}}}}}}]})";
  Note note;
  EXPECT_NO_THROW(live(kText, {}, note));
  EXPECT_EQ(note.events, 2U);
}

/// A switch that was taken away does not come back with what was to be said of it before.
TEST(LifeTest, APatchOfASwitchThatGoesIsAppliedBeforeItGoes) {
  constexpr const char* kText = R"({"controller": {"leader": "g"},
    "switches": {"02:00:00:00:00:01": {"connected": true, "services": {"T": 1}}},
    "events": [
      {"at": 1, "note": "fault within peer 1",
       "apply": {"switches": {"02:00:00:00:00:01": {"services": {"T": 2}}}}},
      {"at": 1, "apply": {"switches": {"02:00:00:00:00:01": null}}},
      {"at": 2, "apply": {"services": {"T": {}}}}]})";
  Note note;
  EXPECT_NO_THROW(live(kText, {}, note));
}

}  // namespace
}  // namespace Soak
