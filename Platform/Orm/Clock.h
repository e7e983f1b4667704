#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

#include "Platform/Orm/ActivitySource.h"
#include "Platform/Orm/Entity.h"
#include "Platform/Orm/Reactor.h"
#include "Platform/Orm/Seconds.h"
#include "Platform/Orm/TimeSource.h"

namespace Orm {

class ClockTimer;

/// The process's clock: the current time, and the wake-up times of all reactors on it.
///
/// One exists per activity manager and is shared by all machines; each reactor on it (ClockReactor)
/// has a wake-up time of its own. Loop thread only. Arming and firing cost O(log n) of the armed
/// timers, moving a wake-up to a later time O(1).
class Clock : public Entity, public ActivitySource, private Kobble::Counted<Clock> {
 public:
  explicit Clock(std::unique_ptr<TimeSource> time);
  ~Clock() override;

  /// The current time. On virtual time it stands still while a handler runs.
  Seconds now() const { return secondsOf(time_->now()); }
  TimeSource& time() const { return *time_; }

  /// Numbers what is scheduled, over all sources of the loop: of what is due at one time, the
  /// smaller number comes first.
  std::uint64_t nextSequence() const { return sequence_++; }

  std::uint32_t armedTimers() const;  // O(n); for tests and checks
  /// Calls visit(const ClockTimer*) for each timer that the clock has a place for: those that are
  /// armed, and those that were disarmed before they surfaced. For checks, which ask whether it is
  /// alive before they look at it.
  template <class Visit>
  void walkQueued(Visit&& visit) const {
    for (const Place& place : heap_) visit(static_cast<const ClockTimer*>(place.timer));
  }

  Due nextDue() override;
  void runNext() override;

 private:
  friend class ClockTimer;

  // The order of the heap; a timer that was moved to a later time stands at its old place until
  // it surfaces, and is then put where it belongs.
  struct Place {
    Tick tick;
    std::uint64_t sequence;
    ClockTimer* timer;
    bool before(const Place& other) const {
      return tick != other.tick ? tick < other.tick : sequence < other.sequence;
    }
  };

  void push(ClockTimer& timer);
  void remove(ClockTimer& timer);
  void settleTop();
  void siftUp(std::size_t at, Place place);
  void siftDown(std::size_t at, Place place);
  void set(std::size_t at, const Place& place);

  std::unique_ptr<TimeSource> time_;
  std::vector<Place> heap_;
  mutable std::uint64_t sequence_ = 0;
};

/// The part of a clock reactor that the clock knows: its wake-up time.
class ClockTimer {
 public:
  ClockTimer(const ClockTimer&) = delete;
  ClockTimer& operator=(const ClockTimer&) = delete;

  /// The wake-up time: 0 when it was never set; kNever while disarmed, also when the timer has
  /// fired and its handler has not armed it again.
  Seconds timeMin() const { return timeMin_; }
  /// Fires at `time`, or in the next turn of the loop when that has passed; kNever disarms. The
  /// value that is there already changes nothing. Of equal times the one set first fires first.
  void timeMinIs(Seconds time);
  bool isArmed() const { return timeMin_ <= std::numeric_limits<Seconds>::max(); }
  /// The wake-up time that fired last, or is still ahead: what a handler that was called prints.
  Seconds dueTime() const { return dueTime_; }

 protected:
  ClockTimer() = default;
  ~ClockTimer();

  virtual void onFired() = 0;
  void clockIs(Clock* clock);

 private:
  friend class Clock;
  static constexpr std::uint32_t kNotQueued = ~0U;

  Clock* clock_ = nullptr;
  Seconds timeMin_ = 0;
  Seconds dueTime_ = 0;
  Tick tick_ = kNeverTick;
  std::uint64_t sequence_ = 0;
  std::uint32_t heapPlace_ = kNotQueued;
};

/// A reactor of an Owner on the clock, with a wake-up time of its own. Pointing it at another
/// clock carries the wake-up time over. Going disarms.
template <class Owner>
class ClockReactor : public ReactorOn<Clock, Owner>, public ClockTimer {
 public:
  void notifierIs(const Ptr<Clock>& clock) {
    clockIs(clock.get());
    ReactorOn<Clock, Owner>::notifierIs(clock);
  }
  void onAttribute(AttributeId, const Key&) override {}

 protected:
  using ReactorOn<Clock, Owner>::ReactorOn;

  /// The clock reached the wake-up time, or the reactor was pointed at a clock.
  virtual void onClock() = 0;

 private:
  void onFired() final {
    if (!this->isDeleted() && this->hasNotificationActive() && this->owner()) onClock();
  }
  void onNotifier() final { onClock(); }
};

}  // namespace Orm
