#include "Fabric/ProcessSettings.h"

#include "Platform/Flipset/Flipset.h"
#include "Platform/Orm/ActivityManagerConfig.h"

namespace Fabric {

namespace {

constexpr const char* kToggleFile = "ControllerCommon.json";
constexpr const char* kMountMonitor = "ControllerMountMonitor";

std::optional<bool> presentToggle() {
  const bool on = Flipset::toggle(kToggleFile, kMountMonitor, false);
  const bool isSet = on == Flipset::toggle(kToggleFile, kMountMonitor, true);
  return isSet ? std::optional(on) : std::nullopt;
}

}  // namespace

ProcessSettings::ProcessSettings(const Orm::Ptr<Orm::Clock>& clock,
                                 Controller::MountSm::Factory& factory, bool mountMonitor)
    : factoryBefore_(Controller::MountSm::factoryIs(&factory)),
      mountMonitorBefore_(presentToggle()) {
  Orm::ActivityManagerConfig::instanceIs(clock);
  Flipset::toggleIs(kToggleFile, kMountMonitor, mountMonitor);
}

ProcessSettings::~ProcessSettings() {
  if (mountMonitorBefore_) {
    Flipset::toggleIs(kToggleFile, kMountMonitor, *mountMonitorBefore_);
  } else {
    Flipset::toggleDel(kToggleFile, kMountMonitor);
  }
  Orm::ActivityManagerConfig::instanceIs(nullptr);
  Controller::MountSm::factoryIs(factoryBefore_);
}

}  // namespace Fabric
