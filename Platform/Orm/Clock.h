#pragma once

#include <cstdint>
#include <limits>
#include <memory>

#include "Platform/Orm/ActivitySource.h"
#include "Platform/Orm/Entity.h"
#include "Platform/Orm/Reactor.h"
#include "Platform/Orm/Seconds.h"
#include "Platform/Orm/TimeSource.h"
#include "Platform/Orm/TimerHeap.h"

namespace Orm {

class ClockTimer;

/// The process's clock: the current time, and the wake-up times of all reactors on it.
///
/// One exists per activity manager and is shared by all machines; each reactor on it (ClockReactor)
/// has a wake-up time of its own. Loop thread only. Arming, disarming and moving a wake-up cost
/// O(1), to a later time little more than noting it; firing costs O(log n) of the armed timers,
/// amortised.
class Clock : public Entity, public ActivitySource, private Kobble::Counted<Clock> {
 public:
  explicit Clock(std::unique_ptr<TimeSource> time);
  ~Clock() override;

  /// The current time. On virtual time it stands still while a handler runs.
  Seconds now() const { return secondsOf(time_->now()); }
  TimeSource& time() const { return *time_; }

  /// Numbers what is scheduled, over all sources of all loops: of what is due at one time, the
  /// smaller number comes first.
  static std::uint64_t nextSequence() { return sequence_++; }

  std::uint32_t armedTimers() const;  // O(n); for tests and checks
  /// Calls visit(const ClockTimer*) for each timer that stands in the queue: those that are armed,
  /// and those that were disarmed before they surfaced. For checks, which ask whether it is alive:
  /// each is handed over before it is looked at.
  template <class Visit>
  void walkQueued(Visit&& visit) const {
    heap_.walk([&visit](const ClockTimer& timer) { visit(&timer); });
  }

  Due nextDue() override;
  void runNext() override;

 private:
  friend class ClockTimer;

  ClockTimer* settledFirst();

  std::unique_ptr<TimeSource> time_;
  TimerHeap<ClockTimer> heap_;

  static inline constinit std::uint64_t sequence_ = 0;
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
  void timeMinIs(Seconds time) {
    if (time == timeMin_) return;
    if (time >= placeTime_ && time <= kLastTime) {
      // It stands at an earlier place; there it is seen that the wake-up was moved.
      timeMin_ = time;
      sequence_ = Clock::nextSequence();
    } else if (time == kNever && timeMin_ <= kLastTime) {
      dueTime_ = timeMin_;
      timeMin_ = kNever;
    } else {
      move(time);
    }
  }
  bool isArmed() const { return timeMin_ <= std::numeric_limits<Seconds>::max(); }
  /// The wake-up time that fired last, or is still ahead: what a handler that was called prints.
  Seconds dueTime() const { return tickOf(timeMin_) != kNeverTick ? timeMin_ : dueTime_; }

 protected:
  ClockTimer() = default;
  ~ClockTimer();

  virtual void onFired() = 0;
  void clockIs(Clock* clock);

 private:
  friend class Clock;
  friend class TimerHeap<ClockTimer>;

  static constexpr Seconds kLastTime = 9e12;  // about: it has a tick, and so has all before it

  /// The order of the heap.
  struct Place {
    Tick tick;
    std::uint64_t sequence;
    bool before(const Place& other) const {
      return tick != other.tick ? tick < other.tick : sequence < other.sequence;
    }
  };

  void move(Seconds time);
  void queue(Tick tick);

  // First what moving to a later time needs.
  Seconds timeMin_ = 0;
  // The wake-up time when it was queued; kNever when it is not. A wake-up that was moved to a later
  // time or disarmed stands at its old place until that comes up.
  Seconds placeTime_ = kNever;
  std::uint64_t sequence_ = 0;
  Clock* clock_ = nullptr;
  Seconds dueTime_ = 0;  // while timeMin_ has no tick
  Place place_{};
  ClockTimer* child_ = nullptr;
  ClockTimer* next_ = nullptr;
  ClockTimer* previous_ = nullptr;
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
