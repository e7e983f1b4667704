#pragma once

#include <chrono>
#include <cstddef>
#include <iosfwd>

#include "Platform/Orm/Seconds.h"

namespace Zorb {

/// The line on a terminal that tells how far a run is, once it has taken a second; renewed a few
/// times a second and erased at the end.
class Progress {
 public:
  using Clock = std::chrono::steady_clock;

  /// `end`: where the run ends, in seconds of the documents. `out` must be a terminal and stay.
  Progress(std::ostream& out, Orm::Seconds end) : out_(out), end_(end), start_(Clock::now()) {}
  ~Progress() { erase(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// `mounts`: how many there are; `steps`: how many pieces of work were done.
  void show(Orm::Seconds time, std::size_t mounts, std::size_t steps,
            Clock::time_point now = Clock::now());
  void erase();

 private:
  std::ostream& out_;
  Orm::Seconds end_;
  Clock::time_point start_;
  Clock::time_point shownAt_;
  bool shown_ = false;
};

}  // namespace Zorb
