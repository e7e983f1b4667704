#pragma once

#include "Fabric/MountSimulation.h"
#include "Fabric/ServiceStatusView.h"
#include "Fabric/SwitchView.h"
#include "Fabric/Text.h"
#include "Fabric/Value.h"
#include "Fabric/World.h"

namespace Fabric {

/// The address that a switch connects from: a private one that is made of its id.
Pomix::IpAddrPort clientAddressOf(const Controller::SystemId& systemId);

/// Carries a switch of the block `switches` to its client status, its peer, its inactive client
/// and its simulated mounts.
class SwitchCarrier {
 public:
  SwitchCarrier(const World& world, MountSimulation& mounts) : world_(world), mounts_(mounts) {}

  /// The key is the switch's id; `before` or `after` is null when it appears or goes.
  void carry(const Text& key, const Value& before, const Value& after, const Value& patch);

 private:
  void appear(const Controller::SystemId& systemId, const Value& after);
  void change(const Controller::SystemId& systemId, const Value& before, const Value& after,
              const Value& patch);
  void disappear(const Controller::SystemId& systemId);

  void connected(const Controller::SystemId& systemId, bool connected, bool reachable);
  void reachable(const Controller::SystemId& systemId, bool reachable);
  void inactive(const Controller::SystemId& systemId, bool inactive);
  void mount(const Controller::SystemId& systemId, const Value& after);

  const World& world_;
  MountSimulation& mounts_;
};

}  // namespace Fabric
