#include "Fabric/Machines.h"

namespace Fabric {

Machines::Machines(const World& world)
    : serviceConfigDirSm_(Controller::serviceConfigDirSmFactory(
          world.controllerdbStatus(), world.mountConfigDir(), world.mountStatusDir(),
          world.publishConfigDir(), world.publishStatusDir(), world.proxyMountConfigDir(),
          world.proxyMountStatusDir(), world.publishStatus(), world.mountsRegistry())),
      mountsRegistrySm_(Controller::mountsRegistrySmFactory(
          world.mountsRegistry(), world.oobStatus(), world.heartbeatConfig(), world.rootDir(),
          world.publishStatus(), world.serviceConfigDir())),
      initialMountSm_(Controller::initialMountSmFactory(
          world.mountConfigDir(), world.mountStatusDir(), world.oobConfig(), world.oobStatus(),
          world.controllerdbStatus())) {}

Machines::~Machines() {
  initialMountSm_ = nullptr;
  mountsRegistrySm_ = nullptr;
  serviceConfigDirSm_ = nullptr;
}

}  // namespace Fabric
