#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>

#include "Soak/Broken.h"
#include "Soak/Crew.h"

namespace Soak {
namespace {

TEST(CrewTest, EachSeedIsRunOnce_WhateverTheProcesses) {
  const Crew::Work work = [](std::uint64_t seed, Note& note) {
    note.events = 1;
    note.steps = seed;
    note.end(seed * 17);
  };
  const Note one = Crew(work, 1).run(10, 50);
  const Note three = Crew(work, 3).run(10, 50);
  EXPECT_FALSE(one.failed);
  EXPECT_EQ(one.runs, 50U);
  EXPECT_EQ(one.eventsOfAll, 50U);
  EXPECT_EQ(one.stepsOfAll, (10U + 59U) * 25U);
  EXPECT_EQ(three.runs, 50U);
  EXPECT_EQ(three.stepsOfAll, one.stepsOfAll);
  EXPECT_EQ(three.digest, one.digest);
}

TEST(CrewTest, ABrokenInvariantEndsTheRuns) {
  const Note sum = Crew([](std::uint64_t seed, Note& note) {
                     note.events = 3;
                     if (seed == 7) throw Broken("two and two are four:", " it was five");
                     note.end(0);
                   }).run(1, 100);
  EXPECT_TRUE(sum.failed);
  EXPECT_EQ(sum.seed, 7U);
  EXPECT_EQ(sum.events, 3U);
  EXPECT_EQ(sum.runs, 6U);
  EXPECT_STREQ(sum.invariant, "two and two are four:");
  EXPECT_STREQ(sum.text, "two and two are four: it was five");
}

TEST(CrewTest, AnotherExceptionIsAFailureToo) {
  const Note sum =
      Crew([](std::uint64_t, Note&) { throw std::runtime_error("no room"); }).run(1, 1);
  EXPECT_STREQ(sum.text, "no room");
}

TEST(CrewTest, AProcessThatDiesIsTold) {
  const Note killed = Crew([](std::uint64_t, Note&) { raise(SIGKILL); }).run(4, 1);
  EXPECT_TRUE(killed.failed);
  EXPECT_EQ(killed.seed, 4U);
  EXPECT_STREQ(killed.text, "the process was ended by signal 9");
  const Note left = Crew([](std::uint64_t, Note&) { _exit(9); }).run(4, 1);
  EXPECT_STREQ(left.text, "the process ended with status 9");
}

TEST(CrewTest, ARunThatDoesNotEndIsEnded) {
  const Note sum = Crew([](std::uint64_t, Note&) { pause(); }, 1, 1).run(1, 1);
  EXPECT_STREQ(sum.invariant, "a run comes to an end");
}

TEST(CrewTest, WhoWatchesMayEndIt) {
  const Note sum = Crew([](std::uint64_t, Note& note) {
                     usleep(1000);
                     note.end(0);
                   }).run(1, 1'000'000, [](const Note&) { return false; });
  EXPECT_FALSE(sum.failed);
  EXPECT_LT(sum.runs, 1'000'000U);
}

}  // namespace
}  // namespace Soak
