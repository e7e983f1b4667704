#pragma once

#include <optional>

#include "Platform/Mount/MountSm.h"
#include "Platform/Orm/Clock.h"

namespace Fabric {

/// Holds the settings of the process that the library reads: the activity manager's clock, the
/// factory of mount machines, and the toggle that switches the mount timers on. They are set when
/// this is made; when it goes, factory and toggle are what they were, and the process is without
/// an activity manager, for the one before is not known to have been wanted.
class ProcessSettings {
 public:
  ProcessSettings(const Orm::Ptr<Orm::Clock>& clock, Controller::MountSm::Factory& factory,
                  bool mountMonitor);
  ~ProcessSettings();
  ProcessSettings(const ProcessSettings&) = delete;
  ProcessSettings& operator=(const ProcessSettings&) = delete;

 private:
  Controller::MountSm::Factory* factoryBefore_;
  /// Nothing: the default was in force.
  std::optional<bool> mountMonitorBefore_;
};

}  // namespace Fabric
