#pragma once

#include <set>
#include <string>
#include <utility>

#include "Fabric/Simulation.h"
#include "Soak/Excuses.h"
#include "Soak/Truth.h"

namespace Soak {

/// What holds after every event, turn and timer of a run, whatever came before: what the machines
/// keep and what they have written agree with a scan of the inputs.
///
/// check() throws Broken. Costs a walk over everything; reads, changes nothing.
class Invariants {
 public:
  /// Both have to stay.
  Invariants(const Fabric::Simulation& simulation, const Excuses& excuses)
      : simulation_(simulation), excuses_(excuses), truth_(simulation.world()) {}

  void check();
  /// Before and after each patch, also one that is applied within another piece of work: what a
  /// later change of the same piece hides is seen.
  void patchCame();
  /// "SERVICE SWITCH PATH" of mounters that were not told of a mount because their group had lost
  /// its status.
  std::set<std::string> untold() const;
  /// Within the notification that a service is ready, or is no longer; check() throws what is
  /// wrong.
  void readinessCame(std::string_view service, bool ready);

 private:
  using Entry = Controller::MountsRegistryEntry;
  using EntrySm = Controller::MountsRegistryEntrySm;

  const Fabric::World& world() const { return simulation_.world(); }

  void checkRegistryMachine() const;
  void checkIndexes() const;
  void checkTimers() const;
  // ---- mounts
  void checkEntry(const Entry& entry, const EntrySm& machine);
  void checkFilters(const Truth::Filters& filters, const EntrySm& machine) const;
  void checkMount(const Entry& entry, const EntrySm& machine, const Truth::Filters& filters,
                  const Controller::Peer& peer);
  void checkRecords(const Entry& entry, const EntrySm& machine) const;
  void checkStatusOfMount(const Entry& entry, const EntrySm& machine, const Controller::Peer& peer);
  // ---- what the services are told
  void checkStatuses(const Fennix::Dir& statuses, const Fennix::Dir& configs);
  void lookForLeftBehind(const Fennix::Dir& statuses);
  bool isKnown(const Controller::SystemId& systemId) const;
  bool hasMounter(const Controller::ServiceMountStatus& status) const;
  void checkSystem(const Orm::String& service, const Controller::ServiceMountStatus& status,
                   const Controller::SystemStatus& system);
  void checkGroup(const Orm::String& service, const Controller::ServiceMountStatus& status,
                  const Controller::SystemStatus& system,
                  const Controller::ServiceMountGroupStatus& group) const;
  // ---- configuration
  void checkConfigurations(const Fennix::Dir& configs, const Fennix::Dir& statuses,
                           bool proxies) const;
  void checkMounters(const Entry& entry) const;
  // ---- publications
  void checkPublications() const;
  void checkPublication(const Controller::PublishRegistryEntrySm& machine,
                        const Controller::Peer& peer) const;
  void checkPublished(const Controllerdb::SystemPublishedMount& system) const;
  void checkReadiness() const;
  bool hasWaitingEntry(const Orm::String& service) const;

  const Fabric::Simulation& simulation_;
  const Excuses& excuses_;
  Truth truth_;
  /// Services and switches that are unknown whose status nobody is left to take away: the service
  /// had no mounter when the switch was forgotten.
  std::set<std::pair<const Controller::ServiceMountStatus*, std::string>> leftBehind_;
  /// Mounters and switches whose group had no status: it went with its last mount status while a
  /// mount of another path was under way, which nobody is told of then until its next change.
  std::set<std::pair<const Controller::Mounter*, Controller::SystemId>> untold_;
  /// What was seen within a notification, where nothing may be thrown.
  std::string seen_;
};

}  // namespace Soak
