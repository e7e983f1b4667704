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

// The same in what every mount goes through, functions of the template parameter `bool kTraced`.
// Their tests, some hundred a mount, cost a twelfth of its instructions even while all traces are
// off; so these functions exist twice, and while the source's handle is not on the ones without
// statements of traces run. Traces that are switched on within an event begin with the next one.
#define STEP_TRACE(...) \
  if constexpr (kTraced) REGISTRY_TRACE(__VA_ARGS__)
#define STEP_MESSAGE(...) \
  if constexpr (kTraced) REGISTRY_MESSAGE(__VA_ARGS__)
