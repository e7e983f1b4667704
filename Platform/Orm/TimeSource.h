#pragma once

#include <chrono>
#include <cstdint>

#include "Platform/Orm/Seconds.h"

namespace Orm {

/// A point in time in whole microseconds, the resolution of the activity loop: times that round to
/// the same tick are equal, whatever the last bits of their sums say.
using Tick = std::int64_t;

inline constexpr Tick kTicksPerSecond = 1'000'000;
inline constexpr Tick kNeverTick = INT64_MAX;

/// The tick of a time, rounded half away from zero; what lies beyond all ticks is kNeverTick.
inline Tick tickOf(Seconds time) {
  const double ticks = time * static_cast<double>(kTicksPerSecond);
  // Written so that what is not a number never comes either.
  if (!(ticks < static_cast<double>(kNeverTick))) return kNeverTick;
  if (ticks <= static_cast<double>(INT64_MIN)) return INT64_MIN;
  const Tick whole = static_cast<Tick>(ticks);
  const double rest = ticks - static_cast<double>(whole);  // exact, as the cast is
  return whole + (rest >= 0.5 ? 1 : 0) - (rest <= -0.5 ? 1 : 0);
}
inline Seconds secondsOf(Tick tick) {
  return static_cast<Seconds>(tick) / static_cast<Seconds>(kTicksPerSecond);
}

/// Where the activity loop's time comes from.
class TimeSource {
 public:
  TimeSource() = default;
  TimeSource(const TimeSource&) = delete;
  TimeSource& operator=(const TimeSource&) = delete;
  virtual ~TimeSource() = default;

  virtual Tick now() const = 0;
  /// Returns when `tick` has come; one that has passed returns at once.
  virtual void waitUntil(Tick tick) = 0;
};

/// Time that moves only when it is waited for, so that hours pass in no time.
class VirtualTime final : public TimeSource {
 public:
  explicit VirtualTime(Seconds start) : now_(tickOf(start)) {}
  Tick now() const override { return now_; }
  void waitUntil(Tick tick) override {
    if (tick > now_) now_ = tick;
  }

 private:
  Tick now_;
};

/// The machine's steady clock; the process clock reads `start` when this is made.
class RealTime final : public TimeSource {
 public:
  explicit RealTime(Seconds start);
  Tick now() const override;
  void waitUntil(Tick tick) override;

 private:
  Tick start_;
  std::chrono::steady_clock::time_point made_;
};

}  // namespace Orm
