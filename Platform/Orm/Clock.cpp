#include "Platform/Orm/Clock.h"

#include <utility>

#include "Platform/Orm/ActivityScope.h"

namespace Orm {

Clock::Clock(std::unique_ptr<TimeSource> time) : time_(std::move(time)) {}

Clock::~Clock() { assertThat(heap_.empty(), "heap_.empty()"); }

std::uint32_t Clock::armedTimers() const {
  std::uint32_t armed = 0;
  heap_.walk([&armed](const ClockTimer& timer) { armed += timer.hasTick() ? 1 : 0; });
  return armed;
}

Due Clock::nextDue() {
  const auto* const first = heap_.first();
  if (!first) return {};
  return {first->tick, kOrdinaryRank, first->sequence};
}

void Clock::runNext() {
  const auto* const first = heap_.first();
  if (!first) return;
  ClockTimer& timer = *first->timer;
  heap_.remove(timer);
  timer.dueTime_ = timer.timeMin_;
  timer.timeMin_ = kNever;
  const ActivityScope scope;
  if (!timer.isDeleted() && timer.hasNotificationActive() && timer.rawOwner()) timer.onClock();
}

ClockTimer::~ClockTimer() {
  if (isQueued()) notifier()->heap_.remove(*this);
}

void ClockTimer::move(Seconds time) {
  if (time == timeMin()) return;
  if (!(time <= kLastTime)) {  // what is not a number too
    dueTime_ = dueTime();
    timeMin_ = time;
    if (std::isnan(time)) timeMin_ = kNever;
  } else if (notifier()) {
    queue(time);
  } else {
    timeMin_ = kWaiting;
    dueTime_ = time;
  }
}

inline void ClockTimer::queue(Seconds time) {
  timeMin_ = time;
  sequence_ = Clock::nextSequence();
  if (isQueued()) {
    notifier()->heap_.moved(*this);
  } else {
    notifier()->heap_.push(*this);
  }
}

void ClockTimer::notifierIs(const Ptr<Clock>& clock) {
  if (clock.get() == notifier()) return;
  if (isQueued()) notifier()->heap_.remove(*this);
  if (hasTick()) dueTime_ = std::exchange(timeMin_, kWaiting);
  watchedIs(clock);
  if (!clock) return;
  if (isWaiting() && dueTime_ != 0) queue(dueTime_);
  if (!isDeleted() && rawOwner()) onClock();
}

}  // namespace Orm
