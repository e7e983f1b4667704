#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Fabric/Machines.h"
#include "Fabric/MissingLines.h"
#include "Fabric/Report.h"
#include "Fabric/World.h"
#include "Platform/Entities/ServicePublish/ServicePublishConfig.h"

namespace Fabric {

/// Reads the report's publish groups off a controller. Why a publication is not there is what its
/// entry's machine decided; nothing is decided here a second time.
///
/// The registry says which service an entry is of, not which group: where two groups of a service
/// name a path, both are shown with the one entry.
///
/// Costs one question to the entry's machine for each path and switch of each group. The machines
/// trace their answers, so traces are to be off.
class PublishReportBuilder {
 public:
  /// All have to stay. `systemIds` are those of the report's switches.
  PublishReportBuilder(const World& world, const Machines& machines,
                       const std::vector<Controller::SystemId>& systemIds)
      : world_(world), machines_(machines), systemIds_(systemIds) {}

  /// Fills in the publish groups of a report that has its leader and its switches.
  void build(Report& report);

 private:
  using Reason = MissingLines::Reason;

  Report::Readiness readinessOf(const Orm::String& serviceName) const;
  std::string whyNotInForce(const Orm::String& service,
                            const Controller::ServicePublishConfig& config,
                            const Controller::ServicePublishGroupConfig& group) const;
  void addGroup(const Orm::String& service, const Controller::ServicePublishConfig& config,
                const Controller::ServicePublishGroupConfig& group);
  void addPath(MissingLines& lines, const Orm::String& path, const Orm::String& serviceName) const;
  /// Why the path is published to no switch; nothing: that depends on the switch.
  static std::optional<Reason> reasonForAll(const Controller::PublishRegistryEntrySm* entry,
                                            const Orm::String& serviceName);
  Report::PublishCounts countsOf(const MissingLines& lines) const;

  const World& world_;
  const Machines& machines_;
  const std::vector<Controller::SystemId>& systemIds_;
  Report* report_ = nullptr;
};

}  // namespace Fabric
