#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Orm/ActivityLoop.h"
#include "Platform/Orm/ActivityScope.h"
#include "Platform/Orm/Clock.h"
#include "Platform/Orm/MutatorReinstantiatingError.h"
#include "Test/Orm/Alarm.h"

namespace {

using Orm::kNever;
using Orm::Ptr;
using OrmTest::Alarm;
using testing::ElementsAre;

static_assert(sizeof(Orm::ClockReactor<OrmTest::Sleeper>) == 64,
              "a timer of a machine takes a cache line");

class ClockTest : public testing::Test {
 protected:
  static Ptr<Orm::Clock> virtualClock(Orm::Seconds start) {
    return Orm::make<Orm::Clock>(std::make_unique<Orm::VirtualTime>(start));
  }

  /// An alarm that logs its name.
  std::unique_ptr<Alarm> alarm(Orm::Seconds time, std::string name) {
    return std::make_unique<Alarm>(clock_, time,
                                   [this, name = std::move(name)](Alarm&) { log_ += name; });
  }

  void run(Orm::Seconds until = 1000) { loop_.run(until); }

  const Ptr<Orm::Clock> clock_ = virtualClock(10);
  Orm::ActivityLoop loop_{clock_};
  std::string log_;
};

TEST_F(ClockTest, NeverArmed_ReadsZeroAndDoesNotFire) {
  Alarm alarm;
  alarm.notifierIs(clock_);
  EXPECT_EQ(alarm.timeMin(), 0);
  EXPECT_EQ(alarm.dueTime(), 0);
  EXPECT_EQ(alarm.fired(), 1) << "called once when it is pointed at the clock";
  EXPECT_FALSE(loop_.runOne());
  EXPECT_EQ(clock_->armedTimers(), 0U);
}

TEST_F(ClockTest, PointedAtAClock_TheHandlerIsCalledAtOnce) {
  Alarm alarm;
  alarm.notifierIs(nullptr);
  EXPECT_EQ(alarm.fired(), 0);
  alarm.notifierIs(clock_);
  alarm.notifierIs(clock_);
  EXPECT_EQ(alarm.fired(), 1);
  EXPECT_EQ(alarm.notifier(), clock_.get());
}

TEST_F(ClockTest, Fires_AtItsTimeAndReadsAsDisarmedWithTheDueTimeKept) {
  const Alarm alarm(clock_, 12.5, [this](Alarm& self) {
    EXPECT_EQ(clock_->now(), 12.5);
    EXPECT_EQ(self.timeMin(), kNever);
    EXPECT_FALSE(self.isArmed());
    EXPECT_EQ(self.dueTime(), 12.5);
  });
  EXPECT_TRUE(alarm.isArmed());
  EXPECT_EQ(alarm.timeMin(), 12.5);
  EXPECT_EQ(clock_->armedTimers(), 1U);
  run();
  EXPECT_EQ(alarm.fired(), 1);
  EXPECT_EQ(alarm.timeMin(), kNever);
  EXPECT_EQ(alarm.dueTime(), 12.5);
  EXPECT_EQ(clock_->armedTimers(), 0U);
}

TEST_F(ClockTest, RearmedInItsHandler_FiresAgain) {
  std::vector<double> times;
  const Alarm alarm(clock_, 11, [&](Alarm& self) {
    times.push_back(clock_->now());
    if (times.size() < 3) self.timeMinIs(clock_->now() + 5);
  });
  run();
  EXPECT_THAT(times, ElementsAre(11, 16, 21));
  EXPECT_EQ(alarm.timeMin(), kNever);
  EXPECT_EQ(alarm.dueTime(), 21);
}

TEST_F(ClockTest, RearmedInItsHandler_ForTheTimeThatFiredFiresAgain) {
  const Alarm alarm(clock_, 11, [](Alarm& self) {
    if (self.fired() < 3) self.timeMinIs(self.dueTime());
  });
  run();
  EXPECT_EQ(alarm.fired(), 3);
}

TEST_F(ClockTest, DueTime_IsTheOneThatIsAheadOnceItIsArmedAgain) {
  Alarm alarm(clock_, 12);
  run(13);
  alarm.timeMinIs(20);
  EXPECT_EQ(alarm.dueTime(), 20);
  alarm.timeMinIs(kNever);
  EXPECT_EQ(alarm.dueTime(), 20);
}

TEST_F(ClockTest, Disarmed_DoesNotFireAndReadsInfinity) {
  Alarm alarm(clock_, 12);
  alarm.timeMinIs(kNever);
  EXPECT_FALSE(alarm.isArmed());
  EXPECT_EQ(alarm.timeMin(), kNever);
  run();
  EXPECT_EQ(alarm.fired(), 0);
  alarm.timeMinIs(2000);
  run(3000);
  EXPECT_EQ(alarm.fired(), 1);
}

TEST_F(ClockTest, PassedTime_FiresInTheNextTurnAndTimeStands) {
  const Alarm past(clock_, 3);
  const Alarm now(clock_, 10);
  EXPECT_EQ(past.fired(), 0);
  EXPECT_TRUE(loop_.runOne());
  EXPECT_EQ(past.fired(), 1);
  EXPECT_EQ(clock_->now(), 10);
  EXPECT_TRUE(loop_.runOne());
  EXPECT_EQ(now.fired(), 1);
}

TEST_F(ClockTest, TimesThatAreNoTimes_DoNotFire) {
  Alarm alarm(clock_, std::numeric_limits<double>::quiet_NaN());
  EXPECT_FALSE(alarm.isArmed());
  run(1e6);
  alarm.timeMinIs(std::numeric_limits<double>::max());
  EXPECT_TRUE(alarm.isArmed()) << "the largest number is a time";
  run(1e7);
  EXPECT_EQ(alarm.fired(), 0);
}

TEST_F(ClockTest, WhatIsNotANumber_Disarms) {
  Alarm alarm(clock_, 20);
  alarm.timeMinIs(std::numeric_limits<double>::quiet_NaN());
  EXPECT_EQ(alarm.timeMin(), kNever);
  EXPECT_EQ(alarm.dueTime(), 20);
  run();
  EXPECT_EQ(alarm.fired(), 0);
}

TEST_F(ClockTest, TheLastTimeThatHasATick_IsDueAndTheNextIsNot) {
  Alarm alarm(clock_, 20);
  const double beyond = 9223372036854.775;  // times a million rounds to 2 to the 63rd
  const double last = std::nextafter(beyond, 0);
  alarm.timeMinIs(beyond);
  EXPECT_EQ(alarm.dueTime(), 20);
  EXPECT_TRUE(clock_->nextDue().never());
  alarm.timeMinIs(last);
  EXPECT_EQ(alarm.dueTime(), last);
  EXPECT_EQ(clock_->nextDue().tick, Orm::tickOf(last));
  EXPECT_LT(clock_->nextDue().tick, Orm::kNeverTick);
  alarm.timeMinIs(beyond);
  EXPECT_TRUE(clock_->nextDue().never());
}

TEST_F(ClockTest, EqualTimes_FireInTheOrderOfArming) {
  const auto c = alarm(20, "c");
  const auto a = alarm(20, "a");
  const auto first = alarm(19, "1");
  const auto b = alarm(20, "b");
  run();
  EXPECT_EQ(log_, "1cab");
}

TEST_F(ClockTest, EqualTimes_AreThoseOfOneTick) {
  const auto later = alarm(10.1 + 10.2, "b");  // 20.299999999999997
  const auto exact = alarm(20.3, "a");
  run();
  EXPECT_EQ(log_, "ba");
}

TEST_F(ClockTest, ArmedAgainForAnEqualTime_FiresAfterThoseThatAreThere) {
  const auto a = alarm(20, "a");
  const auto b = alarm(20, "b");
  a->timeMinIs(20);  // the value that is there: keeps its turn
  const auto c = alarm(20, "c");
  b->timeMinIs(30);
  b->timeMinIs(20);
  run();
  EXPECT_EQ(log_, "acb");
}

TEST_F(ClockTest, DisarmedAndArmedForTheSameTime_FiresAfterThoseThatAreThere) {
  const auto a = alarm(20, "a");
  const auto b = alarm(20, "b");
  a->timeMinIs(kNever);
  a->timeMinIs(20);
  run();
  EXPECT_EQ(log_, "ba");
}

TEST_F(ClockTest, MovedToAnotherTimeOfItsTick_FiresAfterThoseThatAreThere) {
  const auto a = alarm(20, "a");
  const auto b = alarm(20, "b");
  a->timeMinIs(20 - 1e-9);
  run();
  EXPECT_EQ(log_, "ba");
}

TEST_F(ClockTest, TimesTooFarAwayForATick_AreKeptAndLeaveTheDueTime) {
  Alarm alarm(clock_, 20);
  for (const Orm::Seconds time : {9.2e12, 9.3e12, 1e300}) {
    alarm.timeMinIs(time);
    EXPECT_EQ(alarm.timeMin(), time);
    EXPECT_EQ(alarm.dueTime(), 9.2e12);
    EXPECT_TRUE(alarm.isArmed());
  }
  alarm.timeMinIs(30);
  run();
  EXPECT_EQ(alarm.fired(), 1);
  EXPECT_EQ(alarm.dueTime(), 30);
}

TEST_F(ClockTest, MovedLater_FiresThenAndNotBefore) {
  const auto a = alarm(20, "a");
  const auto b = alarm(25, "b");
  a->timeMinIs(30);
  run(29);
  EXPECT_EQ(log_, "b");
  run(30);
  EXPECT_EQ(log_, "ba");
}

TEST_F(ClockTest, MovedEarlier_FiresThen) {
  const auto a = alarm(20, "a");
  const auto b = alarm(25, "b");
  b->timeMinIs(15);
  run(19);
  EXPECT_EQ(log_, "b");
  run();
  EXPECT_EQ(log_, "ba");
}

TEST_F(ClockTest, MovedLaterThenEarlierThanAnother_FiresInOrder) {
  const auto a = alarm(20, "a");
  const auto b = alarm(24, "b");
  a->timeMinIs(50);
  a->timeMinIs(22);
  const auto c = alarm(21, "c");
  run();
  EXPECT_EQ(log_, "cab");
}

TEST_F(ClockTest, DisarmedAndArmedEarlier_FiresOnce) {
  const auto a = alarm(20, "a");
  a->timeMinIs(kNever);
  a->timeMinIs(15);
  run();
  EXPECT_EQ(log_, "a");
}

TEST_F(ClockTest, DestroyedWhileQueued_DoesNotFire) {
  std::vector<std::unique_ptr<Alarm>> alarms;
  for (int at = 0; at != 20; ++at) {
    alarms.push_back(alarm(20 + at % 5, std::string(1, static_cast<char>('a' + at))));
  }
  for (std::size_t at = 0; at != 20; ++at) {
    if (at % 3 != 0) alarms[at] = nullptr;
  }
  EXPECT_EQ(clock_->armedTimers(), 7U);
  run();
  EXPECT_EQ(log_, "apgmdsj") << "by time, then by arming";
}

TEST_F(ClockTest, ArmedMovedDisarmedAndDestroyedBeforeTheLoopAsks_WhatIsLeftFires) {
  const auto a = alarm(20, "a");
  auto b = alarm(15, "b");
  const auto c = alarm(30, "c");
  const auto d = alarm(16, "d");
  c->timeMinIs(18);
  a->timeMinIs(25);
  d->timeMinIs(kNever);
  EXPECT_EQ(clock_->armedTimers(), 3U);
  b = nullptr;
  EXPECT_EQ(clock_->armedTimers(), 2U);
  d->timeMinIs(18);
  run();
  EXPECT_EQ(log_, "cda");
}

TEST_F(ClockTest, DisarmedAndDestroyedBeforeTheLoopAsks_LeavesNothing) {
  auto a = alarm(20, "a");
  const auto b = alarm(21, "b");
  a->timeMinIs(kNever);
  a = nullptr;
  run();
  EXPECT_EQ(log_, "b");
}

TEST_F(ClockTest, OneTimersHandlerDestroysAnotherOfTheSameTime) {
  auto victim = std::unique_ptr<Alarm>();
  const Alarm killer(clock_, 20, [&](Alarm&) { victim = nullptr; });
  victim = alarm(20, "v");
  run();
  EXPECT_EQ(log_, "");
}

TEST_F(ClockTest, OneTimersHandlerDisarmsAndArmsOthersOfTheSameTime) {
  std::unique_ptr<Alarm> b;
  std::unique_ptr<Alarm> c;
  const Alarm a(clock_, 20, [&](Alarm&) {
    log_ += "a";
    b->timeMinIs(kNever);
    c->timeMinIs(19);
  });
  b = alarm(20, "b");
  c = alarm(25, "c");
  const auto d = alarm(20, "d");
  run();
  EXPECT_EQ(log_, "acd");
}

TEST_F(ClockTest, TimerGoesInItsOwnHandler) {
  std::unique_ptr<Alarm> self;
  self = std::make_unique<Alarm>(clock_, 20, [&](Alarm&) {
    log_ += "x";
    self = nullptr;
  });
  run();
  EXPECT_EQ(log_, "x");
}

TEST_F(ClockTest, TimerRetiredInItsOwnHandler_ItsMemoryStaysUntilTheHandlerHasReturned) {
  Orm::Owned<Alarm> owned(new Alarm(clock_, 20, [&](Alarm& self) {
    owned = nullptr;
    EXPECT_TRUE(self.isDeleted());
    EXPECT_EQ(self.fired(), 1);
    self.timeMinIs(30);  // in vain
  }));
  run();
  EXPECT_EQ(clock_->now(), 1000);
  EXPECT_EQ(clock_->notifieeCount(), 0U);
  EXPECT_EQ(Kobble::liveObjects(), 1U);  // the clock
}

TEST_F(ClockTest, RetiredWhileQueued_IsNotToldThoughItsMemoryIsThere) {
  Orm::Owned<Alarm> owned(new Alarm(clock_, 20, [&](Alarm&) { log_ += "!"; }));
  {
    const Orm::ActivityScope scope;
    owned = nullptr;
    run();
  }
  EXPECT_EQ(log_, "");
}

TEST_F(ClockTest, SwitchedOff_ItsTimePassesUntold) {
  const auto a = alarm(20, "a");
  a->hasNotificationActiveIs(false);
  run(21);
  a->hasNotificationActiveIs(true);
  EXPECT_EQ(a->timeMin(), kNever);
  run();
  EXPECT_EQ(log_, "");
}

TEST_F(ClockTest, WithoutAnOwner_NothingIsCalled) {
  Alarm alarm({}, nullptr);
  alarm.notifierIs(clock_);
  alarm.timeMinIs(20);
  run();
  EXPECT_EQ(alarm.fired(), 0);
  EXPECT_EQ(alarm.timeMin(), kNever);
}

TEST_F(ClockTest, ArmedBeforeItHasAClock_FiresOnTheOneThatItGets) {
  Alarm alarm;
  alarm.timeMinIs(20);
  alarm.notifierIs(clock_);
  EXPECT_EQ(alarm.fired(), 1);
  run();
  EXPECT_EQ(alarm.fired(), 2);
}

TEST_F(ClockTest, WithoutAClock_TheTimeReadsAsItWasSet) {
  Alarm alarm;
  for (const Orm::Seconds time : {20.0, 30.0, 25.0}) {
    alarm.timeMinIs(time);
    EXPECT_EQ(alarm.timeMin(), time);
    EXPECT_EQ(alarm.dueTime(), time);
    EXPECT_TRUE(alarm.isArmed());
  }
  for (const Orm::Seconds time : {1e300, kNever}) {
    alarm.timeMinIs(time);
    EXPECT_EQ(alarm.timeMin(), time);
    EXPECT_EQ(alarm.dueTime(), 25);
  }
  alarm.notifierIs(clock_);
  run();
  EXPECT_EQ(alarm.fired(), 1) << "when it was pointed at the clock";
}

TEST_F(ClockTest, ArmedWithoutAClockForEqualTimes_FireInTheOrderOfPointing) {
  Alarm a;
  Alarm b;
  a.handlerIs([this](Alarm&) { log_ += "a"; });
  b.handlerIs([this](Alarm&) { log_ += "b"; });
  a.timeMinIs(20);
  b.timeMinIs(20);
  b.notifierIs(clock_);
  a.notifierIs(clock_);
  log_.clear();
  run();
  EXPECT_EQ(log_, "ba");
}

TEST_F(ClockTest, PointedAtAnotherClock_CarriesTheTimeOver) {
  const auto other = virtualClock(0);
  Orm::ActivityLoop otherLoop(other);
  Alarm alarm(clock_, 20);
  alarm.notifierIs(other);
  EXPECT_EQ(alarm.fired(), 1) << "the handler is called for the new clock";
  EXPECT_EQ(clock_->armedTimers(), 0U);
  run();
  EXPECT_EQ(alarm.fired(), 1);
  otherLoop.run(20);
  EXPECT_EQ(alarm.fired(), 2);
  EXPECT_EQ(clock_->notifieeCount(), 0U);
}

TEST_F(ClockTest, PointedAtNothing_IsDisarmedButKeepsTheTime) {
  Alarm alarm(clock_, 20);
  alarm.notifierIs(nullptr);
  run();
  EXPECT_EQ(alarm.fired(), 0);
  EXPECT_EQ(alarm.timeMin(), 20);
  alarm.notifierIs(clock_);
  EXPECT_TRUE(loop_.runOne());
  EXPECT_EQ(alarm.fired(), 2);
}

TEST_F(ClockTest, OnlyTheTimerHoldsTheClock_BothGoTogether) {
  auto clock = virtualClock(0);
  auto alarm = std::make_unique<Alarm>(clock, 20);
  clock = nullptr;
  EXPECT_EQ(Kobble::liveObjects(), 3U);
  alarm = nullptr;
  EXPECT_EQ(Kobble::liveObjects(), 1U);
}

TEST_F(ClockTest, Exception_OfAHandlerPassesThroughTheLoopWhichGoesOn) {
  const Alarm raising(clock_, 20, [](Alarm&) { throw Orm::MutatorReinstantiatingError("path"); });
  const auto b = alarm(20, "b");
  EXPECT_THROW(run(), Orm::MutatorReinstantiatingError);
  EXPECT_FALSE(Orm::ActivityScope::active());
  run();
  EXPECT_EQ(log_, "b");
}

TEST_F(ClockTest, NestedLoop_InAHandlerRunsWhatIsDue) {
  const Alarm outer(clock_, 20, [&](Alarm&) {
    log_ += "(";
    run(30);
    log_ += ")";
  });
  const auto a = alarm(25, "a");
  const auto b = alarm(35, "b");
  run();
  EXPECT_EQ(log_, "(a)b");
}

TEST_F(ClockTest, RunNext_WithNothingDueDoesNothing) {
  clock_->runNext();
  EXPECT_EQ(clock_->now(), 10);
  EXPECT_EQ(log_, "");
}

using ClockDeathTest = ClockTest;

TEST_F(ClockDeathTest, ThatGoesUnderAnArmedTimer_StopsTheProcess) {
  const auto a = alarm(20, "a");
  // Handles keep a clock alive under its timers: who breaks that is found out.
  EXPECT_DEATH(clock_->~Clock(), "assertion failed: heap_.empty\\(\\)");
}

}  // namespace
