#include "Platform/Orm/TimeSource.h"

#include <algorithm>
#include <thread>

namespace Orm {

namespace {

constexpr Tick kLongestWait = 3600 * kTicksPerSecond;

}  // namespace

RealTime::RealTime(Seconds start)
    : start_(tickOf(start)), made_(std::chrono::steady_clock::now()) {}

Tick RealTime::now() const {
  const auto elapsed = std::chrono::steady_clock::now() - made_;
  return start_ + std::chrono::duration_cast<std::chrono::microseconds>(elapsed).count();
}

void RealTime::waitUntil(Tick tick) {
  // In steps, because the machine's clock counts nanoseconds and does not reach every tick.
  for (Tick at = now(); at < tick; at = now()) {
    std::this_thread::sleep_for(std::chrono::microseconds(std::min(tick, at + kLongestWait) - at));
  }
}

}  // namespace Orm
