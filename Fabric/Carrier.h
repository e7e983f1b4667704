#pragma once

#include "Fabric/AttrlogCarrier.h"
#include "Fabric/ControllerCarrier.h"
#include "Fabric/EntityCarrier.h"
#include "Fabric/Model.h"
#include "Fabric/MountSimulation.h"
#include "Fabric/Patch.h"
#include "Fabric/ServiceCarrier.h"
#include "Fabric/SwitchCarrier.h"
#include "Fabric/World.h"

namespace Fabric {

/// Carries what the document says to the entities, one change after the other, each through the
/// entity's own setters, so that whoever watches sees it as a change.
///
/// A patch is merged into the document and carried key by key, in its own order. The exceptions:
/// what is new is built whole before it is put in, where the setters let it; what a list leaves
/// out of a filter goes before what it adds; what cannot change is removed and added again.
///
/// Owned by whoever runs the world. Loop thread only. Costs what the patch names, for each switch
/// that its patterns match.
class Carrier {
 public:
  /// Both have to outlive it.
  Carrier(const World& world, MountSimulation& mounts);

  /// Builds what a document says at the start; the world holds nothing of a document yet.
  void start(const Model& model);
  /// Merges a patch that was resolved against the model, and carries it.
  void apply(Model& model, const Patch& patch);

  const AttrlogCarrier& attrlog() const { return attrlog_; }

 private:
  /// `before` and `after`: the block's member (of `controller`, the block), null when absent.
  void carry(Block block, const Text& key, const Value& before, const Value& after,
             const Value& patch);

  ControllerCarrier controller_;
  EntityCarrier entities_;
  AttrlogCarrier attrlog_;
  ServiceCarrier services_;
  SwitchCarrier switches_;
};

}  // namespace Fabric
