#pragma once

#include "Platform/Entities/PeerTable/PeerTable.h"
#include "Platform/Orm/Collection.h"
#include "Platform/Orm/Entity.h"

namespace Controller {

/// Switches that were seen in the peer table: during the connection period, or when it ended.
///
/// Owned by the machine that fills it; groups that see the same peers share one snapshot of them.
/// Raises no notification: readers ask when they need to.
class InitialSwitchSet : public Orm::Entity, private Kobble::Counted<InitialSwitchSet> {
 public:
  using InitialSwitches = Orm::ValueCollection<SystemId, bool>;

  const InitialSwitches& initialSwitch() const { return initialSwitch_; }
  void initialSwitchIs(const SystemId& systemId, bool seen) { initialSwitch_.set(systemId, seen); }
  void initialSwitchDel(const SystemId& systemId) { initialSwitch_.erase(systemId); }
  void initialSwitchDelAll() { initialSwitch_.clear(); }

  /// Makes it a snapshot of the peers.
  void snapshotIs(const PeerTable& table) {
    initialSwitch_.reserve(table.peer().size());
    for (const auto& peer : table.peer()) initialSwitchIs(peer->systemId(), true);
    complete_ = true;
  }
  /// It has those that are peers now, in their order. O(peers).
  bool isSnapshotOf(const PeerTable& table) const {
    if (initialSwitch_.size() != table.peer().size()) return false;
    auto seen = initialSwitch_.begin();
    for (const auto& peer : table.peer()) {
      if (!((*seen).key == peer->systemId())) return false;
      ++seen;
    }
    return true;
  }

  /// The set is a snapshot that has been taken.
  bool complete() const { return complete_; }
  void completeIs(bool complete) { complete_ = complete; }

 private:
  InitialSwitches initialSwitch_;
  bool complete_ = false;
};

}  // namespace Controller
