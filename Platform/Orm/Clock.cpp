#include "Platform/Orm/Clock.h"

#include <algorithm>

#include "Platform/Orm/ActivityScope.h"

namespace Orm {

Clock::Clock(std::unique_ptr<TimeSource> time) : time_(std::move(time)) {}

Clock::~Clock() { assertThat(heap_.empty(), "heap_.empty()"); }

std::uint32_t Clock::armedTimers() const {
  return static_cast<std::uint32_t>(std::count_if(
      heap_.begin(), heap_.end(), [](const Place& place) { return place.timer->isArmed(); }));
}

Due Clock::nextDue() {
  settleTop();
  if (heap_.empty()) return {};
  return {heap_.front().tick, kOrdinaryRank, heap_.front().sequence};
}

void Clock::runNext() {
  settleTop();
  if (heap_.empty()) return;
  ClockTimer& timer = *heap_.front().timer;
  remove(timer);
  timer.timeMin_ = kNever;
  timer.tick_ = kNeverTick;
  const ActivityScope scope;
  timer.onFired();
}

void Clock::settleTop() {
  while (!heap_.empty()) {
    Place top = heap_.front();
    ClockTimer& timer = *top.timer;
    if (top.sequence == timer.sequence_) return;
    // The wake-up was moved to a later time, or disarmed, since it was queued.
    if (timer.tick_ == kNeverTick) {
      remove(timer);
    } else {
      siftDown(0, {timer.tick_, timer.sequence_, &timer});
    }
  }
}

void Clock::push(ClockTimer& timer) {
  heap_.emplace_back();
  siftUp(heap_.size() - 1, {timer.tick_, timer.sequence_, &timer});
}

void Clock::remove(ClockTimer& timer) {
  const std::size_t at = timer.heapPlace_;
  timer.heapPlace_ = ClockTimer::kNotQueued;
  const Place last = heap_.back();
  heap_.pop_back();
  if (at == heap_.size()) return;
  if (at != 0 && last.before(heap_[(at - 1) / 2])) {
    siftUp(at, last);
  } else {
    siftDown(at, last);
  }
}

void Clock::siftUp(std::size_t at, Place place) {
  while (at != 0 && place.before(heap_[(at - 1) / 2])) {
    set(at, heap_[(at - 1) / 2]);
    at = (at - 1) / 2;
  }
  set(at, place);
}

void Clock::siftDown(std::size_t at, Place place) {
  for (;;) {
    std::size_t child = 2 * at + 1;
    if (child >= heap_.size()) break;
    if (child + 1 < heap_.size() && heap_[child + 1].before(heap_[child])) ++child;
    if (!heap_[child].before(place)) break;
    set(at, heap_[child]);
    at = child;
  }
  set(at, place);
}

void Clock::set(std::size_t at, const Place& place) {
  heap_[at] = place;
  place.timer->heapPlace_ = static_cast<std::uint32_t>(at);
}

ClockTimer::~ClockTimer() { clockIs(nullptr); }

void ClockTimer::timeMinIs(Seconds time) {
  if (time == timeMin_) return;
  timeMin_ = time;
  const Tick tick = tickOf(time);
  if (tick != kNeverTick) dueTime_ = time;
  if (!clock_) return;
  const bool queued = heapPlace_ != kNotQueued;
  const bool earlier = queued && tick < clock_->heap_[heapPlace_].tick;
  tick_ = tick;
  sequence_ = clock_->nextSequence();
  if (queued && !earlier) return;  // seen when the old wake-up surfaces
  if (queued) clock_->remove(*this);
  if (tick_ != kNeverTick) clock_->push(*this);
}

void ClockTimer::clockIs(Clock* clock) {
  if (clock == clock_) return;
  if (heapPlace_ != kNotQueued) clock_->remove(*this);
  clock_ = clock;
  tick_ = kNeverTick;
  if (!clock_ || timeMin_ == 0) return;
  tick_ = tickOf(timeMin_);
  sequence_ = clock_->nextSequence();
  if (tick_ != kNeverTick) clock_->push(*this);
}

}  // namespace Orm
