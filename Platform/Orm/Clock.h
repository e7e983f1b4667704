#pragma once

#include <cmath>
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
/// has a wake-up time of its own. Loop thread only. Arming, disarming and moving a wake-up to a
/// later time only note it: what that costs, O(log n) of the armed timers at most, is paid when the
/// wake-up is near, or for one that was armed, when the loop asks what is due next.
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

  /// How many timers are to fire. O(n); for tests and checks.
  std::uint32_t armedTimers() const;
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

  std::unique_ptr<TimeSource> time_;
  mutable TimerHeap<ClockTimer> heap_;  // timers come and go as notifiees do

  static inline constinit std::uint64_t sequence_ = 0;
};

/// What a clock knows of a reactor on it: its wake-up time. A member of a machine, as ClockReactor;
/// loop thread only. It takes a cache line, so that setting the time, which machines do with every
/// report, touches no other.
class ClockTimer : public Reactor {
 public:
  /// The clock, null while there is none.
  const Clock* notifier() const { return static_cast<const Clock*>(watched()); }
  /// Points the timer at another clock, to which it carries its wake-up time over, and calls
  /// onClock(); the same clock changes nothing.
  void notifierIs(const Ptr<Clock>& clock);

  /// The wake-up time: 0 when it was never set; kNever while disarmed, also when the timer has
  /// fired and its handler has not armed it again.
  Seconds timeMin() const { return isWaiting() ? dueTime_ : timeMin_; }
  /// Fires at `time`, or in the next turn of the loop when that has passed; kNever disarms, and so
  /// does what is not a number. The value that is there already changes nothing. Of equal times the
  /// one set first fires first.
  void timeMinIs(Seconds time) {
    if (time > timeMin_ && time <= kLastTime) {
      // It stands at an earlier place; there it is seen that the wake-up was moved.
      timeMin_ = time;
      sequence_ = Clock::nextSequence();
    } else if (time == kNever && hasTick()) {
      dueTime_ = timeMin_;
      timeMin_ = kNever;
    } else {
      move(time);
    }
  }
  bool isArmed() const { return timeMin() <= std::numeric_limits<Seconds>::max(); }
  /// The wake-up time that fired last, or is still ahead: what a handler that was called prints.
  Seconds dueTime() const { return hasTick() ? timeMin_ : dueTime_; }

  void onAttribute(AttributeId, const Key&) override {}

 protected:
  explicit ClockTimer(void* owner) : Reactor(owner) {}
  ~ClockTimer() override;

  /// The clock reached the wake-up time, or the reactor was pointed at a clock.
  virtual void onClock() = 0;

 private:
  friend class Clock;
  friend class TimerHeap<ClockTimer>;

  static constexpr Seconds kLastTime = 9223372036854.773;  // of those that have a tick
  // Nothing is later than what is not a number.
  static constexpr Seconds kWaiting = std::numeric_limits<Seconds>::quiet_NaN();

  /// Never set, or armed without a clock.
  bool isWaiting() const { return std::isnan(timeMin_); }
  /// Armed, to fire some day. Such a timer stands in the clock's queue.
  bool hasTick() const { return timeMin_ <= kLastTime; }
  Tick tick() const { return tickOf(timeMin_); }
  bool isQueued() const { return index_ != TimerHeap<ClockTimer>::kNowhere; }
  /// Any change but those that only note the wish.
  void move(Seconds time);
  /// Makes `time` the wake-up time, and the timer stand in the clock's queue no later than then.
  void queue(Seconds time);

  // The wake-up time, or kWaiting; it is then in dueTime_.
  Seconds timeMin_ = kWaiting;
  union {
    std::uint64_t sequence_;  // while hasTick()
    Seconds dueTime_ = 0;     // else
  };
  ClockTimer* nextPushed_ = nullptr;
  std::uint32_t index_ = TimerHeap<ClockTimer>::kNowhere;
};

/// A reactor of an Owner on the clock, with a wake-up time of its own. Going disarms.
template <class Owner>
class ClockReactor : public ClockTimer {
 protected:
  explicit ClockReactor(Owner* owner) : ClockTimer(owner) {}

  Owner* owner() const { return static_cast<Owner*>(rawOwner()); }
};

}  // namespace Orm
