#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Fabric/Machines.h"
#include "Fabric/MissingLines.h"
#include "Fabric/Report.h"
#include "Fabric/World.h"
#include "Platform/Entities/ServiceMount/ServiceMountConfig.h"

namespace Fabric {

/// Reads the report's switches and groups off a controller. Why a mount is not there is what its
/// entry's machine decided and what its record says; nothing is decided here a second time.
///
/// Costs one question to the entry's machine for each path and switch of each group. The machines
/// trace their answers, so traces are to be off.
class ReportBuilder {
 public:
  /// Both have to stay.
  ReportBuilder(const World& world, const Machines& machines);

  /// Fills in the leader, the switches and the groups, of mounts and of publications.
  void build(Report& report);

 private:
  using Reason = MissingLines::Reason;

  void addSwitches();
  void addServices(const Fennix::Dir& configDir, bool proxy);
  void addGroup(const Orm::String& service, bool proxy,
                const Controller::ServiceMountConfig& config,
                const Controller::ServiceMountGroupConfig& group);
  std::string whyNotInForce(const Orm::String& service,
                            const Controller::ServiceMountConfig& config,
                            const Controller::ServiceMountGroupConfig& group) const;

  void addPath(MissingLines& lines, const Orm::String& path,
               const Controller::ServiceMountConfig& config, const Orm::String& group) const;
  /// Nothing: the mount is there.
  std::optional<Reason> reasonOf(Controller::MountsRegistryEntrySm& entry,
                                 const Controller::Mounter& mounter, std::size_t index) const;
  bool isKept(const Controller::MountsRegistryEntrySm& entry, std::size_t index) const;
  Report::Counts countsOf(const MissingLines& lines) const;

  const World& world_;
  const Machines& machines_;
  Report* report_ = nullptr;
  std::vector<Controller::SystemId> systemIds_;
  std::vector<Orm::String> systemNames_;
};

}  // namespace Fabric
