#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "Platform/Orm/TimeSource.h"

namespace Orm {

/// The timers of a clock that stand in a queue: a list of those that were pushed, and a heap of
/// places for those that were asked since.
///
/// A Timer says when it wants to fire: hasTick(), and then tick() and sequence_, of which each
/// wish has one of its own. index_, kNowhere at first, and nextPushed_ are the heap's. A timer is
/// asked when its place comes up: one that was moved to a later time, or wants to fire no more,
/// stays where it is. Loop thread only. Pushing costs O(1); finding places, which is put off to
/// the question for the first, moving to an earlier place and taking out cost O(log n) at most.
template <class Timer>
class TimerHeap {
 public:
  static constexpr std::uint32_t kNowhere = UINT32_MAX;

  /// What a timer wanted when it was asked; of equal ticks the smaller number comes first.
  struct Place {
    Tick tick = kNeverTick;
    std::uint64_t sequence = 0;
    Timer* timer = nullptr;

    bool before(const Place& other) const {
      return tick != other.tick ? tick < other.tick : sequence < other.sequence;
    }
  };

  bool empty() const { return places_.empty() && !pushed_; }

  /// The place of the timer that fires next, null when none wants to; until the next change.
  const Place* first() {
    sortIn();
    while (!places_.empty()) {
      const Place& place = places_.front();
      Timer& timer = *place.timer;
      if (!timer.hasTick()) {
        remove(timer);
      } else if (timer.sequence_ != place.sequence) {
        sink(0, wantedBy(timer));
      } else {
        return &place;
      }
    }
    return nullptr;
  }

  /// A timer that stands nowhere.
  void push(Timer& timer) {
    timer.index_ = kPushed;
    timer.nextPushed_ = nullptr;
    *pushedEnd_ = &timer;
    pushedEnd_ = &timer.nextPushed_;
  }

  /// A timer that has a tick, which may be earlier than its place.
  void moved(Timer& timer) {
    if (timer.index_ == kPushed) return;
    const Place wanted = wantedBy(timer);
    if (wanted.tick < places_[timer.index_].tick) rise(timer.index_, wanted);
  }

  void remove(Timer& timer) {
    if (timer.index_ == kPushed) sortIn();
    if (timer.index_ == kNowhere) return;
    const Place last = places_.back();
    places_.pop_back();
    if (last.timer != &timer) {
      rise(timer.index_, last);
      sink(last.timer->index_, last);
    }
    timer.index_ = kNowhere;
  }

  /// Calls visit(timer) for each, in no order, before it looks at it. O(n); for tests and checks.
  template <class Visit>
  void walk(Visit&& visit) const {
    for (const Place& place : places_) visit(*place.timer);
    for (const Timer* timer = pushed_; timer; timer = timer->nextPushed_) visit(*timer);
  }

 private:
  static constexpr std::uint32_t kPushed = kNowhere - 1;
  static constexpr std::uint32_t kBranches = 4;

  static Place wantedBy(Timer& timer) { return {timer.tick(), timer.sequence_, &timer}; }

  /// Gives places to those that were pushed, and still want to fire.
  void sortIn() {
    for (Timer* timer = pushed_; timer; timer = timer->nextPushed_) {
      timer->index_ = kNowhere;
      if (!timer->hasTick()) continue;
      const auto end = static_cast<std::uint32_t>(places_.size());
      places_.emplace_back();
      rise(end, wantedBy(*timer));
    }
    pushed_ = nullptr;
    pushedEnd_ = &pushed_;
  }

  /// Puts `place` at `hole`, or nearer to the front.
  void rise(std::uint32_t hole, const Place& place) {
    while (hole != 0) {
      const std::uint32_t parent = (hole - 1) / kBranches;
      if (!place.before(places_[parent])) break;
      put(hole, places_[parent]);
      hole = parent;
    }
    put(hole, place);
  }

  /// Puts `place` at `hole`, or farther from the front.
  void sink(std::uint32_t hole, const Place& place) {
    const auto size = static_cast<std::uint32_t>(places_.size());
    while (true) {
      const std::uint32_t begin = hole * kBranches + 1;
      if (begin >= size) break;
      const std::uint32_t end = std::min(begin + kBranches, size);
      std::uint32_t child = begin;
      for (std::uint32_t other = begin + 1; other < end; ++other) {
        if (places_[other].before(places_[child])) child = other;
      }
      if (!places_[child].before(place)) break;
      put(hole, places_[child]);
      hole = child;
    }
    put(hole, place);
  }

  void put(std::uint32_t at, const Place& place) {
    places_[at] = place;
    place.timer->index_ = at;
  }

  std::vector<Place> places_;  // each comes before those at 4 x its index + 1 to + 4
  // In order of pushing, as the heap has least to do for what comes later than the rest.
  Timer* pushed_ = nullptr;
  Timer** pushedEnd_ = &pushed_;
};

}  // namespace Orm
