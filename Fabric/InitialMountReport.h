#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Controllerdb/InitialMountSm/InitialMountSm.h"
#include "Fabric/World.h"
#include "Platform/Entities/ServiceMount/ServiceMountGroupConfig.h"

namespace Fabric {

/// How far a mount group is with its initial mounts, and what it waits for. Plain values; times are
/// those of the documents.
struct InitialMounts {
  enum class Phase : std::uint8_t { connectionPeriod, processing, mounting, flushing, complete };

  /// A switch that the group waits for.
  struct Switch {
    std::string id;
    std::string label;               // its display name, its id when it has none
    std::vector<std::string> paths;  // outstanding; only while mounting
    /// The status that is waited for has gone with the switch.
    bool gone = false;
  };

  Phase phase = Phase::connectionPeriod;
  /// Until when the phase lasts at most (the connection period: unless a new switch comes), or
  /// since when the group is complete. Nothing: nobody knows.
  std::optional<Orm::Seconds> time;
  std::size_t snapshot = 0;  // switches that were connected when the period ended
  std::vector<Switch> switches;
  /// Processed switches that are not of the snapshot: each makes up for one that is.
  std::size_t others = 0;
  std::vector<std::string> connections;  // of the attribute log, that are not flushed yet
};

/// What the machines know of a group's initial mounts; nothing for a group that is not tracked: the
/// group of a proxy, or of another generation than the leader's.
///
/// `service` is the name under which the configuration stands. Costs the switches that the group
/// waits for, and their paths; while switches are to be processed, those of the snapshot.
std::optional<InitialMounts> initialMountsOf(const Controller::InitialMountSm& machine,
                                             const World& world, const Orm::String& service,
                                             const Controller::ServiceMountGroupConfig& group);

/// The phase's name in a word or two.
const char* name(InitialMounts::Phase phase);

/// The phase in a line: "mounting: leaf1 (acl/rules), window ends at 255 s". `list` puts a list of
/// names together, and cuts it as it sees fit.
using ListText = std::function<std::string(const std::vector<std::string>& names)>;
std::string phaseText(const InitialMounts& mounts, const ListText& list);

}  // namespace Fabric
