#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Orm/ActivityLoop.h"
#include "Test/Orm/Alarm.h"

namespace {

using Orm::Due;
using Orm::Ptr;
using OrmTest::Alarm;
using testing::ElementsAre;

/// Work that the test hands it, each piece with a name that is logged when it is done.
class Script : public Orm::ActivitySource {
 public:
  Script(std::string& log, std::uint32_t rank) : log_(log), rank_(rank) {}

  void workIs(Orm::Seconds time, std::uint64_t sequence, std::string name,
              std::function<void()> what = {}) {
    work_.push_back({{Orm::tickOf(time), rank_, sequence}, std::move(name), std::move(what)});
  }

  Due nextDue() override { return work_.empty() ? Due() : work_.front().due; }
  void runNext() override {
    const Work work = work_.front();
    work_.pop_front();
    log_ += work.name;
    if (work.what) work.what();
  }

 private:
  struct Work {
    Due due;
    std::string name;
    std::function<void()> what;
  };

  std::string& log_;
  const std::uint32_t rank_;
  std::deque<Work> work_;
};

class ActivityLoopTest : public testing::Test {
 protected:
  std::unique_ptr<Alarm> alarm(Orm::Seconds time, std::string name) {
    return std::make_unique<Alarm>(clock_, time,
                                   [this, name = std::move(name)](Alarm&) { log_ += name; });
  }

