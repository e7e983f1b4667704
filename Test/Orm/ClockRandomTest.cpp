// The clock against a plain list of what is armed, for thousands of random operations a seed.

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

#include "Platform/Orm/ActivityLoop.h"
#include "Test/Orm/Alarm.h"

namespace {

using Orm::kNever;
using OrmTest::Alarm;

class ClockRandomTest : public testing::TestWithParam<std::uint32_t> {
 protected:
  /// One alarm and what is known of it.
  struct Entry {
    std::unique_ptr<Alarm> alarm;
    Orm::Seconds time = 0;
    Orm::Seconds dueTime = 0;
    std::uint64_t sequence = 0;
    bool onClock = true;
  };

  static constexpr Orm::Seconds kFarAway = 1e300;  // a time that the clock does not live to see

  std::uint32_t pick(std::uint32_t end) { return static_cast<std::uint32_t>(random_()) % end; }

  bool due(const Entry& entry) const {
    return entry.alarm && entry.onClock && entry.time > 0 && entry.time < kFarAway;
  }

  /// The entry that must fire next, null when none is armed.
  Entry* next() {
    Entry* first = nullptr;
    for (Entry& entry : entries_) {
      if (!due(entry)) continue;
      if (!first || entry.time < first->time ||
          (entry.time == first->time && entry.sequence < first->sequence)) {
        first = &entry;
      }
    }
    return first;
  }

  void change(Entry& entry) {
    // Few different times, so that many are equal; quarters, so that they are exact.
    const std::uint32_t dice = pick(20);
    const Orm::Seconds time = dice < 2    ? kNever
                              : dice == 2 ? kFarAway
                                          : clock_->now() + pick(12) * 0.25;
    entry.alarm->timeMinIs(time);
    if (time != entry.time) {
      entry.time = time;
      entry.sequence = ++sequence_;
      if (time < kFarAway) entry.dueTime = time;
    }
    ASSERT_EQ(entry.alarm->timeMin(), entry.time);
    ASSERT_EQ(entry.alarm->dueTime(), entry.dueTime);
  }

  /// Takes it off the clock, or puts it on the clock again.
  void point(Entry& entry) {
    entry.onClock = !entry.onClock;
    entry.sequence = ++sequence_;
    pointed_ = entry.onClock ? &entry : nullptr;
    entry.alarm->notifierIs(entry.onClock ? clock_ : nullptr);
    ASSERT_EQ(pointed_, nullptr);
    ASSERT_EQ(entry.alarm->timeMin(), entry.time);
    ASSERT_EQ(entry.alarm->dueTime(), entry.dueTime);
  }

  void create(Entry& entry) {
    entry = {};
    entry.alarm = std::make_unique<Alarm>();
    entry.alarm->notifierIs(clock_);
    entry.alarm->handlerIs([this, &entry](Alarm& alarm) { fired(entry, alarm); });
  }

  /// In the handler of an entry: it is the expected one, and does something itself.
  void fired(Entry& entry, Alarm& alarm) {
    if (&entry == pointed_) {
      pointed_ = nullptr;
      return;
    }
    ASSERT_EQ(&entry, expected_);
    ASSERT_EQ(alarm.timeMin(), kNever);
    ASSERT_EQ(alarm.dueTime(), entry.time);
    ASSERT_EQ(clock_->now(), std::max(entry.time, before_));
    expected_ = nullptr;
    entry.time = kNever;
    if (pick(3) == 0) change(entry);
    if (pick(4) == 0) operation();
    if (pick(8) == 0) entry.alarm = nullptr;
  }

  void operation() {
    Entry& entry = entries_[pick(static_cast<std::uint32_t>(entries_.size()))];
    if (!entry.alarm) {
      create(entry);
    } else if (pick(12) == 0) {
      entry.alarm = nullptr;
    } else if (pick(12) == 0) {
      point(entry);
    } else {
      change(entry);
    }
  }

  void fireNext() {
    expected_ = next();
    before_ = clock_->now();
    const bool any = expected_ != nullptr;
    ASSERT_EQ(loop_.runOne(), any);
    ASSERT_EQ(expected_, nullptr);
  }

  std::mt19937 random_{GetParam()};
  const Orm::Ptr<Orm::Clock> clock_ = Orm::make<Orm::Clock>(std::make_unique<Orm::VirtualTime>(1));
  Orm::ActivityLoop loop_{clock_};
  std::vector<Entry> entries_{60};
  std::uint64_t sequence_ = 0;
  Entry* expected_ = nullptr;  // to fire
  Entry* pointed_ = nullptr;   // to be called as it is put on the clock
  Orm::Seconds before_ = 0;
};

INSTANTIATE_TEST_SUITE_P(Seeds, ClockRandomTest, testing::Range(1U, 11U),
                         testing::PrintToStringParamName());

TEST_P(ClockRandomTest, FiresWhatThePlainListSays) {
  for (int turn = 0; turn != 8'000 && !HasFatalFailure(); ++turn) {
    if (pick(5) < 3) {
      operation();
    } else {
      fireNext();
    }
    if (turn % 64 != 0) continue;
    const auto armed = std::count_if(entries_.begin(), entries_.end(),
                                     [this](const Entry& entry) { return due(entry); });
    ASSERT_EQ(clock_->armedTimers(), static_cast<std::uint32_t>(armed));
  }
  while (next() && !HasFatalFailure()) fireNext();
  EXPECT_FALSE(loop_.runOne());
}

}  // namespace
