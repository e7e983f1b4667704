#include "Controllerdb/InitialMountSm/InitialMountSm.h"

#include "Controllerdb/InitialMountSm/InitialMountTrace.h"
#include "Platform/Orm/ActivityManagerConfig.h"

namespace Controller {

using Fennix::Dir;
using Orm::Ptr;
using Orm::String;

Ptr<InitialMountSm> initialMountSmFactory(
    const Ptr<Dir const>& mountConfigDir, const Ptr<Dir>& mountStatusDir,
    const Ptr<ControllerOob::Config const>& oobConfig,
    const Ptr<ControllerOob::Status const>& oobStatus,
    const Ptr<Controllerdb::Status const>& controllerdbStatus) {
  const Orm::ActivityScope scope;
  return Orm::make<InitialMountSm>(mountConfigDir, mountStatusDir, oobConfig, oobStatus,
                                   controllerdbStatus);
}

// ---- construct

InitialMountSm::InitialMountSm(Ptr<Dir const> mountConfigDir, Ptr<Dir> mountStatusDir,
                               Ptr<ControllerOob::Config const> oobConfig,
                               Ptr<ControllerOob::Status const> oobStatus,
                               Ptr<Controllerdb::Status const> controllerdbStatus)
    : mountConfigDir_(std::move(mountConfigDir)),
      mountStatusDir_(std::move(mountStatusDir)),
      oobConfig_(std::move(oobConfig)),
      oobStatus_(std::move(oobStatus)),
      controllerdbStatus_(std::move(controllerdbStatus)),
      ormMountConfigDir_(this),
      ormMountStatusDir_(this),
      peerTable_(this),
      connectionClock_(this) {
  ormMountConfigDir_.notifierIs(mountConfigDir_);
  ormMountStatusDir_.notifierIs(mountStatusDir_);
  if (oobStatus_) peerTableIs(oobStatus_->peerTable());
  handleInitialized();
}

void InitialMountSm::handleInitialized() {
  INITIAL_TRACE(8, "InitialMountSm::", "handleInitialized");
  initialized_ = true;
  initialSwitchSetIs();
  connectionPeriodIs();
  connectionClockIs(Orm::ActivityManagerConfig::instance()->clock());
  connectionClock_.timeMinIs(Orm::kNever);
  handlePeer();
  handleServiceMount();
}

void InitialMountSm::hasNotificationActiveIs(bool active) {
  ormMountConfigDir_.hasNotificationActiveIs(active);
  ormMountStatusDir_.hasNotificationActiveIs(active);
  peerTable_.hasNotificationActiveIs(active);
  connectionClock_.hasNotificationActiveIs(active);
  for (const auto& service : serviceInitialMountSm_) service->hasNotificationActiveIs(active);
}

const Ptr<ConnectionPeriod>& InitialMountSm::connectionPeriodIs() {
  if (!connectionPeriod_) connectionPeriod_ = Orm::make<ConnectionPeriod>();
  return connectionPeriod_;
}

const Ptr<InitialSwitchSet>& InitialMountSm::initialSwitchSetIs() {
  if (!initialSwitchSet_) initialSwitchSet_ = Orm::make<InitialSwitchSet>();
  return initialSwitchSet_;
}

Ptr<Heartbeat::Config const> InitialMountSm::heartbeatConfig() const {
  if (!oobConfig_) return nullptr;
  return oobConfig_->heartbeatConfig();
}

Orm::Seconds InitialMountSm::heartbeatInterval() const {
  const Ptr<Heartbeat::Config const> config = heartbeatConfig();
  return config ? config->heartbeatInterval() : 0.0;
}

// ---- react

void InitialMountSm::OrmServiceDir::onAttribute(Orm::AttributeId attribute, const Orm::Key& key) {
  if (attribute == Dir::Attr::entity) owner()->handleServiceMount(key.as<String>());
}

void InitialMountSm::OrmPeerTable::onAttribute(Orm::AttributeId attribute, const Orm::Key& key) {
  if (attribute == PeerTable::Attr::peer) owner()->handlePeer(key.as<SystemId>());
}

void InitialMountSm::handlePeer() {
  INITIAL_TRACE(8, "InitialMountSm::", "handlePeer");
  const Ptr<PeerTable const> table(peerTable_.notifier());
  if (!table) return;
  table->peer().walk([this](const Peer& peer) { handlePeer(peer.systemId()); });
}

void InitialMountSm::handlePeer(const SystemId& systemId) {
  static constexpr char kSignature[] =
      "void Controller::InitialMountSm::handlePeer(const Controller::SystemId&)";
  if (!initialized_) return;
  INITIAL_TRACE(8, "InitialMountSm::", "handlePeer", " ", systemId);
  const PeerTable* const table = peerTable_.notifier();
  if (!table || !table->peer(systemId)) return;
  InitialSwitchSet& initial = *initialSwitchSetIs();
  if (initial.initialSwitch().value(systemId)) {
    INITIAL_MESSAGE(5, kSignature, "already in initial switch set");
    return;
  }
  initial.initialSwitchIs(systemId, true);
  const Orm::Clock* const clock = connectionClock_.notifier();
  if (!clock) return;
  // A switch that is new after the period's end moves the clock as well; the end stands.
  connectionClock_.timeMinIs(clock->now() + kTimeoutHeartbeatMultiple * heartbeatInterval());
  INITIAL_MESSAGE(5, kSignature, "reset timeMin to %s", connectionClock_.timeMin());
}

void InitialMountSm::handleConnectionTimeout() {
  // It reads as disarmed when it has fired.
  const Orm::Seconds timeMin = connectionClock_.dueTime();
  ConnectionPeriod& period = *connectionPeriodIs();
  INITIAL_TRACE(8, "InitialMountSm::", "handleConnectionTimeout", ": timeMin=", timeMin,
                " connection period complete=", period.complete());
  if (connectionClock_.timeMin() == 0.0) return;  // never armed
  if (period.complete()) return;
  INITIAL_MESSAGE(5, "void Controller::InitialMountSm::handleConnectionTimeout()",
                  "initial switch set complete");
  if (const PeerTable* const table = peerTable_.notifier()) {
    const auto connected = Orm::make<InitialSwitchSet>();
    connected->snapshotIs(*table);
    period.connectedAtEndIs(connected);
  }
  period.completeIs(true);
}

void InitialMountSm::handleServiceMount() {
  INITIAL_TRACE(8, "InitialMountSm::", "handleServiceMount");
  if (!initialized_ || !mountConfigDir_) return;
  mountConfigDir_->entity().walk(
      [this](const String& name, const Ptr<Orm::Entity>&) { handleServiceMount(name); });
}

void InitialMountSm::handleServiceMount(const String& name) {
  INITIAL_TRACE(8, "InitialMountSm::", "handleServiceMount", ": ", name);
  if (!initialized_) return;
  Ptr<ServiceMountConfig const> config;
  Ptr<ServiceMountStatus> status;
  if (mountConfigDir_) config = mountConfigDir_->entityAs<ServiceMountConfig const>(name);
  if (mountStatusDir_) status = mountStatusDir_->entityAs<ServiceMountStatus>(name);
  const bool present = serviceInitialMountSm_.has(name);
  if (config && status) {
    if (present) return;
    INITIAL_TRACE(8, "handleServiceMount", "(", name, "): creating serviceInitialMountSm");
    serviceInitialMountSmIs(name, config, status, connectionPeriodIs(), oobStatus_,
                            controllerdbStatus_);
  } else if (present) {
    INITIAL_TRACE(8, "handleServiceMount", "(", name, "): deleting serviceInitialMountSm");
    serviceInitialMountSmDel(name);
  }
}

// ---- children

Ptr<ServiceInitialMountSm> InitialMountSm::serviceInitialMountSmIs(
    const String& name, const Ptr<ServiceMountConfig const>& config,
    const Ptr<ServiceMountStatus>& status, const Ptr<ConnectionPeriod const>& connectionPeriod,
    const Ptr<ControllerOob::Status const>& oobStatus,
    const Ptr<Controllerdb::Status const>& controllerdbStatus) {
  if (ServiceInitialMountSm* present = serviceInitialMountSm_.find(name)) return present;
  return Orm::childIs(serviceInitialMountSm_,
                      serviceInitialMountSmFactory(name, config, status, connectionPeriod,
                                                   oobStatus, controllerdbStatus));
}

void InitialMountSm::serviceInitialMountSmDel(const String& name) {
  const Ptr<ServiceInitialMountSm> gone = serviceInitialMountSm_.take(name);
  if (gone) gone->doCleanup();
}

// ---- clean up

InitialMountSm::~InitialMountSm() {
  const Orm::ActivityScope scope;
  initialized_ = false;
  hasNotificationActiveIs(false);
  serviceInitialMountSm_.walk(
      [this](ServiceInitialMountSm& service) { serviceInitialMountSmDel(service.key()); });
}

}  // namespace Controller
