#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <unordered_map>
#include <vector>

#include "Fabric/MountObserver.h"
#include "Fabric/SimulatedMountSm.h"
#include "Fabric/Value.h"
#include "Platform/Mount/MountSm.h"
#include "Platform/Orm/ActivitySource.h"
#include "Platform/Orm/Clock.h"
#include "Platform/Orm/Collection.h"

namespace Fabric {

/// Makes the simulated mount machines, knows how each switch behaves, and does their work when it
/// is due: in order of time, at equal times, the clock's timers included, of scheduling.
///
/// A host sets it as the factory (MountSm::factoryIs) and as a source of its loop, and keeps it
/// longer than all machines. Loop thread only. Scheduling and doing a piece of work cost O(1) for
/// work that is due at one time, and O(log n) of the times at which something is due; an outcome
/// that waits takes 16 bytes.
class MountSimulation final : public Controller::MountSm::Factory, public Orm::ActivitySource {
 public:
  explicit MountSimulation(Orm::Ptr<Orm::Clock> clock);
  ~MountSimulation();
  MountSimulation(const MountSimulation&) = delete;
  MountSimulation& operator=(const MountSimulation&) = delete;

  Orm::Ptr<Controller::MountSm> mountSm(const Controller::MountRequest& request) override;

  Orm::Due nextDue() override;
  void runNext() override;

  /// How requests for a switch go from now on: its `mount` block, null for the defaults.
  void behaviourIs(const Controller::SystemId& systemId, Value mount);

  /// Observers are told in the order in which they came. Each must stay until it is removed.
  void observerIs(MountObserver& observer);
  void observerDel(MountObserver& observer);

  /// Mount machines that are there.
  std::size_t mounts() const { return mounts_; }

  const Orm::Ptr<Orm::Clock>& clock() const { return clock_; }

 private:
  friend class SimulatedMountSm;
  friend class SimulatedMountEntry;

  /// How one switch behaves, and its name in mount paths.
  struct Switch {
    Orm::String name;
    Value mount;
    Orm::Tick delay = 0;
  };
  /// A request that the next turn takes up; due when it was made.
  struct Turn {
    std::uint64_t sequence;
    Orm::Ptr<SimulatedMountSm> machine;
    Orm::Tick delay;
  };
  struct Work {
    std::uint64_t sequence;
    Orm::Ptr<SimulatedMountSm> machine;
  };

  // ---- for the machines

  Orm::Tick now() const { return clock_->time().now(); }
  const Switch& switchAt(std::uint32_t index) const { return switches_[index]; }
  void scheduleTurn(SimulatedMountSm& machine, Orm::Tick delay);
  void scheduleOutcome(SimulatedMountSm& machine, Orm::Tick tick);
  void tellRequest(const SimulatedMountSm& machine, MountRequestKind kind);
  void tellState(const SimulatedMountSm& machine, Controller::MountState state);
  void entryGone(const SimulatedMountEntry& entry);

  std::uint32_t switchIndex(const Controller::SystemId& systemId);
  Orm::Ptr<SimulatedMountEntry> entryOf(const Controller::MountRequest& request);
  template <class Piece>
  static bool isCancelled(const Piece& piece);
  void dropCancelled();
  Orm::Due dueTurn() const;
  Orm::Due dueOutcome() const;
  void runTurn();
  void runOutcome();

  Orm::Ptr<Orm::Clock> clock_;
  std::deque<Turn> turns_;
  /// What is due at each time, in order of scheduling; no queue is empty.
  std::map<Orm::Tick, std::deque<Work>> outcomes_;
  std::vector<Switch> switches_;
  Orm::ValueCollection<Controller::SystemId, std::uint32_t> switchIndex_;
  /// By hash of the remote path.
  std::unordered_multimap<std::uint32_t, SimulatedMountEntry*> entries_;
  std::vector<MountObserver*> observers_;
  std::size_t mounts_ = 0;
};

}  // namespace Fabric
