#include "Fabric/SimulatedMountEntry.h"

#include "Fabric/MountSimulation.h"

namespace Fabric {

SimulatedMountEntry::SimulatedMountEntry(const Controller::MountRequest& request,
                                         MountSimulation& simulation)
    : simulation_(simulation),
      remoteRoot_(request.remoteRoot),
      remotePath_(request.remotePath),
      mountDir_(request.mountDir),
      type_(request.ormType),
      flags_(request.mountFlags),
      retries_(request.retries),
      timeout_(request.timeout) {}

SimulatedMountEntry::~SimulatedMountEntry() { simulation_.entryGone(*this); }

bool SimulatedMountEntry::matches(const Controller::MountRequest& request) const {
  return mountDir_ == request.mountDir && remotePath_ == request.remotePath &&
         remoteRoot_ == request.remoteRoot && type_ == request.ormType &&
         flags_ == request.mountFlags && retries_ == request.retries && timeout_ == request.timeout;
}

}  // namespace Fabric
