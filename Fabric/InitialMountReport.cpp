#include "Fabric/InitialMountReport.h"

#include <utility>

#include "Controllerdb/InitialMountSm/PassiveConnections.h"
#include "Fabric/DocumentTime.h"
#include "Fabric/JsonText.h"
#include "Platform/NboAttrLog/DemuxerManager.h"

namespace Fabric {

using Controller::InitialMountSm;
using Controller::MountGroupInitialMountSm;
using Controller::MountState;
using Controller::ServiceMountGroupConfig;
using Controller::SystemId;
using Orm::String;
using Phase = InitialMounts::Phase;

namespace {

std::optional<Orm::Seconds> timeOf(Orm::Seconds processTime) {
  if (processTime == Orm::kNever) return std::nullopt;
  return documentTime(processTime);
}

InitialMounts::Switch switchOf(const World& world, const SystemId& systemId) {
  const auto* const client = world.oobStatus()->clientStatusOfSystem(systemId);
  const std::string id = systemId.stringValue().str();
  return {id, client && !client->name().empty() ? client->name().str() : id, {}, false};
}

void addUnprocessed(InitialMounts& mounts, const MountGroupInitialMountSm& machine,
                    const World& world) {
  const auto& processed = machine.processedSwitchSetInternal()->processed();
  for (const auto& slot : machine.mountGroupInitialSwitchSet()->initialSwitch()) {
    if (processed.has(slot.key.stringValue())) continue;
    mounts.switches.push_back(switchOf(world, slot.key));
  }
  mounts.others = processed.size() + mounts.switches.size() - mounts.snapshot;
}

bool isOutstanding(const Controller::ServiceMountGroupStatus& group, const String& path) {
  const auto* const status = group.mountStatus(path);
  return !status || (status->mountState() != MountState::failed &&
                     status->mountState() != MountState::mounted);
}

void addRemaining(InitialMounts& mounts, const MountGroupInitialMountSm& machine,
                  const World& world, const ServiceMountGroupConfig& config) {
  for (const auto& remaining : machine.remainingSwitch()) {
    const Controller::SystemStatus& system = remaining->systemStatus();
    InitialMounts::Switch one = switchOf(world, SystemId::ofName(system.name()));
    one.gone = machine.serviceMountStatus()->systemStatus(system.name()) != &system;
    const auto* const group = system.serviceMountGroupStatus(machine.name());
    for (const auto& mount : config.mountConfig()) {
      if (!one.gone && group && !isOutstanding(*group, mount->path())) continue;
      one.paths.push_back(mount->path().str());
    }
    mounts.switches.push_back(std::move(one));
  }
}

void addConnections(InitialMounts& mounts) {
  std::vector<std::string> names;
  Controller::getPassiveConnectionsList(names);
  for (std::string& name : names) {
    const auto* const demuxer = Orm::globalNboAttrLogDemuxerManager()->demuxer(String(name));
    if (!demuxer || demuxer->connectStatus() != Orm::NboAttrLog::In::Status::connected) continue;
    if (demuxer->round() == demuxer->mountTable()->nextRound()) continue;
    mounts.connections.push_back(std::move(name));
  }
}

std::string seconds(Orm::Seconds time) {
  std::string out;
  appendSeconds(out, time);
  return out + " s";
}

std::string switchList(const InitialMounts& mounts, const ListText& list) {
  std::vector<std::string> names;
  for (const auto& one : mounts.switches) {
    std::string text = one.label;
    if (!one.paths.empty()) text += " (" + list(one.paths) + (one.gone ? "; gone)" : ")");
    names.push_back(std::move(text));
  }
  return list(names);
}

}  // namespace

std::optional<InitialMounts> initialMountsOf(const InitialMountSm& machine, const World& world,
                                             const String& service,
                                             const ServiceMountGroupConfig& group) {
  const auto* const serviceMachine = machine.serviceInitialMountSm().find(service);
  if (!serviceMachine) return std::nullopt;
  const MountGroupInitialMountSm* const groupMachine =
      serviceMachine->mountGroupInitialMountSm().find(group.groupName());
  if (!groupMachine) return std::nullopt;

  InitialMounts mounts;
  mounts.snapshot = groupMachine->mountGroupInitialSwitchSet()->initialSwitch().size();
  if (groupMachine->serviceMountStatus()->initialMountsComplete().value(group.groupName())) {
    mounts.phase = Phase::complete;
    mounts.time = timeOf(groupMachine->completeAt());
  } else if (groupMachine->localInitialMountsComplete()) {
    mounts.phase = Phase::flushing;
    mounts.time = timeOf(groupMachine->attrlogFlushTimer().timeMin() +
                         groupMachine->attrlogFlushRemainingTime());
    addConnections(mounts);
  } else if (!groupMachine->remainingSwitch().empty()) {
    mounts.phase = Phase::mounting;
    mounts.time = timeOf(groupMachine->mountClock().timeMin());
    addRemaining(mounts, *groupMachine, world, group);
  } else if (groupMachine->mountGroupInitialSwitchSet()->complete()) {
    mounts.phase = Phase::processing;
    addUnprocessed(mounts, *groupMachine, world);
  } else {
    mounts.time = timeOf(machine.connectionClock().timeMin());
  }
  return mounts;
}

const char* name(Phase phase) {
  switch (phase) {
    case Phase::connectionPeriod:
      return "connection period";
    case Phase::processing:
      return "processing";
    case Phase::mounting:
      return "mounting";
    case Phase::flushing:
      return "flushing";
    case Phase::complete:
      return "complete";
  }
  return "unknown";
}

std::string phaseText(const InitialMounts& mounts, const ListText& list) {
  switch (mounts.phase) {
    case Phase::connectionPeriod:
      return "waiting for the connection period" +
             (mounts.time ? " until " + seconds(*mounts.time)
                          : std::string(", which begins with the first switch"));
    case Phase::processing: {
      const std::string others =
          mounts.others == 0
              ? ""
              : "; " + std::to_string(mounts.others) + " that came later count in place of as many";
      return "waiting for " + std::to_string(mounts.switches.size()) + " of " +
             std::to_string(mounts.snapshot) +
             " switches to be processed: " + switchList(mounts, list) + others;
    }
    case Phase::mounting:
      return "mounting: " + switchList(mounts, list) +
             (mounts.time ? "; window ends at " + seconds(*mounts.time) : "");
    case Phase::flushing:
      return "flushing: " +
             (mounts.connections.empty() ? "done, to be seen by the next look"
                                         : list(mounts.connections)) +
             (mounts.time ? "; given up at " + seconds(*mounts.time) : "");
    case Phase::complete:
      return "complete" + (mounts.time ? " at " + seconds(*mounts.time) : std::string());
  }
  return "unknown";
}

}  // namespace Fabric
