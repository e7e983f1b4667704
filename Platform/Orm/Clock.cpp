#include "Platform/Orm/Clock.h"

#include "Platform/Orm/ActivityScope.h"

namespace Orm {

Clock::Clock(std::unique_ptr<TimeSource> time) : time_(std::move(time)) {}

Clock::~Clock() { assertThat(heap_.empty(), "heap_.empty()"); }

std::uint32_t Clock::armedTimers() const {
  std::uint32_t armed = 0;
  heap_.walk([&armed](const ClockTimer& timer) { armed += timer.isArmed() ? 1 : 0; });
  return armed;
}

Due Clock::nextDue() {
  const ClockTimer* const first = settledFirst();
  if (!first) return {};
  return {first->place_.tick, kOrdinaryRank, first->place_.sequence};
}

void Clock::runNext() {
  ClockTimer* const first = settledFirst();
  if (!first) return;
  heap_.remove(*first);
  first->placeTime_ = kNever;
  first->dueTime_ = first->timeMin_;
  first->timeMin_ = kNever;
  const ActivityScope scope;
  first->onFired();
}

/// The timer that fires next, null when there is none: those that were moved to a later time or
/// disarmed since they were queued are put where they belong.
ClockTimer* Clock::settledFirst() {
  while (ClockTimer* const first = heap_.first()) {
    if (first->sequence_ == first->place_.sequence && first->timeMin_ != kNever) return first;
    heap_.remove(*first);
    first->placeTime_ = kNever;
    first->queue(tickOf(first->timeMin_));
  }
  return nullptr;
}

ClockTimer::~ClockTimer() { clockIs(nullptr); }

void ClockTimer::move(Seconds time) {
  const Tick tick = tickOf(time);
  if (tick == kNeverTick) dueTime_ = dueTime();
  timeMin_ = time;
  if (!clock_) return;
  sequence_ = Clock::nextSequence();
  if (placeTime_ == kNever) {
    queue(tick);
  } else if (tick < place_.tick) {
    place_ = {tick, sequence_};
    placeTime_ = time;
    clock_->heap_.movedUp(*this);
  }
}

void ClockTimer::queue(Tick tick) {
  if (tick == kNeverTick) return;
  place_ = {tick, sequence_};
  placeTime_ = timeMin_;
  clock_->heap_.push(*this);
}

void ClockTimer::clockIs(Clock* clock) {
  if (clock == clock_) return;
  if (placeTime_ != kNever) clock_->heap_.remove(*this);
  placeTime_ = kNever;
  clock_ = clock;
  if (!clock_ || timeMin_ == 0) return;
  sequence_ = Clock::nextSequence();
  queue(tickOf(timeMin_));
}

}  // namespace Orm
