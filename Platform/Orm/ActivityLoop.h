#pragma once

#include <vector>

#include "Platform/Orm/ActivitySource.h"
#include "Platform/Orm/Clock.h"
#include "Platform/Orm/Ptr.h"

namespace Orm {

/// The controller process's single event loop: whatever is due next, of all sources, is done next.
///
/// Runs on the clock's time source, real or virtual. Loop thread only. A piece of work costs one
/// question to each source; there are few.
class ActivityLoop {
 public:
  /// The clock is the first source.
  explicit ActivityLoop(Ptr<Clock> clock);

  Clock& clock() const { return *clock_; }

  /// Adds a source, which must stay until it is removed.
  void sourceIs(ActivitySource& source);
  void sourceDel(ActivitySource& source);

  /// Does the next piece of work when it is due not later than `until`, waiting for its time.
  /// False when there is none; the time is then left as it is.
  bool runOne(Seconds until = kNever);
  /// Does all work that is due not later than `until`, then waits until then (not for kNever).
  void run(Seconds until);

 private:
  Ptr<Clock> clock_;
  std::vector<ActivitySource*> sources_;
};

}  // namespace Orm
