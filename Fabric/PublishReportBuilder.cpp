#include "Fabric/PublishReportBuilder.h"

#include <utility>

#include "Fabric/DocumentTime.h"
#include "Fabric/StaleGeneration.h"

namespace Fabric {

using Controller::Admission;
using Controller::PublishRegistryEntrySm;
using Orm::String;
using Cause = Report::Cause;

namespace {

/// When the entry's machine looks for the local entity again; nothing: it does not.
std::optional<Orm::Seconds> nextLook(const PublishRegistryEntrySm& entry) {
  const Orm::Seconds time = entry.entityPresenceCheckClockTimeMin();
  if (time == Orm::kNever) return std::nullopt;
  return documentTime(time);
}

}  // namespace

void PublishReportBuilder::build(Report& report) {
  report_ = &report;
  for (const auto& slot : world_.publishConfigDir()->entity()) {
    const auto config = Orm::dynamicCast<Controller::ServicePublishConfig>(slot.value);
    if (!config) continue;
    for (const auto& group : config->publishGroupConfig()) addGroup(slot.key, *config, *group);
  }
}

Report::Readiness PublishReportBuilder::readinessOf(const String& serviceName) const {
  if (world_.publishStatus()->servicePublishReady().value(serviceName)) {
    return Report::Readiness::ready;
  }
  return world_.mountsRegistry()->servicePublishReady().value(serviceName)
             ? Report::Readiness::heldBack
             : Report::Readiness::notReady;
}

std::string PublishReportBuilder::whyNotInForce(
    const String& service, const Controller::ServicePublishConfig& config,
    const Controller::ServicePublishGroupConfig& group) const {
  if (group.publishConfig().empty() && group.publishDir().empty()) return "the group has no paths";
  if (config.serviceName().empty()) return "the configuration has no service name";
  const auto* const machine =
      machines_.serviceConfigDirSm()->servicePublishConfigSm().find(service);
  if (!machine) return "the service has no publish status";
  if (!machine->publishGroupSm().has(group.groupName())) return "the group was not taken up";
  if (machine->canPublish()) return "";
  return staleGeneration(config.genId().str(), report_->leader);
}

void PublishReportBuilder::addGroup(const String& service,
                                    const Controller::ServicePublishConfig& config,
                                    const Controller::ServicePublishGroupConfig& group) {
  Report::PublishGroup added{service.str(),
                             group.groupName().str(),
                             group.publishConfig().size() + group.publishDir().size(),
                             readinessOf(config.serviceName()),
                             whyNotInForce(service, config, group),
                             {},
                             {}};
  if (added.notInForce.empty()) {
    MissingLines lines(systemIds_.size());
    for (const auto& path : group.publishConfig()) {
      addPath(lines, path->path(), config.serviceName());
    }
    for (const auto& dir : group.publishDir()) addPath(lines, dir->path(), config.serviceName());
    added.counts = countsOf(lines);
    added.missing = lines.lines();
  }
  report_->publishGroups.push_back(std::move(added));
}

std::optional<PublishReportBuilder::Reason> PublishReportBuilder::reasonForAll(
    const PublishRegistryEntrySm* entry, const String& serviceName) {
  if (!entry) return Reason{Cause::notRegistered, Admission::undecided, {}};
  const String& holder = entry->publishEntry()->serviceName();
  if (holder == serviceName) return std::nullopt;
  return Reason{Cause::publishedByOther, Admission::undecided, holder.str()};
}

void PublishReportBuilder::addPath(MissingLines& lines, const String& path,
                                   const String& serviceName) const {
  const auto* const entry = machines_.mountsRegistrySm()->publishRegistryEntrySm().find(path);
  const std::optional<Reason> forAll = reasonForAll(entry, serviceName);
  // What holds the path up without any switch is said also when there is none.
  if (forAll) {
    lines.noteForAll(*forAll);
  } else if (const auto look = nextLook(*entry)) {
    lines.noteForAll({Cause::refused, Admission::entityMissing, {}}, look);
  } else if (!entry->publishEntry()->readyToPublish()) {
    lines.noteForAll({Cause::refused, Admission::notReady, {}});
  }
  for (std::size_t at = 0; at != systemIds_.size(); ++at) {
    if (!report_->switches[at].connected) {
      lines.note({Cause::refused, Admission::notConnected, {}}, at);
    } else if (forAll) {
      lines.note(*forAll, at);
    } else if (const Admission admission = entry->admission(systemIds_[at]);
               admission != Admission::admitted) {
      lines.note({Cause::refused, admission, {}}, at);
    }
  }
  lines.pathEnds(path.str());
}

Report::PublishCounts PublishReportBuilder::countsOf(const MissingLines& lines) const {
  Report::PublishCounts counts;
  for (std::size_t at = 0; at != systemIds_.size(); ++at) {
    const auto& worst = lines.worst()[at];
    if (!report_->switches[at].connected) {
      ++counts.notConnected;
    } else if (!worst) {
      ++counts.published;
    } else if (waitsForLocal(worst->cause, worst->admission)) {
      ++counts.waiting;
    } else {
      ++counts.notAdmitted;
    }
  }
  return counts;
}

}  // namespace Fabric
