#pragma once

#include "Platform/Entities/SystemId/SystemId.h"
#include "Platform/Orm/Collection.h"
#include "Platform/Orm/Entity.h"

namespace Controller {

/// Switches that were seen in the peer table: during the connection period, or when it ended.
///
/// Owned by the machine that fills it. Raises no notification: readers ask when they need to.
class InitialSwitchSet : public Orm::Entity, private Kobble::Counted<InitialSwitchSet> {
 public:
  using InitialSwitches = Orm::ValueCollection<SystemId, bool>;

  const InitialSwitches& initialSwitch() const { return initialSwitch_; }
  void initialSwitchIs(const SystemId& systemId, bool seen) { initialSwitch_.set(systemId, seen); }
  void initialSwitchDel(const SystemId& systemId) { initialSwitch_.erase(systemId); }
  void initialSwitchDelAll() { initialSwitch_.clear(); }

  /// The set is a snapshot that has been taken.
  bool complete() const { return complete_; }
  void completeIs(bool complete) { complete_ = complete; }

 private:
  InitialSwitches initialSwitch_;
  bool complete_ = false;
};

}  // namespace Controller
