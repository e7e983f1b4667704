#pragma once

#include <cstdint>
#include <vector>

#include "Bench/Converge/PromptMounts.h"
#include "Bench/Converge/Scenario.h"
#include "Controllerdb/InitialMountSm/InitialMountSm.h"
#include "Controllerdb/MountsRegistry/MountsRegistrySm.h"
#include "Controllerdb/ServiceConfigDirSm/ServiceConfigDirSm.h"
#include "Platform/Dualog/Dualog.h"
#include "Platform/Orm/ActivityLoop.h"

namespace Bench {

/// A controller process that runs the converge workload: all machines of the library, over
/// entities that this class writes in place of the services and the switches.
///
/// A mount group of the library has one filter, where the workload filters entry by entry: the
/// filtered entries of a group become groups of their own, one a filter class, that are named
/// after it and counted as it. The filter of such a group holds the systems and versions that
/// either contributor names.
///
/// One at a time: it sets the process's clock, mount machines and traces. Each function returns
/// when everything that follows from it has been done.
class World {
 public:
  explicit World(const Scenario& scenario);
  ~World();
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  void configure();                   // services, groups, filters, machines
  void connect(std::uint32_t sw);     // the switch appears
  void connected();                   // all have: the initial-mount tracking takes note
  void announce(std::uint32_t sw);    // its versions appear: mounts are made
  void progress(std::uint32_t sw);    // the far side moves every record of it one step on
  void converged();                   // the initial-mount tracking comes to its end
  void disconnect(std::uint32_t sw);  // mounts and status go away

  /// The systems of one group's filter leave it one after the other, all but the first, or come
  /// back.
  void filterEdit(bool included);
  /// A leader of another generation than the services' configuration, or again the one of theirs.
  void leaderIs(bool ours);

  Outcome outcome() const;
  /// Mount groups that are reported as complete by the initial-mount tracking.
  std::uint32_t initialMountsComplete() const;
  /// Mount groups of the library that are configured.
  std::uint32_t libraryGroups() const { return libraryGroups_; }

 private:
  struct Switch {
    Controller::SystemId systemId;
    Orm::String name;
    Pomix::IpAddrPort address;
    std::uint32_t number = 0;  // with the mounts
  };
  struct Service {
    Orm::String name;
    Orm::Ptr<Controller::ServiceMountConfig> config;
    Orm::Ptr<Controller::ServiceMountStatus> status;
  };
  using Filter = Orm::Ptr<Controller::MountFilterSystem>;

  void tracesAre(Options::Traces traces);
  void addEntry(std::uint32_t entry);
  void setFilters(Controller::ServiceMountGroupConfig& group, std::uint32_t filterClass);
  void groupOutcome(const Service& service, const Controller::SystemStatus& system,
                    Outcome& outcome) const;

  const Scenario scenario_;
  PromptMounts mounts_;
  Orm::Ptr<Orm::Clock> clock_;
  Orm::ActivityLoop loop_;
  Orm::Ptr<Fennix::Dir> root_;
  Orm::Ptr<Fennix::Dir> configDir_;
  Orm::Ptr<Fennix::Dir> statusDir_;
  Orm::Ptr<Controller::MountsRegistry> registry_;
  Orm::Ptr<Controllerdb::Status> database_;
  Orm::Ptr<Controllerdb::PublishStatus> publications_;
  Orm::Ptr<Controller::ServiceConfigDir> serviceConfigs_;
  Orm::Ptr<ControllerOob::Config> oobConfig_;
  Orm::Ptr<ControllerOob::Status> oob_;
  std::vector<Switch> switches_;
  std::vector<Service> services_;
  Filter lastFilter_;
  std::uint32_t libraryGroups_ = 0;

  Orm::Ptr<Controller::ServiceConfigDirSm> configSm_;
  Orm::Ptr<Controller::MountsRegistrySm> registrySm_;
  Orm::Ptr<Controller::InitialMountSm> initialSm_;
};

}  // namespace Bench
