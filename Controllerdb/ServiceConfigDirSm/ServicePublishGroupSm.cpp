#include "Controllerdb/ServiceConfigDirSm/ServicePublishGroupSm.h"

#include "Controllerdb/ServiceConfigDirSm/ServiceConfigTrace.h"
#include "Controllerdb/ServiceConfigDirSm/ServicePublishConfigSm.h"

namespace Controller {

using Orm::Ptr;
using Orm::String;

Ptr<ServicePublishGroupSm> servicePublishGroupSmFactory(
    const Ptr<Controllerdb::Status const>& controllerdbStatus,
    const Ptr<ServicePublishConfig const>& servicePublishConfig,
    const Ptr<ServicePublishGroupConfig const>& publishGroupConfig,
    const Ptr<ServicePublishGroupStatus>& publishGroupStatus,
    const Ptr<MountsRegistry>& mountsRegistry, ServicePublishConfigSm* parent) {
  return Orm::make<ServicePublishGroupSm>(controllerdbStatus, servicePublishConfig,
                                          publishGroupConfig, publishGroupStatus, mountsRegistry,
                                          parent);
}

namespace {

/// The name of a filter that may not be there, as traces show it.
template <class Filter>
std::string_view nameOf(const Ptr<Filter const>& filter) {
  return filter ? filter->name().view() : "None";
}

}  // namespace

// ---- construct

ServicePublishGroupSm::ServicePublishGroupSm(
    Ptr<Controllerdb::Status const> controllerdbStatus,
    Ptr<ServicePublishConfig const> servicePublishConfig,
    Ptr<ServicePublishGroupConfig const> publishGroupConfig,
    Ptr<ServicePublishGroupStatus> publishGroupStatus, Ptr<MountsRegistry> mountsRegistry,
    ServicePublishConfigSm* parent)
    : controllerdbStatus_(std::move(controllerdbStatus)),
      servicePublishConfig_(std::move(servicePublishConfig)),
      publishGroupConfig_(std::move(publishGroupConfig)),
      publishGroupStatus_(std::move(publishGroupStatus)),
      mountsRegistry_(std::move(mountsRegistry)),
      parent_(parent),
      ormControllerdbStatus_(this),
      ormServicePublishConfig_(this),
      ormServicePublishGroupConfig_(this) {}

void ServicePublishGroupSm::start() {
  ormControllerdbStatus_.notifierIs(controllerdbStatus_);
  ormServicePublishConfig_.notifierIs(servicePublishConfig_);
  ormServicePublishGroupConfig_.notifierIs(publishGroupConfig_);
  handleInitialized();
}

void ServicePublishGroupSm::handleInitialized() {
  CONFIG_TRACE(8, "ServicePublishGroupSm::", "handleInitialized");
  if (initialized_) return;
  initialized_ = true;
  handleLeaderGenId();
}

void ServicePublishGroupSm::hasNotificationActiveIs(bool active) {
  ormControllerdbStatus_.hasNotificationActiveIs(active);
  ormServicePublishConfig_.hasNotificationActiveIs(active);
  ormServicePublishGroupConfig_.hasNotificationActiveIs(active);
  for (const auto& dir : publishDirSm_) dir->hasNotificationActiveIs(active);
}

// ---- react

void ServicePublishGroupSm::OrmControllerdbStatus::onAttribute(Orm::AttributeId attribute,
                                                               const Orm::Key&) {
  if (attribute == Controllerdb::Status::Attr::leaderGenId) owner()->handleLeaderGenId();
}

void ServicePublishGroupSm::OrmServicePublishConfig::onAttribute(Orm::AttributeId attribute,
                                                                 const Orm::Key&) {
  if (attribute == ServicePublishConfig::Attr::genId) owner()->handleLeaderGenId();
}

void ServicePublishGroupSm::OrmServicePublishGroupConfig::onAttribute(Orm::AttributeId attribute,
                                                                      const Orm::Key& key) {
  switch (attribute) {
    case ServicePublishGroupConfig::Attr::publishConfig:
      owner()->handlePublishConfig(key.as<String>());
      break;
    case ServicePublishGroupConfig::Attr::publishDir:
      owner()->handlePublishDir(key.as<String>());
      break;
    case ServicePublishGroupConfig::Attr::systemFilter:
      owner()->handleSystemFilter();
      break;
    case ServicePublishGroupConfig::Attr::versionFilter:
      owner()->handleVersionFilter();
      break;
    default:
      break;
  }
}

void ServicePublishGroupSm::handleLeaderGenId() {
  CONFIG_TRACE(8, "ServicePublishGroupSm::", "handleLeaderGenId", " ",
               servicePublishConfig_->genId());
  if (!parent_->canPublish()) {
    doCleanup();
    return;
  }
  // One generation changes at a time, so that a gate that is open has been closed before it opens.
  if (gateOpen_) return;
  gateOpen_ = true;
  handlePublishConfig();
  handlePublishDir();
  handleSystemFilter();
  handleVersionFilter();
}

void ServicePublishGroupSm::handlePublishConfig() {
  publishGroupConfig_->publishConfig().walk(
      [this](const PublishConfig& config) { handlePublishConfig(config.path()); });
}

void ServicePublishGroupSm::handlePublishConfig(const String& path) {
  CONFIG_TRACE(8, "ServicePublishGroupSm::", "handlePublishConfig", ": ", path);
  if (!initialized_) return;
  const Ptr<PublishConfig const> config(publishGroupConfig_->publishConfig(path));
  // While the gate is closing, the clean-up that comes will not see a path that has gone by then.
  if (!parent_->canPublish() && (config || !gateOpen_)) return;
  if (!config) {
    publishGroupStatus_->publishStatusDel(path);
    removePublishConfig(path);
    return;
  }
  publishGroupStatus_->publishStatusIs(path)->publishStateIs(PublishState::configured);
  addPublishConfig(config, publishGroupConfig_);
}

void ServicePublishGroupSm::handlePublishDir() {
  publishGroupConfig_->publishDir().walk(
      [this](const PublishDir& dir) { handlePublishDir(dir.path()); });
}

void ServicePublishGroupSm::handlePublishDir(const String& path) {
  CONFIG_TRACE(8, "ServicePublishGroupSm::", "handlePublishDir", " ", path);
  if (!initialized_ || !parent_->canPublish()) return;
  if (const Ptr<PublishDir const> dir = publishGroupConfig_->publishDir(path)) {
    const PublishDirSm* const present = publishDirSm_.find(path);
    // Whoever was told first of the directory before this one has replaced it.
    if (present && present->publishDir() != dir) publishDirSmDel(path);
    publishDirSmIs(dir);
  } else {
    publishDirSmDel(path);
  }
}

void ServicePublishGroupSm::handleSystemFilter() {
  if (!initialized_) return;
  CONFIG_TRACE(8, "ServicePublishGroupSm::", "handleSystemFilter", " ",
               nameOf(publishGroupConfig_->systemFilter()));
  publishGroupConfig_->publishConfig().walk([this](const PublishConfig& config) {
    const Ptr<PublishRegistryEntry> entry(mountsRegistry_->publishEntry(config.path()));
    if (entry) entry->systemFilterIs(publishGroupConfig_->systemFilter());
  });
}

void ServicePublishGroupSm::handleVersionFilter() {
  if (!initialized_) return;
  CONFIG_TRACE(8, "ServicePublishGroupSm::", "handleVersionFilter", " ",
               nameOf(publishGroupConfig_->versionFilter()));
  publishGroupConfig_->publishConfig().walk([this](const PublishConfig& config) {
    const Ptr<PublishRegistryEntry> entry(mountsRegistry_->publishEntry(config.path()));
    if (entry) entry->versionFilterIs(publishGroupConfig_->versionFilter());
  });
}

// ---- act

void ServicePublishGroupSm::addPublishConfig(
    const Ptr<PublishConfig const>& publishConfig,
    const Ptr<ServicePublishGroupConfig const>& groupConfig) {
  const String& path = publishConfig->path();
  if (mountsRegistry_->publishEntry(path)) {
    CONFIG_TRACE(1, "addPublishConfig", path,
                 " already published. Ignoring publish from:", serviceName());
    return;
  }
  addPublishDirOrConfig(path, publishConfig->remotePath(), publishConfig->type(), false, true,
                        groupConfig);
}

void ServicePublishGroupSm::addPublishDir(const Ptr<PublishDir const>& publishDir,
                                          const Ptr<ServicePublishGroupConfig const>& groupConfig) {
  const String& path = publishDir->path();
  CONFIG_TRACE(8, "ServicePublishGroupSm::", "addPublishDir", " ", path);
  if (mountsRegistry_->publishEntry(path)) {
    CONFIG_TRACE(1, "addPublishDir", path,
                 " already published. Ignoring publishDir from: ", serviceName());
    return;
  }
  addPublishDirOrConfig(path, String(), publishDir->type(), true, false, groupConfig);
}

void ServicePublishGroupSm::addPublishDirOrConfig(
    const String& cpath, const String& rpath, const String& type, bool isPrefixPath,
    bool readyToPublish, const Ptr<ServicePublishGroupConfig const>& groupConfig) {
  CONFIG_MESSAGE(5,
                 "void Controller::ServicePublishGroupSm::addPublishDirOrConfig(const String&, "
                 "const String&, const String&, bool, bool, const PtrConst&)",
                 " adding: service:%s cpath:%s rpath:%s type:%s", serviceName(), cpath, rpath,
                 type);
  mountsRegistry_
      ->publishEntryIs(cpath, rpath, type, isPrefixPath, serviceName(),
                       groupConfig->versionFilter(), groupConfig->systemFilter())
      ->readyToPublishIs(readyToPublish);
}

void ServicePublishGroupSm::removePublishDir(const String& path) {
  CONFIG_TRACE(8, "ServicePublishGroupSm::", "removePublishDir", " ", path);
  removePublishDirOrConfig(path);
}

void ServicePublishGroupSm::removePublishDirOrConfig(const String& cpath) {
  CONFIG_MESSAGE(5,
                 "void Controller::ServicePublishGroupSm::removePublishDirOrConfig(const String&)",
                 " removing cpath:%s", cpath);
  mountsRegistry_->publishEntryDel(cpath);
}

// ---- children

Ptr<PublishDirSm> ServicePublishGroupSm::publishDirSmIs(const Ptr<PublishDir const>& publishDir) {
  if (PublishDirSm* present = publishDirSm_.find(publishDir->path())) return present;
  return Orm::childIs(publishDirSm_, publishDirSmFactory(publishDir, this));
}

void ServicePublishGroupSm::publishDirSmDel(const String& path) {
  if (const Ptr<PublishDirSm> gone = publishDirSm_.take(path)) gone->doCleanup();
}

void ServicePublishGroupSm::publishDirSmDelAll() {
  publishDirSm_.walk([this](PublishDirSm& dir) {
    if (!gateOpen_) publishDirSmDel(dir.path());
  });
}

// ---- clean up

void ServicePublishGroupSm::doCleanup() {
  CONFIG_TRACE(8, "ServicePublishGroupSm::", "doCleanup");
  const Orm::ActivityScope scope;
  gateOpen_ = false;
  // Whoever was told of the first paths may have opened the gate again.
  publishGroupConfig_->publishConfig().walk([this](const PublishConfig& config) {
    if (!gateOpen_) removePublishConfig(config.path());
  });
  if (!gateOpen_) publishDirSmDelAll();
}

void ServicePublishGroupSm::doFinalCleanup() {
  initialized_ = false;
  hasNotificationActiveIs(false);
  doCleanup();
}

}  // namespace Controller
