#include "Controllerdb/ServiceConfigDirSm/ServiceMountConfigSm.h"

#include "Controllerdb/ServiceConfigDirSm/ServiceConfigTrace.h"

namespace Controller {

using Orm::Ptr;
using Orm::String;

Ptr<ServiceMountConfigSm> serviceMountConfigSmFactory(
    const String& key, bool isProxy, const Ptr<Controllerdb::Status const>& controllerdbStatus,
    const Ptr<ServiceMountConfig const>& mountConfig, const Ptr<ServiceMountStatus>& mountStatus,
    const Ptr<MountsRegistry>& mountsRegistry, ServiceConfigDirSm* parent) {
  return Orm::make<ServiceMountConfigSm>(key, isProxy, controllerdbStatus, mountConfig, mountStatus,
                                         mountsRegistry, parent);
}

// ---- construct

ServiceMountConfigSm::ServiceMountConfigSm(String key, bool isProxy,
                                           Ptr<Controllerdb::Status const> controllerdbStatus,
                                           Ptr<ServiceMountConfig const> mountConfig,
                                           Ptr<ServiceMountStatus> mountStatus,
                                           Ptr<MountsRegistry> mountsRegistry,
                                           ServiceConfigDirSm* parent)
    : key_(std::move(key)),
      controllerdbStatus_(std::move(controllerdbStatus)),
      mountConfig_(std::move(mountConfig)),
      mountStatus_(std::move(mountStatus)),
      mountsRegistry_(std::move(mountsRegistry)),
      parent_(parent),
      ormServiceMountConfig_(this),
      isProxy_(isProxy) {}

void ServiceMountConfigSm::start() {
  ormServiceMountConfig_.notifierIs(mountConfig_);
  handleInitialized();
}

void ServiceMountConfigSm::handleInitialized() {
  CONFIG_TRACE(8, "ServiceMountConfigSm::", "handleInitialized");
  if (initialized_ || mountConfig_->serviceName().empty()) return;
  initialized_ = true;
  handleMountGroupConfig();
}

void ServiceMountConfigSm::hasNotificationActiveIs(bool active) {
  ormServiceMountConfig_.hasNotificationActiveIs(active);
  for (const auto& group : mountGroupSm_) group->hasNotificationActiveIs(active);
}

// ---- react

void ServiceMountConfigSm::OrmServiceMountConfig::onAttribute(Orm::AttributeId attribute,
                                                              const Orm::Key& key) {
  if (attribute == ServiceMountConfig::Attr::serviceName) owner()->handleServiceName();
  if (attribute == ServiceMountConfig::Attr::mountGroupConfig) {
    owner()->handleMountGroupConfig(key.as<String>());
  }
}

void ServiceMountConfigSm::handleServiceName() {
  CONFIG_MESSAGE(5, "void Controller::ServiceMountConfigSm::handleServiceName()", " serviceName:%s",
                 mountConfig_->serviceName());
  mountStatus_->serviceNameIs(mountConfig_->serviceName());
  handleInitialized();
}

void ServiceMountConfigSm::handleMountGroupConfig() {
  CONFIG_TRACE(8, "ServiceMountConfigSm::", "handleMountGroupConfig");
  if (!initialized_) return;
  mountConfig_->mountGroupConfig().walk(
      [this](const ServiceMountGroupConfig& group) { handleMountGroupConfig(group.groupName()); });
}

void ServiceMountConfigSm::handleMountGroupConfig(const String& groupName) {
  CONFIG_TRACE(8, "ServiceMountConfigSm::", "handleMountGroupConfig", ": ", groupName);
  if (!initialized_) return;
  const Ptr<ServiceMountGroupConfig const> group(mountConfig_->mountGroupConfig(groupName));
  if (group) {
    const ServiceMountGroupSm* const present = mountGroupSm_.find(groupName);
    // Whoever was told first of the group before this one has replaced it.
    if (present && present->mountGroupConfig() != group) mountGroupSmDel(groupName);
    mountGroupSmIs(controllerdbStatus_, group, mountConfig_, mountStatus_, mountsRegistry_);
  } else {
    mountGroupSmDel(groupName);
  }
}

// ---- children

Ptr<ServiceMountGroupSm> ServiceMountConfigSm::mountGroupSmIs(
    const Ptr<Controllerdb::Status const>& controllerdbStatus,
    const Ptr<ServiceMountGroupConfig const>& mountGroupConfig,
    const Ptr<ServiceMountConfig const>& mountConfig, const Ptr<ServiceMountStatus>& mountStatus,
    const Ptr<MountsRegistry>& mountsRegistry) {
  if (ServiceMountGroupSm* present = mountGroupSm_.find(mountGroupConfig->groupName())) {
    return present;
  }
  return Orm::childIs(mountGroupSm_,
                      serviceMountGroupSmFactory(controllerdbStatus, mountGroupConfig, mountConfig,
                                                 mountStatus, mountsRegistry, this));
}

void ServiceMountConfigSm::mountGroupSmDel(const String& groupName) {
  const Ptr<ServiceMountGroupSm> gone = mountGroupSm_.take(groupName);
  if (!gone) return;
  gone->doFinalCleanup();
  // Whoever was told of it may have brought the group back, while its paths had mounters still.
  if (ServiceMountGroupSm* const again = mountGroupSm_.find(groupName)) again->handleMountConfig();
}

// ---- clean up

void ServiceMountConfigSm::doCleanup() {
  CONFIG_TRACE(8, "ServiceMountConfigSm::", "doCleanup");
  const Orm::ActivityScope scope;
  initialized_ = false;
  hasNotificationActiveIs(false);
  mountGroupSm_.walk([this](ServiceMountGroupSm& group) { mountGroupSmDel(group.groupName()); });
}

}  // namespace Controller
