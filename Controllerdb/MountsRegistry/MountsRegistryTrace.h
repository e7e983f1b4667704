#pragma once

#include "Controllerdb/MountsRegistry/MountTimeoutLog.h"
#include "Platform/Dualog/Dualog.h"

namespace Controller {

/// The trace and log handles of this source.
extern Dualog::Handle mountsRegistryTrace;
extern const MountTimeoutLog mountsRegistryTimeoutLog;

}  // namespace Controller

#define REGISTRY_TRACE(level, ...) \
  DUALOG_TRACE(::Controller::mountsRegistryTrace, level, __VA_ARGS__)

#define REGISTRY_MESSAGE(level, signature, format, ...)                                   \
  DUALOG_MESSAGE(::Controller::mountsRegistryTrace, "Controllerdb/MountsRegistry", level, \
                 signature, format __VA_OPT__(, ) __VA_ARGS__)
