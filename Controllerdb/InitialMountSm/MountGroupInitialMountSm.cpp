#include "Controllerdb/InitialMountSm/MountGroupInitialMountSm.h"

#include <string>
#include <vector>

#include "Controllerdb/InitialMountSm/InitialMountTrace.h"
#include "Controllerdb/InitialMountSm/PassiveConnections.h"
#include "Platform/NboAttrLog/DemuxerManager.h"
#include "Platform/Orm/ActivityManagerConfig.h"

namespace Controller {

using Orm::Ptr;
using Orm::String;

namespace {

/// The mount side does nothing further about a group that has come this far by itself.
bool isFinal(MountState state) {
  return state == MountState::failed || state == MountState::mounted;
}

}  // namespace

Ptr<MountGroupInitialMountSm> mountGroupInitialMountSmFactory(
    const String& name, const Ptr<ServiceMountStatus>& serviceMountStatus,
    const Ptr<ControllerOob::Status const>& oobStatus,
    const Ptr<ConnectionPeriod const>& connectionPeriod) {
  return Orm::make<MountGroupInitialMountSm>(name, serviceMountStatus, oobStatus, connectionPeriod);
}

// ---- construct

MountGroupInitialMountSm::MountGroupInitialMountSm(
    String name, Ptr<ServiceMountStatus> serviceMountStatus,
    Ptr<ControllerOob::Status const> oobStatus, const Ptr<ConnectionPeriod const>& connectionPeriod)
    : name_(std::move(name)),
      serviceMountStatus_(std::move(serviceMountStatus)),
      oobStatus_(std::move(oobStatus)),
      connectionPeriod_(this),
      ormServiceMountStatus_(this),
      processedSwitchSet_(this),
      mountClock_(this),
      attrlogFlushTimer_(this) {
  connectionPeriod_.notifierIs(connectionPeriod);
}

void MountGroupInitialMountSm::start() {
  ormServiceMountStatus_.notifierIs(serviceMountStatus_);
  handleInitialized();
}

void MountGroupInitialMountSm::handleInitialized() {
  INITIAL_TRACE(8, "MountGroupInitialMountSm::", "handleInitialized");
  const Ptr<Orm::Clock>& clock = Orm::ActivityManagerConfig::instance()->clock();
  mountClockIs(clock);
  mountClock_.timeMinIs(Orm::kNever);
  attrlogFlushTimerIs(clock);
  attrlogFlushTimer_.timeMinIs(Orm::kNever);
  mountGroupInitialSwitchSetIs();
  processedSwitchSetIs(processedSwitchSetInternalIs());
  initialized_ = true;
  handleConnectionPeriodComplete();
  handleSystemStatus();
}

void MountGroupInitialMountSm::hasNotificationActiveIs(bool active) {
  connectionPeriod_.hasNotificationActiveIs(active);
  ormServiceMountStatus_.hasNotificationActiveIs(active);
  processedSwitchSet_.hasNotificationActiveIs(active);
  mountClock_.hasNotificationActiveIs(active);
  attrlogFlushTimer_.hasNotificationActiveIs(active);
  for (const auto& system : systemProcessedSm_) system->hasNotificationActiveIs(active);
  for (const auto& remaining : remainingSwitch_) remaining->hasNotificationActiveIs(active);
  for (const auto& others : otherGroups_) others->notificationActiveIs(active);
}

const Ptr<InitialSwitchSet const>& MountGroupInitialMountSm::mountGroupInitialSwitchSetIs() {
  if (!mountGroupInitialSwitchSet_) mountGroupInitialSwitchSet_ = Orm::make<InitialSwitchSet>();
  return mountGroupInitialSwitchSet_;
}

const Ptr<ProcessedSwitchSet>& MountGroupInitialMountSm::processedSwitchSetInternalIs() {
  if (!processedSwitchSetInternal_) processedSwitchSetInternal_ = Orm::make<ProcessedSwitchSet>();
  return processedSwitchSetInternal_;
}

// ---- wait for the connection period, and for the switches to be processed

void MountGroupInitialMountSm::OrmConnectionPeriod::onAttribute(Orm::AttributeId attribute,
                                                                const Orm::Key&) {
  if (attribute == ConnectionPeriod::Attr::complete) owner()->handleConnectionPeriodComplete();
}

void MountGroupInitialMountSm::OrmServiceMountStatus::onAttribute(Orm::AttributeId attribute,
                                                                  const Orm::Key& key) {
  if (attribute == ServiceMountStatus::Attr::systemStatus) {
    owner()->handleSystemStatus(key.as<String>());
  }
}

void MountGroupInitialMountSm::OrmProcessedSwitchSet::onAttribute(Orm::AttributeId attribute,
                                                                  const Orm::Key& key) {
  if (attribute == ProcessedSwitchSet::Attr::processed) {
    owner()->handleProcessed(key.as<String>());
  }
}

void MountGroupInitialMountSm::handleConnectionPeriodComplete() {
  const bool complete = connectionPeriod_.notifier()->complete();
  INITIAL_TRACE(8, "MountGroupInitialMountSm::", "handleConnectionPeriodComplete", " ", complete);
  if (!complete || !initialized_) return;
  mountGroupInitialSwitchSet_ = snapshot();
  processedSwitchSetInternal_->processedReserve(
      mountGroupInitialSwitchSet_->initialSwitch().size());
  handleProcessed();
}

/// Of the peers as they are now. Mostly they are those that were there when the period ended, and
/// there may be as many groups as there are services, with thousands of switches each.
Ptr<InitialSwitchSet const> MountGroupInitialMountSm::snapshot() const {
  const Ptr<PeerTable> table = peerTable();
  const Ptr<InitialSwitchSet const>& atEnd = connectionPeriod_.notifier()->connectedAtEnd();
  if (table && atEnd && atEnd->isSnapshotOf(*table)) return atEnd;
  const auto own = Orm::make<InitialSwitchSet>();
  if (table) own->snapshotIs(*table);
  own->completeIs(true);
  return own;
}

void MountGroupInitialMountSm::handleSystemStatus() {
  INITIAL_TRACE(8, "MountGroupInitialMountSm::", "handleSystemStatus");
  serviceMountStatus_->systemStatus().walk(
      [this](const SystemStatus& status) { handleSystemStatus(status.name()); });
}

void MountGroupInitialMountSm::handleSystemStatus(const String& systemName) {
  const Ptr<SystemStatus const> status(serviceMountStatus_->systemStatus(systemName));
  INITIAL_MESSAGE(8, "void Controller::MountGroupInitialMountSm::handleSystemStatus(const String&)",
                  "%s %s exists=%s", systemName, name_, status != nullptr);
  if (!initialized_) return;
  if (status) {
    systemProcessedSmIs(systemName, name_, status, processedSwitchSetInternal_);
  } else {
    systemProcessedSmDel(systemName);
  }
}

void MountGroupInitialMountSm::handleProcessed(const String& systemName) {
  const ProcessedSwitchSet* const set = processedSwitchSet_.notifier();
  const bool processed = set && set->processed().value(systemName);
  INITIAL_MESSAGE(8, "void Controller::MountGroupInitialMountSm::handleProcessed(const String&)",
                  "%s processed=%s", systemName, processed);
  if (!processed) return;
  // Its machine has done what there was to do. Who made this call may be part of it.
  const Orm::ActivityScope scope;
  systemProcessedSmDel(systemName);
  handleProcessed();
}

void MountGroupInitialMountSm::handleProcessed() {
  const bool complete = mountGroupInitialSwitchSet_->complete();
  INITIAL_MESSAGE(8, "void Controller::MountGroupInitialMountSm::handleProcessed()",
                  "groupName: %s complete=%s", name_, complete);
  if (!complete || !initialized_) return;
  if (serviceMountStatus_->initialMountsComplete().value(name_)) return;
  if (!remainingSwitch_.empty()) return;
  // Counts are compared, not members.
  const ProcessedSwitchSet* const set = processedSwitchSet_.notifier();
  const std::uint32_t processed = set ? set->processed().size() : 0;
  if (mountGroupInitialSwitchSet_->initialSwitch().size() > processed) return;
  doPopulateRemainingSwitch();
  checkSwitchMountsPending();
}

// ---- wait for the outstanding mounts

void MountGroupInitialMountSm::doPopulateRemainingSwitch() {
  INITIAL_TRACE(8, "MountGroupInitialMountSm::", "doPopulateRemainingSwitch");
  mountGroupInitialSwitchSet_->initialSwitch().walk(
      [this](const SystemId& systemId, bool) { doPopulateRemainingSwitch(systemId); });
  if (remainingSwitch_.empty()) {
    handleMountTimeout();
  } else if (const Orm::Clock* const clock = mountClock_.notifier()) {
    mountClock_.timeMinIs(clock->now() + kMountWindow);
  }
}

void MountGroupInitialMountSm::doPopulateRemainingSwitch(const SystemId& systemId) {
  // A peer knows its name, which would have to be formatted otherwise.
  const PeerTable* const table = oobStatus_ ? oobStatus_->peerTable().get() : nullptr;
  const Peer* const peer = table ? table->peer(systemId) : nullptr;
  const SystemStatus* const system =
      serviceMountStatus_->systemStatus(peer ? peer->name() : systemId.stringValue());
  if (!system) return;
  // A switch without a status for the group owes it nothing.
  const ServiceMountGroupStatus* const group = system->serviceMountGroupStatus(name_);
  if (!group || group->mountStatus().empty() || isFinal(group->mountState())) return;
  INITIAL_MESSAGE(5, "void Controller::MountGroupInitialMountSm::doPopulateRemainingSwitch()",
                  "Adding remaining switch: %s", systemId);
  remainingSwitchIs(Ptr<SystemStatus const>(system));
}

MountGroupInitialMountSm::OrmRemainingSwitch::OrmRemainingSwitch(
    MountGroupInitialMountSm* owner, Ptr<SystemStatus const> systemStatus)
    : Reactor(owner), systemStatus_(std::move(systemStatus)) {
  handleServiceMountGroupStatus();
}

void MountGroupInitialMountSm::OrmRemainingSwitch::handleServiceMountGroupStatus() {
  const ServiceMountGroupStatus* const group =
      systemStatus_->serviceMountGroupStatus(owner().name());
  watchedIs(group ? Ptr<Orm::Entity const>(group) : Ptr<Orm::Entity const>(systemStatus_));
}

void MountGroupInitialMountSm::OrmRemainingSwitch::onAttribute(Orm::AttributeId attribute,
                                                               const Orm::Key&) {
  if (watched() == systemStatus_.get()) {
    if (attribute == SystemStatus::Attr::serviceMountGroupStatus) handleServiceMountGroupStatus();
  } else if (attribute == ServiceMountGroupStatus::Attr::mountState) {
    handleMountState();
  } else if (attribute == ServiceMountGroupStatus::Attr::left) {
    handleServiceMountGroupStatus();
  }
}

void MountGroupInitialMountSm::OrmRemainingSwitch::handleMountState() {
  // From any other state nothing but a trace follows, and a group comes through several.
  if (isFinal(serviceMountGroupStatus()->mountState()) || initialMountTrace.enabled(8)) {
    owner().handleMountState(systemName(), owner().name());
  }
}

void MountGroupInitialMountSm::OrmOtherGroups::onNotifier() {
  notifier()->serviceMountGroupStatus().walk([this](const ServiceMountGroupStatus& group) {
    handleServiceMountGroupStatus(group.groupName());
  });
}

void MountGroupInitialMountSm::OrmOtherGroups::onAttribute(Orm::AttributeId attribute,
                                                           const Orm::Key& key) {
  if (attribute != SystemStatus::Attr::serviceMountGroupStatus) return;
  handleServiceMountGroupStatus(key.as<String>());
}

void MountGroupInitialMountSm::OrmOtherGroups::handleServiceMountGroupStatus(
    const String& groupName) {
  if (groupName == owner()->name()) {
    // It would see by itself, but in another turn among those that trace what the new status does.
    OrmRemainingSwitch* const own = owner()->remainingSwitch().find(systemName());
    if (own) own->handleServiceMountGroupStatus();
    return;
  }
  const Orm::ActivityScope scope;
  const Ptr<ServiceMountGroupStatus const> status(notifier()->serviceMountGroupStatus(groupName));
  const auto* const present = groups_.find(groupName);
  if (present && present->notifier() == status.get()) return;
  groups_.take(groupName);
  if (!status) return;
  Orm::Owned<OrmServiceMountGroupStatus> group(new OrmServiceMountGroupStatus(this));
  group->notifierIs(status);
  groups_.insert(std::move(group));
}

void MountGroupInitialMountSm::OrmOtherGroups::notificationActiveIs(bool active) {
  hasNotificationActiveIs(active);
  for (const auto& group : groups_) group->hasNotificationActiveIs(active);
}

void MountGroupInitialMountSm::OrmOtherGroups::OrmServiceMountGroupStatus::onAttribute(
    Orm::AttributeId attribute, const Orm::Key&) {
  if (attribute == ServiceMountGroupStatus::Attr::mountState) {
    owner()->handleMountState(groupName());
  }
}

void MountGroupInitialMountSm::OrmOtherGroups::handleMountState(const String& groupName) {
  if (!isDeleted()) owner()->handleMountState(systemName(), groupName);
}

void MountGroupInitialMountSm::remainingSwitchIs(const Ptr<SystemStatus const>& systemStatus) {
  if (remainingSwitch_.has(systemStatus->name())) return;
  remainingSwitch_.insert(
      Orm::Owned<OrmRemainingSwitch>(new OrmRemainingSwitch(this, systemStatus)));
  if (!initialMountTrace.enabled(8)) return;
  Orm::Owned<OrmOtherGroups> others(new OrmOtherGroups(this));
  others->notifierIs(systemStatus);
  otherGroups_.insert(std::move(others));
}

void MountGroupInitialMountSm::remainingSwitchDel(const String& systemName) {
  otherGroups_.take(systemName);
  remainingSwitch_.take(systemName, lastRemaining_);
}

void MountGroupInitialMountSm::remainingSwitchDelAll() {
  otherGroups_.clear();
  remainingSwitch_.clear();
}

void MountGroupInitialMountSm::handleMountState() {
  INITIAL_TRACE(8, "MountGroupInitialMountSm::", "handleMountState");
  if (!connectionPeriod_.notifier()->complete()) {
    INITIAL_TRACE(8, "MountGroupInitialMountSm::", "handleMountState",
                  ": initial switch set not yet complete");
    return;
  }
  remainingSwitch_.walk([this](const OrmRemainingSwitch& remaining) {
    handleMountState(remaining.systemName(), name_);
  });
}

void MountGroupInitialMountSm::handleMountState(const String& systemName, const String& groupName) {
  INITIAL_TRACE(8, "MountGroupInitialMountSm::", "handleMountState", systemName, " ", groupName);
  if (!connectionPeriod_.notifier()->complete()) return;
  const OrmRemainingSwitch* const remaining = remainingSwitch_.find(systemName, lastRemaining_);
  if (!remaining) {
    INITIAL_TRACE(8, "handleMountState", ": ", systemName, " not in remaining.");
    return;
  }
  if (groupName != name_) return;
  const ServiceMountGroupStatus* const group = remaining->serviceMountGroupStatus();
  if (!group || !isFinal(group->mountState())) return;
  const Orm::ActivityScope scope;
  const String system = systemName;  // may be the remaining switch's own
  INITIAL_MESSAGE(5,
                  "void Controller::MountGroupInitialMountSm::handleMountState(const String&, "
                  "const String&)",
                  "handleMountState: deleting remaining switch %s", system);
  remainingSwitchDel(system);
  checkSwitchMountsPending();
}

void MountGroupInitialMountSm::handleMountTimeout() {
  if (!initialized_) return;
  INITIAL_MESSAGE(5, "void Controller::MountGroupInitialMountSm::handleMountTimeout()", "");
  remainingSwitchDelAll();
  checkSwitchMountsPending();
}

void MountGroupInitialMountSm::checkSwitchMountsPending() {
  INITIAL_TRACE(8, "MountGroupInitialMountSm::", "checkSwitchMountsPending");
  if (!initialized_ || !remainingSwitch_.empty()) return;
  if (!connectionPeriod_.notifier()->complete()) return;
  INITIAL_TRACE(8, "checkSwitchMountsPending", ": no remaining switches");
  mountClock_.timeMinIs(Orm::kNever);
  localInitialMountsCompleteIs(true);
}

// ---- wait for the attribute log, and report

void MountGroupInitialMountSm::localInitialMountsCompleteIs(bool complete) {
  if (complete == localInitialMountsComplete_) return;
  localInitialMountsComplete_ = complete;
  handleInitialMountsComplete();
}

void MountGroupInitialMountSm::handleInitialMountsComplete() {
  INITIAL_MESSAGE(8, "void Controller::MountGroupInitialMountSm::handleInitialMountsComplete()",
                  "");
  flushLocalPassiveEntityLogs();
  attrlogFlushRemainingTime_ = kAttrlogFlushTimeout;
  handleAttrlogFlushTimer();
}

void MountGroupInitialMountSm::flushLocalPassiveEntityLogs() {
  const Ptr<Orm::NboAttrLog::DemuxerManager> manager = Orm::globalNboAttrLogDemuxerManager();
  std::vector<std::string> connections;
  getPassiveConnectionsList(connections);
  for (const std::string& name : connections) {
    const Ptr<Orm::NboAttrLog::Demuxer> demuxer(manager->demuxer(name));
    if (!demuxer || demuxer->connectStatus() != Orm::NboAttrLog::In::Status::connected) continue;
    INITIAL_MESSAGE(5, "void Controller::MountGroupInitialMountSm::handleInitialMountsComplete()",
                    "flushLocalPassiveEntityLogs: Flushing Demuxer: %s", name);
    const Ptr<Orm::MountTable>& mountTable = demuxer->mountTable();
    mountTable->nextRoundIs(mountTable->nextRound() + 1);
  }
}

bool MountGroupInitialMountSm::isLocalPassiveCurrentRoundSyncComplete() {
  static constexpr char kSignature[] =
      "void Controller::MountGroupInitialMountSm::handleAttrlogFlushTimer()";
  const Ptr<Orm::NboAttrLog::DemuxerManager> manager = Orm::globalNboAttrLogDemuxerManager();
  std::vector<std::string> connections;
  getPassiveConnectionsList(connections);
  bool allSynced = true;
  for (const std::string& name : connections) {
    const Ptr<Orm::NboAttrLog::Demuxer> demuxer(manager->demuxer(name));
    if (!demuxer) {
      INITIAL_MESSAGE(5, kSignature, "isLocalPassiveCurrentRoundSyncComplete: No Demuxer for:%s",
                      name);
      continue;
    }
    const Orm::NboAttrLog::In::Status status = demuxer->connectStatus();
    const std::uint64_t nextRound = demuxer->mountTable()->nextRound();
    INITIAL_MESSAGE(5, kSignature,
                    "isLocalPassiveCurrentRoundSyncComplete: Demuxer:%s connectStatus:%s "
                    "round:%s nextRound:%s",
                    name, static_cast<unsigned>(status), demuxer->round(), nextRound);
    if (status == Orm::NboAttrLog::In::Status::connected && demuxer->round() != nextRound) {
      allSynced = false;
    }
  }
  return allSynced;
}

void MountGroupInitialMountSm::handleAttrlogFlushTimer() {
  if (!initialized_) return;
  INITIAL_MESSAGE(5, "void Controller::MountGroupInitialMountSm::handleAttrlogFlushTimer()", "");
  const bool allSynced = isLocalPassiveCurrentRoundSyncComplete();
  const bool timedOut = attrlogFlushRemainingTime_ <= 0;
  if (allSynced || timedOut) {
    INITIAL_TRACE(8, "MountGroupInitialMountSm::", "handleAttrlogFlushTimer", " Attrlog flush ",
                  timedOut ? "timed out" : "completed", " for ", serviceMountStatus_->serviceName(),
                  ":", name_);
    const Orm::ActivityScope scope;
    attrlogFlushTimer_.timeMinIs(Orm::kNever);
    if (const Orm::Clock* const clock = attrlogFlushTimer_.notifier()) completeAt_ = clock->now();
    serviceMountStatus_->initialMountsCompleteIs(name_, true);
    return;
  }
  INITIAL_TRACE(8, "MountGroupInitialMountSm::", "handleAttrlogFlushTimer",
                " Attrlog flush not complete yet, remaining time until timeout: ",
                attrlogFlushRemainingTime_);
  if (const Orm::Clock* const clock = attrlogFlushTimer_.notifier()) {
    attrlogFlushTimer_.timeMinIs(clock->now() + kAttrlogFlushWaitPeriod);
  }
  attrlogFlushRemainingTime_ -= kAttrlogFlushWaitPeriod;
}

// ---- children

Ptr<SystemProcessedSm> MountGroupInitialMountSm::systemProcessedSmIs(
    const String& systemName, const String& groupName, const Ptr<SystemStatus const>& systemStatus,
    const Ptr<ProcessedSwitchSet>& processedSwitchSet) {
  if (SystemProcessedSm* present = systemProcessedSm_.find(systemName)) return present;
  Ptr<SystemProcessedSm> machine =
      systemProcessedSmFactory(systemName, groupName, systemStatus, processedSwitchSet);
  // Making it may have been the group's last step, and the end of the machine, or of what is there;
  // or it has done already what there was to do.
  const ServiceMountGroupStatus* const group = systemStatus->serviceMountGroupStatus(groupName);
  const bool isDone = group && group->processed();
  if (initialized_ && !isDone && !systemProcessedSm_.has(systemName)) {
    systemProcessedSm_.insert(machine);
  }
  return machine;
}

// ---- clean up

void MountGroupInitialMountSm::doCleanup() {
  INITIAL_TRACE(8, "MountGroupInitialMountSm::", "doCleanup", " ",
                serviceMountStatus_ ? serviceMountStatus_->serviceName() : String(), ":", name_);
  const Orm::ActivityScope scope;
  initialized_ = false;  // a handler that is on the stack does nothing further
  hasNotificationActiveIs(false);
  mountClock_.timeMinIs(Orm::kNever);
  attrlogFlushTimer_.timeMinIs(Orm::kNever);
  remainingSwitchDelAll();
  systemProcessedSmDelAll();
  if (serviceMountStatus_) serviceMountStatus_->initialMountsCompleteDel(name_);
}

}  // namespace Controller
