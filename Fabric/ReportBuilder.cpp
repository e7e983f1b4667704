#include "Fabric/ReportBuilder.h"

#include <algorithm>
#include <utility>

#include "Fabric/DocumentTime.h"
#include "Fabric/SimulatedMountSm.h"

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
  if (report_->leader.empty()) return "no leader is known";
  const std::string generation = config.genId().str();
  return (generation.empty() ? "written under no generation" : "written under " + generation) +
         ", the leader's is " + report_->leader;
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
    worst_.assign(systemIds_.size(), std::nullopt);
    missing_.clear();
    for (const auto& path : group.mountConfig()) {
      addPath(path->path(), config, group.groupName());
    }
    finishGroup(added);
  }
  if (!proxy) {
    added.initialMounts = initialMountsOf(*machines_.initialMountSm(), world_, service, group);
  }
  report_->groups.push_back(std::move(added));
}

void ReportBuilder::addPath(const String& path, const Controller::ServiceMountConfig& config,
                            const String& group) {
  auto* const entry = machines_.mountsRegistrySm()->mountsRegistryEntrySm().find(path);
  const Controller::Mounter* const mounter =
      entry ? entry->registryEntry()->mounter(config.serviceName()) : nullptr;
  Reasons reasons;
  for (std::size_t at = 0; at != systemIds_.size(); ++at) {
    const std::optional<Reason> reason =
        !mounter ? Reason{Cause::notRegistered, Admission::undecided, {}}
        : mounter->groupName() != group
            ? Reason{Cause::registeredByOther, Admission::undecided, mounter->groupName().str()}
            : reasonOf(*entry, *mounter, at);
    if (!reason) continue;
    note(reasons, *reason, at,
         hasTimes(reason->cause) ? askedAt(*entry, systemIds_[at]) : std::nullopt);
  }
  addReasons(path, std::move(reasons));
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

void ReportBuilder::note(Reasons& reasons, const Reason& reason, std::size_t index,
                         std::optional<Orm::Seconds> asked) {
  Switches& switches = reasons[reason];
  switches.indices.push_back(static_cast<std::uint32_t>(index));
  if (asked) {
    switches.askedFirst = std::min(switches.askedFirst.value_or(*asked), *asked);
    switches.askedLast = std::max(switches.askedLast.value_or(*asked), *asked);
  }
  auto& worst = worst_[index];
  if (!worst || reason < *worst) worst = reason;
}

void ReportBuilder::addReasons(const String& path, Reasons&& reasons) {
  for (auto& [reason, switches] : reasons) {
    const auto [at, isNew] =
        missing_.try_emplace({reason, std::move(switches.indices)}, Report::Missing());
    Report::Missing& missing = at->second;
    missing.paths.push_back(path.str());
    if (isNew) {
      missing.askedFirst = switches.askedFirst;
      missing.askedLast = switches.askedLast;
    } else if (switches.askedFirst && missing.askedFirst) {
      missing.askedFirst = std::min(*missing.askedFirst, *switches.askedFirst);
      missing.askedLast = std::max(*missing.askedLast, *switches.askedLast);
    }
  }
}

void ReportBuilder::finishGroup(Report::Group& group) {
  for (std::size_t at = 0; at != worst_.size(); ++at) {
    const auto& worst = worst_[at];
    Report::Counts& counts = group.counts;
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
  for (auto& [key, missing] : missing_) {
    missing.cause = key.first.cause;
    missing.admission = key.first.admission;
    missing.otherGroup = key.first.otherGroup;
    missing.switches = key.second;
    group.missing.push_back(std::move(missing));
  }
}

}  // namespace Fabric
