#include "Controllerdb/InitialMountSm/ServiceInitialMountSm.h"

#include "Controllerdb/InitialMountSm/InitialMountTrace.h"

namespace Controller {

using Orm::Ptr;
using Orm::String;

Ptr<ServiceInitialMountSm> serviceInitialMountSmFactory(
    const String& key, const Ptr<ServiceMountConfig const>& serviceMountConfig,
    const Ptr<ServiceMountStatus>& serviceMountStatus,
    const Ptr<ConnectionPeriod const>& connectionPeriod,
    const Ptr<ControllerOob::Status const>& oobStatus,
    const Ptr<Controllerdb::Status const>& controllerdbStatus) {
  return Orm::make<ServiceInitialMountSm>(key, serviceMountConfig, serviceMountStatus,
                                          connectionPeriod, oobStatus, controllerdbStatus);
}

// ---- construct

ServiceInitialMountSm::ServiceInitialMountSm(String key,
                                             Ptr<ServiceMountConfig const> serviceMountConfig,
                                             Ptr<ServiceMountStatus> serviceMountStatus,
                                             Ptr<ConnectionPeriod const> connectionPeriod,
                                             Ptr<ControllerOob::Status const> oobStatus,
                                             Ptr<Controllerdb::Status const> controllerdbStatus)
    : key_(std::move(key)),
      serviceMountConfig_(std::move(serviceMountConfig)),
      serviceMountStatus_(std::move(serviceMountStatus)),
      connectionPeriod_(std::move(connectionPeriod)),
      oobStatus_(std::move(oobStatus)),
      controllerdbStatus_(std::move(controllerdbStatus)),
      ormControllerdbStatus_(this),
      ormServiceMountConfig_(this) {}

void ServiceInitialMountSm::start() {
  ormControllerdbStatus_.notifierIs(controllerdbStatus_);
  ormServiceMountConfig_.notifierIs(serviceMountConfig_);
  handleInitialized();
}

void ServiceInitialMountSm::handleInitialized() {
  INITIAL_TRACE(8, "ServiceInitialMountSm::", "handleInitialized");
  initialized_ = true;
  handleLeaderGenId();
}

void ServiceInitialMountSm::hasNotificationActiveIs(bool active) {
  ormControllerdbStatus_.hasNotificationActiveIs(active);
  ormServiceMountConfig_.hasNotificationActiveIs(active);
  for (const auto& group : mountGroupInitialMountSm_) group->hasNotificationActiveIs(active);
}

// ---- react

void ServiceInitialMountSm::OrmControllerdbStatus::onAttribute(Orm::AttributeId attribute,
                                                               const Orm::Key&) {
  if (attribute == Controllerdb::Status::Attr::leaderGenId) owner()->handleLeaderGenId();
}

void ServiceInitialMountSm::OrmServiceMountConfig::onAttribute(Orm::AttributeId attribute,
                                                               const Orm::Key& key) {
  if (attribute == ServiceMountConfig::Attr::genId) owner()->handleLeaderGenId();
  if (attribute == ServiceMountConfig::Attr::mountGroupConfig) {
    owner()->handleMountGroupConfig(key.as<String>());
  }
}

bool ServiceInitialMountSm::canHandleMountGroup() {
  const String& genId = serviceMountConfig_->genId();
  const String leaderGenId = controllerdbStatus_ ? controllerdbStatus_->leaderGenId() : String();
  INITIAL_TRACE(8, "ServiceInitialMountSm::", "canHandleMountGroup", " mountConfig genId:", genId,
                " controller genId:", leaderGenId);
  return !leaderGenId.empty() && leaderGenId == genId;
}

void ServiceInitialMountSm::handleLeaderGenId() {
  INITIAL_TRACE(8, "ServiceInitialMountSm::", "handleLeaderGenId", " ",
                serviceMountConfig_->genId());
  if (canHandleMountGroup()) {
    handleMountGroupConfig();
  } else {
    mountGroupInitialMountSmDelAll();
  }
}

void ServiceInitialMountSm::handleMountGroupConfig() {
  serviceMountConfig_->mountGroupConfig().walk(
      [this](const ServiceMountGroupConfig& group) { handleMountGroupConfig(group.groupName()); });
}

void ServiceInitialMountSm::handleMountGroupConfig(const String& groupName) {
  if (!initialized_ || !canHandleMountGroup()) return;
  INITIAL_TRACE(8, "ServiceInitialMountSm::", "handleMountGroupConfig", " ", groupName);
  if (serviceMountConfig_->mountGroupConfig(groupName)) {
    INITIAL_TRACE(8, "handleMountGroupConfig", ": adding mountGroupInitialMountSm");
    mountGroupInitialMountSmIs(groupName, serviceMountStatus_, oobStatus_, connectionPeriod_);
  } else {
    mountGroupInitialMountSmDel(groupName);
  }
}

// ---- children

Ptr<MountGroupInitialMountSm> ServiceInitialMountSm::mountGroupInitialMountSmIs(
    const String& groupName, const Ptr<ServiceMountStatus>& serviceMountStatus,
    const Ptr<ControllerOob::Status const>& oobStatus,
    const Ptr<ConnectionPeriod const>& connectionPeriod) {
  if (MountGroupInitialMountSm* present = mountGroupInitialMountSm_.find(groupName)) {
    return present;
  }
  return Orm::childIs(
      mountGroupInitialMountSm_,
      mountGroupInitialMountSmFactory(groupName, serviceMountStatus, oobStatus, connectionPeriod));
}

void ServiceInitialMountSm::mountGroupInitialMountSmDel(const String& groupName) {
  const Ptr<MountGroupInitialMountSm> gone = mountGroupInitialMountSm_.take(groupName);
  if (gone) gone->doCleanup();
}

void ServiceInitialMountSm::mountGroupInitialMountSmDelAll() {
  mountGroupInitialMountSm_.walk(
      [this](MountGroupInitialMountSm& group) { mountGroupInitialMountSmDel(group.name()); });
}

// ---- clean up

void ServiceInitialMountSm::doCleanup() {
  INITIAL_TRACE(8, "ServiceInitialMountSm::", "doCleanup", " ", key_);
  const Orm::ActivityScope scope;
  initialized_ = false;
  hasNotificationActiveIs(false);
  mountGroupInitialMountSmDelAll();
}

}  // namespace Controller
