#pragma once

#include <cstdint>
#include <vector>

#include "Controllerdb/MountsRegistry/Mounter.h"
#include "Controllerdb/MountsRegistry/MountsRegistryEntry.h"
#include "Controllerdb/MountsRegistry/PublishRegistryEntry.h"
#include "Fabric/World.h"

namespace Soak {

/// What the inputs say, found by looking at all of them each time: what machines keep and decide
/// is compared with it. Uses nothing of the machines.
class Truth {
 public:
  /// The filters of all mounters of an entry, put together.
  struct Filters {
    struct System {
      Orm::String name;
      std::uint32_t count;
    };
    struct Version {
      Orm::String service;
      std::uint32_t version;
    };
    bool wildcard = false;
    std::vector<System> systems;
    std::vector<Version> versions;
  };

  /// The world has to stay.
  explicit Truth(const Fabric::World& world) : world_(world) {}

  /// The version of a service, or of the one that a proxy stands for, on a connection; 0: none.
  std::uint32_t version(const Orm::String& service, const Controller::Peer& peer) const;

  /// The service itself, or the one that a proxy stands for.
  static Orm::String realName(const Orm::String& service);

  static Filters filtersOf(const Controller::MountsRegistryEntry& entry);
  /// The path is to be mounted from the switch.
  bool admits(const Controller::MountsRegistryEntry& entry, const Filters& filters,
              const Controller::Peer& peer) const;
  /// The mounter's own group wants the switch.
  bool wants(const Controller::Mounter& mounter, const Controller::Peer& peer) const;

  bool hasLocalEntity(const Controller::PublishRegistryEntry& entry) const;
  /// The path is to be published to the switch, local entity and readiness included.
  bool publishes(const Controller::PublishRegistryEntry& entry, const Controller::Peer& peer) const;

  const Controller::Peer* peer(const Controller::SystemId& systemId) const {
    return world_.peerTable() ? world_.peerTable()->peer(systemId) : nullptr;
  }

 private:
  const Fabric::World& world_;
};

}  // namespace Soak
