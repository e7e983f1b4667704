#include "Controllerdb/ServiceConfigDirSm/ServiceConfigTrace.h"

namespace Controller {

Dualog::Handle serviceConfigDirTrace("ControllerServiceConfigDirSm",
                                     "Controllerdb/ServiceConfigDirSm");
const MountTimeoutLog serviceConfigDirTimeoutLog;

}  // namespace Controller
