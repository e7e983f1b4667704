#include "Controllerdb/MountsRegistry/MountsRegistryTrace.h"

namespace Controller {

Dualog::Handle mountsRegistryTrace("ControllerMountsRegistrySm", "Controllerdb/MountsRegistry");
const MountTimeoutLog mountsRegistryTimeoutLog;

}  // namespace Controller
