#include "Fabric/ReportBuilder.h"

#include <algorithm>
#include <utility>

#include "Fabric/DocumentTime.h"
#include "Fabric/PublishReportBuilder.h"
#include "Fabric/SimulatedMountSm.h"
#include "Fabric/StaleGeneration.h"

namespace Fabric {

using Controller::Admission;
using Controller::MountState;
using Orm::String;
using Cause = Report::Cause;

namespace {

/// When the mount was asked for, which its machine knows.
std::optional<Orm::Seconds> askedAt(const Controller::MountsRegistryEntrySm& entry,
                                    const Controller::SystemId& systemId) {
  const auto* const machine = dynamic_cast<const SimulatedMountSm*>(entry.mountSm(systemId));
  if (!machine) return std::nullopt;
  return documentTime(Orm::secondsOf(machine->requestedAt()));
}

bool hasTimes(Cause cause) { return cause == Cause::failed || cause == Cause::inProgress; }

}  // namespace

ReportBuilder::ReportBuilder(const World& world, const Machines& machines)
    : world_(world), machines_(machines) {}

void ReportBuilder::build(Report& report) {
  report_ = &report;
  report.leader = world_.controllerdbStatus()->leaderGenId().str();
  addSwitches();
  addServices(*world_.mountConfigDir(), false);
  addServices(*world_.proxyMountConfigDir(), true);
  PublishReportBuilder(world_, machines_, systemIds_).build(report);
}

void ReportBuilder::addSwitches() {
  const ControllerOob::Status& status = *world_.oobStatus();
  for (const auto& client : status.clientStatus()) {
    const Controller::SystemId& systemId = client->systemId();
    systemIds_.push_back(systemId);
    systemNames_.push_back(systemId.stringValue());
    report_->switches.push_back({systemNames_.back().str(), client->name().str(),
                                 status.peerTable() && status.peerTable()->peer().has(systemId),
                                 status.inactive().has(systemId)});
  }
}

void ReportBuilder::addServices(const Fennix::Dir& configDir, bool proxy) {
  for (const auto& slot : configDir.entity()) {
    const auto config = Orm::dynamicCast<Controller::ServiceMountConfig>(slot.value);
    if (!config) continue;
    for (const auto& group : config->mountGroupConfig()) {
      addGroup(slot.key, proxy, *config, *group);
    }
  }
}

std::string ReportBuilder::whyNotInForce(const String& service,
                                         const Controller::ServiceMountConfig& config,
                                         const Controller::ServiceMountGroupConfig& group) const {
  if (group.mountConfig().empty()) return "the group has no paths";
  if (config.serviceName().empty()) return "the configuration has no service name";
  const auto* const machine = machines_.serviceConfigDirSm()->serviceMountConfigSm().find(service);
  if (!machine) return "the service has no mount status";
  auto* const groupMachine = machine->mountGroupSm().find(group.groupName());
  if (!groupMachine) return "the group was not taken up";
  if (groupMachine->canMount()) return "";
  return staleGeneration(config.genId().str(), report_->leader);
}

void ReportBuilder::addGroup(const String& service, bool proxy,
                             const Controller::ServiceMountConfig& config,
                             const Controller::ServiceMountGroupConfig& group) {
  Report::Group added{service.str(),
                      group.groupName().str(),
                      proxy,
                      group.mountConfig().size(),
                      whyNotInForce(service, config, group),
                      {},
                      {}};
  if (added.notInForce.empty()) {
    MissingLines lines(systemIds_.size());
    for (const auto& path : group.mountConfig()) {
      addPath(lines, path->path(), config, group.groupName());
    }
    added.counts = countsOf(lines);
    added.missing = lines.lines();
  }
  if (!proxy) {
    added.initialMounts = initialMountsOf(*machines_.initialMountSm(), world_, service, group);
  }
  report_->groups.push_back(std::move(added));
}

void ReportBuilder::addPath(MissingLines& lines, const String& path,
                            const Controller::ServiceMountConfig& config,
                            const String& group) const {
  auto* const entry = machines_.mountsRegistrySm()->mountsRegistryEntrySm().find(path);
  const Controller::Mounter* const mounter =
      entry ? entry->registryEntry()->mounter(config.serviceName()) : nullptr;
  for (std::size_t at = 0; at != systemIds_.size(); ++at) {
    const std::optional<Reason> reason =
        !mounter ? Reason{Cause::notRegistered, Admission::undecided, {}}
        : mounter->groupName() != group
            ? Reason{Cause::registeredByOther, Admission::undecided, mounter->groupName().str()}
            : reasonOf(*entry, *mounter, at);
    if (!reason) continue;
    lines.note(*reason, at,
               hasTimes(reason->cause) ? askedAt(*entry, systemIds_[at]) : std::nullopt);
  }
  lines.pathEnds(path.str());
}

std::optional<ReportBuilder::Reason> ReportBuilder::reasonOf(
    Controller::MountsRegistryEntrySm& entry, const Controller::Mounter& mounter,
    std::size_t index) const {
  const Controller::SystemId& systemId = systemIds_[index];
  const Admission admission = entry.mounterAdmission(mounter, systemId);
  if (admission == Admission::notConnected && isKept(entry, index)) {
    return Reason{Cause::kept, admission, {}};
  }
  if (admission != Admission::admitted) return Reason{Cause::refused, admission, {}};
  const auto record = entry.mountSmData(systemId);
  const MountState state = record ? record->mountState() : MountState::unmounted;
  if (state == MountState::mounted) return std::nullopt;
  return Reason{state == MountState::failed ? Cause::failed : Cause::inProgress, admission, {}};
}

bool ReportBuilder::isKept(const Controller::MountsRegistryEntrySm& entry,
                           std::size_t index) const {
  if (entry.mountSmData(systemIds_[index])) return false;
  const auto dir = Orm::dynamicCast<Fennix::Dir>(
      world_.rootDir()->lookup(entry.registryEntry()->targetPath().view()));
  return dir && dir->entity().has(systemNames_[index]);
}

Report::Counts ReportBuilder::countsOf(const MissingLines& lines) const {
  Report::Counts counts;
  for (std::size_t at = 0; at != systemIds_.size(); ++at) {
    const auto& worst = lines.worst()[at];
    if (!report_->switches[at].connected) {
      ++counts.notConnected;
    } else if (!worst) {
      ++counts.mounted;
    } else if (worst->cause == Cause::failed) {
      ++counts.failed;
    } else if (worst->cause == Cause::inProgress) {
      ++counts.inProgress;
    } else {
      ++counts.notAdmitted;
    }
  }
  return counts;
}

}  // namespace Fabric
