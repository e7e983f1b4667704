#include "Controllerdb/ServiceConfigDirSm/ServicePublishConfigSm.h"

#include "Controllerdb/ServiceConfigDirSm/ServiceConfigTrace.h"

namespace Controller {

using Orm::Ptr;
using Orm::String;

Ptr<ServicePublishConfigSm> servicePublishConfigSmFactory(
    const String& serviceKey, const Ptr<Controllerdb::Status const>& controllerdbStatus,
    const Ptr<ServicePublishConfig const>& publishConfig,
    const Ptr<ServicePublishStatus>& publishStatus,
    const Ptr<Controllerdb::PublishStatus>& controllerdbPublishStatus,
    const Ptr<MountsRegistry>& mountsRegistry, ServiceConfigDirSm* parent) {
  return Orm::make<ServicePublishConfigSm>(serviceKey, controllerdbStatus, publishConfig,
                                           publishStatus, controllerdbPublishStatus, mountsRegistry,
                                           parent);
}

// ---- construct

ServicePublishConfigSm::ServicePublishConfigSm(
    String serviceKey, Ptr<Controllerdb::Status const> controllerdbStatus,
    Ptr<ServicePublishConfig const> publishConfig, Ptr<ServicePublishStatus> publishStatus,
    Ptr<Controllerdb::PublishStatus> controllerdbPublishStatus, Ptr<MountsRegistry> mountsRegistry,
    ServiceConfigDirSm* parent)
    : serviceKey_(std::move(serviceKey)),
      controllerdbStatus_(std::move(controllerdbStatus)),
      publishConfig_(std::move(publishConfig)),
      publishStatus_(std::move(publishStatus)),
      controllerdbPublishStatus_(std::move(controllerdbPublishStatus)),
      mountsRegistry_(std::move(mountsRegistry)),
      parent_(parent),
      ormControllerdbStatus_(this),
      ormServicePublishConfig_(this) {}

void ServicePublishConfigSm::start() {
  ormControllerdbStatus_.notifierIs(controllerdbStatus_);
  ormServicePublishConfig_.notifierIs(publishConfig_);
  handleInitialized();
}

void ServicePublishConfigSm::handleInitialized() {
  CONFIG_TRACE(8, "ServicePublishConfigSm::", "handleInitialized");
  if (initialized_ || serviceName().empty()) return;
  initialized_ = true;
  handlePublishGroupConfig();
  handleLeaderGenId();
}

void ServicePublishConfigSm::hasNotificationActiveIs(bool active) {
  ormControllerdbStatus_.hasNotificationActiveIs(active);
  ormServicePublishConfig_.hasNotificationActiveIs(active);
  for (const auto& group : publishGroupSm_) group->hasNotificationActiveIs(active);
}

// ---- react

void ServicePublishConfigSm::OrmControllerdbStatus::onAttribute(Orm::AttributeId attribute,
                                                                const Orm::Key&) {
  if (attribute == Controllerdb::Status::Attr::leaderGenId) owner()->handleLeaderGenId();
}

void ServicePublishConfigSm::OrmServicePublishConfig::onAttribute(Orm::AttributeId attribute,
                                                                  const Orm::Key& key) {
  switch (attribute) {
    case ServicePublishConfig::Attr::genId:
      owner()->handleLeaderGenId();
      break;
    case ServicePublishConfig::Attr::serviceName:
      owner()->handleServiceName();
      break;
    case ServicePublishConfig::Attr::publishGroupConfig:
      owner()->handlePublishGroupConfig(key.as<String>());
      break;
    case ServicePublishConfig::Attr::publishReady:
      owner()->handlePublishReady();
      break;
    default:
      break;
  }
}

void ServicePublishConfigSm::handleServiceName() {
  CONFIG_MESSAGE(5, "void Controller::ServicePublishConfigSm::handleServiceName()",
                 " serviceName:%s", serviceName());
  handleInitialized();
}

void ServicePublishConfigSm::handlePublishGroupConfig() {
  publishConfig_->publishGroupConfig().walk([this](const ServicePublishGroupConfig& group) {
    handlePublishGroupConfig(group.groupName());
  });
}

void ServicePublishConfigSm::handlePublishGroupConfig(const String& groupName) {
  CONFIG_TRACE(8, "ServicePublishConfigSm::", "handlePublishGroupConfig", ": ", serviceName(), ", ",
               groupName);
  if (!initialized_) return;
  const Ptr<ServicePublishGroupConfig const> group(publishConfig_->publishGroupConfig(groupName));
  if (group) {
    const ServicePublishGroupSm* const present = publishGroupSm_.find(groupName);
    // Whoever was told first of the group before this one has replaced it.
    if (present && present->publishGroupConfig() != group) removeGroup(groupName);
    const Ptr<ServicePublishGroupStatus> status =
        publishStatus_->servicePublishGroupStatusIs(groupName);
    status->publishStateIs(PublishState::configured);
    publishGroupSmIs(controllerdbStatus_, publishConfig_, group, status, mountsRegistry_);
  }
  // Also when whoever was told of the status took the group away, or the service.
  if (!initialized_ || !publishConfig_->publishGroupConfig(groupName)) removeGroup(groupName);
}

void ServicePublishConfigSm::handleLeaderGenId() {
  if (!initialized_) return;
  CONFIG_TRACE(8, "ServicePublishConfigSm::", "handleLeaderGenId", " ", publishConfig_->genId());
  if (!canPublish()) {
    CONFIG_MESSAGE(5, "void Controller::ServicePublishConfigSm::handleLeaderGenId()",
                   "Stale leaderGenId, cleanup publishReady flag for %s", serviceName());
    withdrawReady();
    mountsRegistry_->servicePublishReadyDel(serviceName());
    return;
  }
  // The entries come before the readiness, which counts the ones that still wait.
  publishGroupSm_.walk([](ServicePublishGroupSm& group) {
    if (!group.gateOpen()) group.handleLeaderGenId();
  });
  handlePublishReady();
}

void ServicePublishConfigSm::handlePublishReady() {
  CONFIG_TRACE(8, "ServicePublishConfigSm::", "handlePublishReady", ": ", serviceName());
  if (!initialized_ || !canPublish()) return;
  const String name = serviceName();
  if (readyName_ != name) withdrawReady();
  readyName_ = name;
  mountsRegistry_->servicePublishReadyIs(name, publishConfig_->publishReady());
}

// ---- decide

bool ServicePublishConfigSm::canPublish() const {
  const String& genId = publishConfig_->genId();
  const String& leaderGenId = controllerdbStatus_->leaderGenId();
  const bool can = !leaderGenId.empty() && genId == leaderGenId;
  CONFIG_TRACE(8, "ServicePublishConfigSm::", "canPublish", " can:", can ? 1 : 0,
               " publishConfig genId:", genId, " controller genId:", leaderGenId);
  return can;
}

// ---- children

Ptr<ServicePublishGroupSm> ServicePublishConfigSm::publishGroupSmIs(
    const Ptr<Controllerdb::Status const>& controllerdbStatus,
    const Ptr<ServicePublishConfig const>& publishConfig,
    const Ptr<ServicePublishGroupConfig const>& publishGroupConfig,
    const Ptr<ServicePublishGroupStatus>& publishGroupStatus,
    const Ptr<MountsRegistry>& mountsRegistry) {
  if (ServicePublishGroupSm* present = publishGroupSm_.find(publishGroupConfig->groupName())) {
    return present;
  }
  return Orm::childIs(publishGroupSm_, servicePublishGroupSmFactory(
                                           controllerdbStatus, publishConfig, publishGroupConfig,
                                           publishGroupStatus, mountsRegistry, this));
}

void ServicePublishConfigSm::publishGroupSmDel(const String& groupName) {
  if (const Ptr<ServicePublishGroupSm> gone = publishGroupSm_.take(groupName)) {
    gone->doFinalCleanup();
  }
}

void ServicePublishConfigSm::publishGroupSmDelAll() {
  publishGroupSm_.walk(
      [this](ServicePublishGroupSm& group) { publishGroupSmDel(group.groupName()); });
}

// ---- clean up

void ServicePublishConfigSm::doCleanup() {
  CONFIG_TRACE(8, "ServicePublishConfigSm::", "doCleanup", " ", serviceKey_);
  const Orm::ActivityScope scope;
  hasNotificationActiveIs(false);
  initialized_ = false;
  // Readiness goes first: entries that go while they wait would complete it.
  withdrawReady();
  publishGroupSm_.walk([this](ServicePublishGroupSm& group) { removeGroup(group.groupName()); });
}

void ServicePublishConfigSm::removeGroup(const String& groupName) {
  publishGroupSmDel(groupName);
  publishStatus_->servicePublishGroupStatusDel(groupName);
}

void ServicePublishConfigSm::withdrawReady() {
  if (readyName_.empty()) return;
  mountsRegistry_->servicePublishReadyDel(readyName_);
  readyName_ = String();
}

}  // namespace Controller
