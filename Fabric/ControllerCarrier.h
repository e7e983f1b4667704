#pragma once

#include "Fabric/ControllerView.h"
#include "Fabric/Value.h"
#include "Fabric/World.h"

namespace Fabric {

/// Carries the block `controller`: the leader and the heartbeat configuration.
class ControllerCarrier {
 public:
  explicit ControllerCarrier(const World& world) : world_(world) {}

  /// Null in `patch` removes the whole block.
  void carry(const Value& after, const Value& patch);

 private:
  void leader(const ControllerView& after);
  void heartbeat(const ControllerView& after);

  const World& world_;
};

}  // namespace Fabric
