#pragma once

#include <cstdint>

#include "Platform/Fennix/Dir.h"
#include "Platform/Mount/MountSm.h"
#include "Platform/Orm/Ptr.h"

namespace Fabric {

class MountSimulation;

/// What the simulated mounts of one mount entry have in common, kept once for all switches.
/// Made by MountSimulation, held by its machines, gone with the last of them.
class SimulatedMountEntry : public Orm::PtrInterface, private Kobble::Counted<SimulatedMountEntry> {
 public:
  SimulatedMountEntry(const Controller::MountRequest& request, MountSimulation& simulation);
  ~SimulatedMountEntry() override;

  /// Whether a request is one of this entry.
  bool matches(const Controller::MountRequest& request) const;

  MountSimulation& simulation() const { return simulation_; }
  const Orm::String& remoteRoot() const { return remoteRoot_; }
  const Orm::String& remotePath() const { return remotePath_; }
  /// The directory in which the switches' copies stand.
  const Orm::Ptr<Fennix::Dir>& mountDir() const { return mountDir_; }
  const Orm::String& type() const { return type_; }
  const Orm::String& flags() const { return flags_; }
  std::uint32_t retries() const { return retries_; }
  std::int32_t timeout() const { return timeout_; }

 private:
  MountSimulation& simulation_;
  Orm::String remoteRoot_;
  Orm::String remotePath_;
  Orm::Ptr<Fennix::Dir> mountDir_;
  Orm::String type_;
  Orm::String flags_;
  std::uint32_t retries_;
  std::int32_t timeout_;
};

}  // namespace Fabric
