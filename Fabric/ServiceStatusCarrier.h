#pragma once

#include "Fabric/SwitchView.h"
#include "Fabric/Value.h"
#include "Platform/Entities/ServiceStatus/ServiceStatusDir.h"

namespace Fabric {

/// The service status directory of a switch that appears, whole.
Orm::Ptr<Controller::ServiceStatusDir> newServiceStatusDir(const SwitchView& view);

/// Carries `services` of a switch: a status that appears is built whole before it is put in, a
/// version status before it is set; null removes.
void carryServiceStatuses(Controller::ServiceStatusDir& dir, const SwitchView& after,
                          const Value& patch);

}  // namespace Fabric
