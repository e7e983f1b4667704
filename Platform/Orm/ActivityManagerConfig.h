#pragma once

#include "Platform/Orm/Clock.h"
#include "Platform/Orm/Ptr.h"

namespace Orm {

/// The activity module's singleton: holds the process's activity clock.
class ActivityManagerConfig : public Entity, private Kobble::Counted<ActivityManagerConfig> {
 public:
  /// The singleton; created on real time (its clock begins at 0) when there is none yet.
  static const Ptr<ActivityManagerConfig>& instance();
  /// A host sets the clock that its loop runs on, before it creates machines; null drops the
  /// singleton. Machines keep the clock that they took.
  static void instanceIs(const Ptr<Clock>& clock);

  explicit ActivityManagerConfig(Ptr<Clock> clock) : clock_(std::move(clock)) {}

  const Ptr<Clock>& clock() const { return clock_; }

 private:
  Ptr<Clock> clock_;
};

}  // namespace Orm
