#pragma once

#include "Platform/StructuredLog/StructuredLog.h"

namespace Controller {

/// ZORB_MOUNT_TIMEOUT: a mount takes too long or has failed. Each source of the library defines
/// its handle at load time; the arguments are who is unable, from what kind of system, and which.
class MountTimeoutLog : public StructuredLog::LogHandle {
 public:
  MountTimeoutLog()
      : LogHandle("ZORB_MOUNT_TIMEOUT", 3, "%s is unable to mount from %s %s.",
                  "A mount request to synchronize state between ZORB and switch has timed out. "
                  "The services that depend on the state can be dysfunctional.",
                  StructuredLog::kContactSupport) {}
};

}  // namespace Controller