  const Ptr<Orm::Clock> clock_ = Orm::make<Orm::Clock>(std::make_unique<Orm::VirtualTime>(0));
  Orm::ActivityLoop loop_{clock_};
  std::string log_;
};

TEST(DueTest, Before_ComparesTimeThenRankThenSequence) {
  const std::vector<Due> sorted{{1, 0, 9}, {1, 1, 2}, {1, 1, 3}, {2, 0, 0}, {2, 3, 0}};
  for (std::size_t a = 0; a != sorted.size(); ++a) {
    for (std::size_t b = 0; b != sorted.size(); ++b) {
      EXPECT_EQ(sorted[a].before(sorted[b]), a < b) << a << " " << b;
    }
  }
  EXPECT_TRUE(Due().never());
  EXPECT_FALSE(sorted[0].never());
}

TEST_F(ActivityLoopTest, Empty_HasNothingToDoAndTimeStands) {
  EXPECT_FALSE(loop_.runOne());
  EXPECT_EQ(clock_->now(), 0);
  EXPECT_EQ(&loop_.clock(), clock_.get());
}

TEST_F(ActivityLoopTest, RunOne_DoesOnePieceAndTimeIsItsTime) {
  const auto a = alarm(2, "a");
  const auto b = alarm(3, "b");
  EXPECT_TRUE(loop_.runOne());
  EXPECT_EQ(log_, "a");
  EXPECT_EQ(clock_->now(), 2);
  EXPECT_TRUE(loop_.runOne());
  EXPECT_FALSE(loop_.runOne());
  EXPECT_EQ(log_, "ab");
  EXPECT_EQ(clock_->now(), 3);
}

TEST_F(ActivityLoopTest, RunOne_WhatIsDueLaterThanUntilIsLeftAndTimeStands) {
  const auto a = alarm(2, "a");
  EXPECT_FALSE(loop_.runOne(1.999'999));
  EXPECT_EQ(clock_->now(), 0);
  EXPECT_TRUE(loop_.runOne(2));
}

TEST_F(ActivityLoopTest, Run_IncludesUntilAndEndsThere) {
  const auto a = alarm(2, "a");
  const auto b = alarm(5, "b");
  const auto c = alarm(5.000'001, "c");
  loop_.run(5);
  EXPECT_EQ(log_, "ab");
  EXPECT_EQ(clock_->now(), 5);
  loop_.run(7);
  EXPECT_EQ(log_, "abc");
  EXPECT_EQ(clock_->now(), 7);
  loop_.run(6);  // has passed
  EXPECT_EQ(clock_->now(), 7);
}

TEST_F(ActivityLoopTest, Run_ForEverEndsWhenNothingIsLeftAtTheTimeOfTheLast) {
  const auto a = alarm(2, "a");
  loop_.run(Orm::kNever);
  EXPECT_EQ(log_, "a");
  EXPECT_EQ(clock_->now(), 2);
}

TEST_F(ActivityLoopTest, Run_UntilATimeOfFloatNoiseIncludesWhatIsDueAtItsTick) {
  const auto a = alarm(0.3, "a");
  loop_.run(0.1 + 0.1 + 0.1);
  EXPECT_EQ(log_, "a");
  const auto b = alarm(0.1 + 0.7, "b");  // 0.7999999999999999
  const auto c = alarm(0.8, "c");
  loop_.run(0.8);
  EXPECT_EQ(log_, "abc");
}

TEST_F(ActivityLoopTest, EqualTimes_TheLowerRankComesFirst) {
  Script early(log_, 0);
  Script late(log_, 2);
  loop_.sourceIs(late);
  loop_.sourceIs(early);
  const auto a = alarm(1, "a");
  late.workIs(1, 0, "l");
  early.workIs(1, 100, "e");
  early.workIs(2, 100, "E");
  loop_.run(2);
  EXPECT_EQ(log_, "ealE");
}

TEST_F(ActivityLoopTest, EqualTimesAndRanks_TheSmallerSequenceComesFirst) {
  Script script(log_, Orm::kOrdinaryRank);
  loop_.sourceIs(script);
  const std::uint64_t first = Orm::Clock::nextSequence();
  const auto a = alarm(1, "a");
  const std::uint64_t second = Orm::Clock::nextSequence();
  const auto b = alarm(1, "b");
  script.workIs(1, first, "1");
  script.workIs(1, second, "2");
  loop_.run(1);
  EXPECT_EQ(log_, "1a2b");
}

TEST_F(ActivityLoopTest, EqualTimes_OfFloatNoiseAreOrderedByRank) {
  Script early(log_, 0);
  loop_.sourceIs(early);
  const auto a = alarm(0.1 + 0.7, "a");
  early.workIs(0.8, 0, "e");
  loop_.run(1);
  EXPECT_EQ(log_, "ea");
}

TEST_F(ActivityLoopTest, NextSequence_Grows) {
  const std::uint64_t first = Orm::Clock::nextSequence();
  EXPECT_LT(first, Orm::Clock::nextSequence());
}

TEST_F(ActivityLoopTest, SourceDel_ItsWorkIsNotDoneAnyMore) {
  Script script(log_, 0);
  loop_.sourceIs(script);
  script.workIs(1, 0, "1", [&] { loop_.sourceDel(script); });
  script.workIs(1, 1, "2");
  const auto a = alarm(1, "a");
  loop_.run(2);
  EXPECT_EQ(log_, "1a");
}

TEST_F(ActivityLoopTest, SourceIs_InTheMiddleOfWorkIsAskedFromTheNextPieceOn) {
  Script outer(log_, 0);
  Script inner(log_, 0);
  outer.workIs(1, 0, "o", [&] { loop_.sourceIs(inner); });
  inner.workIs(1, 1, "i");
  loop_.sourceIs(outer);
  loop_.run(1);
  EXPECT_EQ(log_, "oi");
}

TEST_F(ActivityLoopTest, WorkThatMakesWorkForTheSameTime_IsDoneBeforeTimeGoesOn) {
  std::vector<double> times;
  const Alarm chain(clock_, 1, [&](Alarm& self) {
    times.push_back(clock_->now());
    if (times.size() < 4) self.timeMinIs(clock_->now());
  });
  const auto later = alarm(1.000'001, "l");
  loop_.run(2);
  EXPECT_THAT(times, ElementsAre(1, 1, 1, 1));
  EXPECT_EQ(log_, "l");
}

TEST(ActivityLoopRealTimeTest, Run_WaitsForRealTime) {
  const auto clock = Orm::make<Orm::Clock>(std::make_unique<Orm::RealTime>(100));
  Orm::ActivityLoop loop(clock);
  const Orm::Seconds start = clock->now();
  Orm::Seconds at = 0;
  const Alarm alarm(clock, start + 0.004, [&](Alarm&) { at = clock->now(); });
  loop.run(start + 0.008);
  EXPECT_GE(start, 100);
  EXPECT_GE(at, start + 0.003'999);
  EXPECT_GE(clock->now(), start + 0.007'999);
}

}  // namespace
