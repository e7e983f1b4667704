#pragma once

#include "Controllerdb/InitialMountSm/InitialMountSm.h"
#include "Controllerdb/MountsRegistry/MountsRegistrySm.h"
#include "Controllerdb/ServiceConfigDirSm/ServiceConfigDirSm.h"
#include "Fabric/World.h"

namespace Fabric {

/// The top machines of a controller process, over the entities of a world.
///
/// Made when the world holds what there is at start; each deals with what is there when it is made.
/// Goes before the world, and takes the machines down in the opposite order. The clock, the mount
/// machines' factory and the toggles of the process have to be set before.
class Machines {
 public:
  explicit Machines(const World& world);
  ~Machines();
  Machines(const Machines&) = delete;
  Machines& operator=(const Machines&) = delete;

  const Orm::Ptr<Controller::ServiceConfigDirSm>& serviceConfigDirSm() const {
    return serviceConfigDirSm_;
  }
  const Orm::Ptr<Controller::MountsRegistrySm>& mountsRegistrySm() const {
    return mountsRegistrySm_;
  }
  const Orm::Ptr<Controller::InitialMountSm>& initialMountSm() const { return initialMountSm_; }

 private:
  Orm::Ptr<Controller::ServiceConfigDirSm> serviceConfigDirSm_;
  Orm::Ptr<Controller::MountsRegistrySm> mountsRegistrySm_;
  Orm::Ptr<Controller::InitialMountSm> initialMountSm_;
};

}  // namespace Fabric
