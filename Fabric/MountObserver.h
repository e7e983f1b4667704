#pragma once

#include <cstdint>

#include "Platform/Entities/ServiceMount/MountState.h"
#include "Platform/Entities/SystemId/SystemId.h"
#include "Platform/Orm/String.h"

namespace Fabric {

/// What a mount machine is asked to do; creation asks for a mount.
enum class MountRequestKind : std::uint8_t { mount, remount, unmount, preservingUnmount, cleanup };

/// As the event stream writes it.
const char* name(MountRequestKind kind);

/// Sees what the simulated mount machines are asked and what they report. Called within the
/// request, or right before the record's state is set, so that what follows from it is seen after
/// it. Must not change anything.
class MountObserver {
 public:
  virtual void mountRequest(const Controller::SystemId& systemId, const Orm::String& remotePath,
                            MountRequestKind kind) = 0;
  /// The record's state is another one than before.
  virtual void mountState(const Controller::SystemId& systemId, const Orm::String& remotePath,
                          Controller::MountState state) = 0;

 protected:
  ~MountObserver() = default;
};

}  // namespace Fabric
