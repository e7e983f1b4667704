#include "Controllerdb/InitialMountSm/InitialMountTrace.h"

namespace Controller {

Dualog::Handle initialMountTrace("ControllerInitialMountSm", "Controllerdb/InitialMountSm");
const MountTimeoutLog initialMountTimeoutLog;

}  // namespace Controller
