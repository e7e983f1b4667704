#include "Controllerdb/MountsRegistry/ConnectionServiceStatusDirSm.h"

#include "Controllerdb/MountsRegistry/MountsRegistrySm.h"
#include "Controllerdb/MountsRegistry/MountsRegistryTrace.h"

namespace Controller {

using Orm::Ptr;
using Orm::String;

Ptr<ConnectionServiceStatusDirSm> connectionServiceStatusDirSmFactory(
    const String& connectionName, const Ptr<ServiceStatusDir const>& serviceStatusDir,
    MountsRegistrySm* mountsRegistrySm, const Ptr<Peer const>& peer) {
  return Orm::make<ConnectionServiceStatusDirSm>(connectionName, serviceStatusDir, mountsRegistrySm,
                                                 peer);
}

// ---- construct

ConnectionServiceStatusDirSm::ConnectionServiceStatusDirSm(
    const String& connectionName, const Ptr<ServiceStatusDir const>& serviceStatusDir,
    MountsRegistrySm* mountsRegistrySm, Ptr<Peer const> peer)
    : connection_(connectionName),
      peer_(std::move(peer)),
      mountsRegistrySm_(mountsRegistrySm),
      serviceStatusDir_(this) {
  serviceStatusDir_.notifierIs(serviceStatusDir);
}

void ConnectionServiceStatusDirSm::start() {
  if (const Ptr<ServiceStatusDir const> dir{serviceStatusDir_.notifier()}) {
    dir->service().walk(
        [this](ServiceStatusV1& status) { serviceStatusIs(Ptr<ServiceStatusV1 const>(&status)); });
  }
  handleInitialized();
}

void ConnectionServiceStatusDirSm::handleInitialized() { initialized_ = true; }

void ConnectionServiceStatusDirSm::hasNotificationActiveIs(bool active) {
  serviceStatusDir_.hasNotificationActiveIs(active);
  for (const auto& status : serviceStatus_) status->notificationActiveIs(active);
}

void ConnectionServiceStatusDirSm::OrmServiceStatus::notificationActiveIs(bool active) {
  hasNotificationActiveIs(active);
  versionStatus_.hasNotificationActiveIs(active);
}

// ---- react

void ConnectionServiceStatusDirSm::OrmControllerServiceStatusDir::onAttribute(
    Orm::AttributeId attribute, const Orm::Key& key) {
  if (attribute != ServiceStatusDir::Attr::service) return;
  const auto& name = key.as<String>();
  if (const Ptr<ServiceStatusV1 const> status = notifier()->service(name)) {
    owner()->serviceStatusIs(status);
  } else {
    owner()->serviceStatusDel(name);
  }
}

void ConnectionServiceStatusDirSm::serviceStatusIs(const Ptr<ServiceStatusV1 const>& status) {
  if (cleanedUp_) return;  // by whoever was told of what the service before this one decided
  if (const auto* present = serviceStatus_.find(status->serviceName())) {
    if (present->notifier() == status.get()) return;
    serviceStatus_.take(status->serviceName());  // replaced: the new one is decided below
  }
  const Orm::ActivityScope scope;
  Orm::Owned<OrmServiceStatus> reactor(new OrmServiceStatus(this));
  OrmServiceStatus& made = *reactor;
  made.notifierIs(status);
  serviceStatus_.insert(std::move(reactor));
  made.handleInitialized();
}

void ConnectionServiceStatusDirSm::serviceStatusDel(const String& serviceName) {
  const Orm::ActivityScope scope;
  const Orm::Owned<OrmServiceStatus> gone = serviceStatus_.take(serviceName);
  if (gone) {
    gone->doCleanup();
  } else if (!initialized_) {
    // Whoever was told of what a service before this one decided took it away before its turn, and
    // that decision had counted on it.
    mountsRegistrySm_->handleServiceVersion(serviceName, connection_);
  }
}

void ConnectionServiceStatusDirSm::OrmServiceStatus::onAttribute(Orm::AttributeId attribute,
                                                                 const Orm::Key&) {
  if (attribute == ServiceStatusV1::Attr::enabled) handleEnabled();
  if (attribute == ServiceStatusV1::Attr::versionStatus) {
    versionStatusIs(notifier()->versionStatus());
  }
}

void ConnectionServiceStatusDirSm::OrmVersionStatus::onAttribute(Orm::AttributeId,
                                                                 const Orm::Key&) {
  owner()->handleVersionStatus();  // each of its attributes concerns the version
}

void ConnectionServiceStatusDirSm::OrmVersionStatus::onNotifier() {
  owner()->handleVersionStatus();
}

void ConnectionServiceStatusDirSm::OrmServiceStatus::onNotifier() {
  versionStatusIs(notifier()->versionStatus());
  if (initialized_) handleEnabled();
}

void ConnectionServiceStatusDirSm::OrmServiceStatus::handleInitialized() {
  initialized_ = true;
  handleEnabled();
}

void ConnectionServiceStatusDirSm::OrmServiceStatus::handleEnabled() {
  REGISTRY_TRACE(8, "ConnectionServiceStatusDirSm::", "handleEnabled", owner()->connectionName(),
                 ": ", serviceName(), " enabled: ", notifier()->enabled());
  handleVersionStatus();
}

void ConnectionServiceStatusDirSm::OrmServiceStatus::handleVersionStatus() {
  if (!initialized_) return;
  REGISTRY_TRACE(8, "ConnectionServiceStatusDirSm::", "handleVersionStatus", " ", serviceName(),
                 " ", owner()->connectionName());
  const Ptr<ServiceVersionStatusV1 const> versionStatus = notifier()->versionStatus();
  if (!versionStatus || !versionStatus->reported()) return;
  const Ptr<ServiceStatusV1 const> status(notifier());  // the decisions may let this reactor go
  MountsRegistrySm* const mrSm = owner()->mountsRegistrySm();
  const Connection connection = owner()->connection();
  mrSm->handleServiceVersion(status->serviceName(), connection);
  Orm::assertThat(mrSm->controllerdbPublishStatus(), "mrSm->controllerdbPublishStatus()");
  const Ptr<Controllerdb::SystemPublishedMount> system(
      mrSm->controllerdbPublishStatus()->system(connection.systemId));
  if (system) system->registeredPublishedPathsProcessedIs(status->serviceName(), true);
}

// ---- clean up

void ConnectionServiceStatusDirSm::OrmServiceStatus::doCleanup() {
  REGISTRY_TRACE(8, "ConnectionServiceStatusDirSm::", "doCleanup");
  versionStatusDel();
  handleVersionStatus();
}

void ConnectionServiceStatusDirSm::doCleanup() {
  REGISTRY_TRACE(8, "ConnectionServiceStatusDirSm::", "doCleanup", " ", connection_.name);
  if (cleanedUp_) return;
  cleanedUp_ = true;
  const Orm::ActivityScope scope;
  hasNotificationActiveIs(false);
  serviceStatusDelAll();
  mountsRegistrySm_->handleSwitchConnection(connection_);
}

}  // namespace Controller
