#pragma once

#include "Controllerdb/MountsRegistry/MountTimeoutLog.h"
#include "Platform/Dualog/Dualog.h"

namespace Controller {

/// The trace and log handles of this source.
extern Dualog::Handle serviceConfigDirTrace;
extern const MountTimeoutLog serviceConfigDirTimeoutLog;

}  // namespace Controller

#define CONFIG_TRACE(level, ...) \
  DUALOG_TRACE(::Controller::serviceConfigDirTrace, level, __VA_ARGS__)

#define CONFIG_MESSAGE(level, signature, format, ...)                                           \
  DUALOG_MESSAGE(::Controller::serviceConfigDirTrace, "Controllerdb/ServiceConfigDirSm", level, \
                 signature, format __VA_OPT__(, ) __VA_ARGS__)
