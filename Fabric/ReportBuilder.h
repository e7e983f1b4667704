#pragma once

#include <compare>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Fabric/Machines.h"
#include "Fabric/Report.h"
#include "Fabric/World.h"
#include "Platform/Entities/ServiceMount/ServiceMountConfig.h"

namespace Fabric {

/// Reads the report's groups off a controller. Why a mount is not there is what its entry's machine
/// decided and what its record says; nothing is decided here a second time.
///
/// Costs one question to the entry's machine for each path and switch of each group. The machines
/// trace their answers, so traces are to be off.
class ReportBuilder {
 public:
  /// Both have to stay.
  ReportBuilder(const World& world, const Machines& machines);

  /// Fills in the leader, the switches and the groups.
  void build(Report& report);

 private:
  /// What mounts that belong into one line have in common.
  struct Reason {
    Report::Cause cause = Report::Cause::refused;
    Controller::Admission admission = Controller::Admission::undecided;
    std::string otherGroup;
    auto operator<=>(const Reason&) const = default;
  };
  struct Switches {
    Report::SwitchIndices indices;
    std::optional<Orm::Seconds> askedFirst;
    std::optional<Orm::Seconds> askedLast;
  };
  using Reasons = std::map<Reason, Switches>;

  void addSwitches();
  void addServices(const Fennix::Dir& configDir, bool proxy);
  void addGroup(const Orm::String& service, bool proxy,
                const Controller::ServiceMountConfig& config,
                const Controller::ServiceMountGroupConfig& group);
  std::string whyNotInForce(const Orm::String& service,
                            const Controller::ServiceMountConfig& config,
                            const Controller::ServiceMountGroupConfig& group) const;

  void addPath(const Orm::String& path, const Controller::ServiceMountConfig& config,
               const Orm::String& group);
  /// Nothing: the mount is there.
  std::optional<Reason> reasonOf(Controller::MountsRegistryEntrySm& entry,
                                 const Controller::Mounter& mounter, std::size_t index) const;
  bool isKept(const Controller::MountsRegistryEntrySm& entry, std::size_t index) const;
  void note(Reasons& reasons, const Reason& reason, std::size_t index,
            std::optional<Orm::Seconds> asked);
  void addReasons(const Orm::String& path, Reasons&& reasons);
  void finishGroup(Report::Group& group);

  const World& world_;
  const Machines& machines_;
  Report* report_ = nullptr;
  std::vector<Controller::SystemId> systemIds_;
  std::vector<Orm::String> systemNames_;

  // ---- of the group that is being read

  /// By switch: the worst that any path says.
  std::vector<std::optional<Reason>> worst_;
  std::map<std::pair<Reason, Report::SwitchIndices>, Report::Missing> missing_;
};

}  // namespace Fabric
