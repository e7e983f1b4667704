#pragma once

#include "Controllerdb/MountsRegistry/MountTimeoutLog.h"
#include "Platform/Dualog/Dualog.h"

namespace Controller {

/// The trace and log handles of this source.
extern Dualog::Handle initialMountTrace;
extern const MountTimeoutLog initialMountTimeoutLog;

}  // namespace Controller

#define INITIAL_TRACE(level, ...) DUALOG_TRACE(::Controller::initialMountTrace, level, __VA_ARGS__)

#define INITIAL_MESSAGE(level, signature, format, ...)                                             \
  DUALOG_MESSAGE(::Controller::initialMountTrace, "Controllerdb/InitialMountSm", level, signature, \
                 format __VA_OPT__(, ) __VA_ARGS__)
