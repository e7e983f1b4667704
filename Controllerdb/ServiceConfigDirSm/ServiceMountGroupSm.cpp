#include "Controllerdb/ServiceConfigDirSm/ServiceMountGroupSm.h"

#include "Controllerdb/ServiceConfigDirSm/DoCreateDirPath.h"
#include "Controllerdb/ServiceConfigDirSm/ServiceConfigTrace.h"
#include "Controllerdb/ServiceConfigDirSm/ServiceMountConfigSm.h"

namespace Controller {

using Orm::Ptr;
using Orm::String;

Ptr<ServiceMountGroupSm> serviceMountGroupSmFactory(
    const Ptr<Controllerdb::Status const>& controllerdbStatus,
    const Ptr<ServiceMountGroupConfig const>& mountGroupConfig,
    const Ptr<ServiceMountConfig const>& serviceMountConfig,
    const Ptr<ServiceMountStatus>& serviceMountStatus, const Ptr<MountsRegistry>& mountsRegistry,
    ServiceMountConfigSm* parent) {
  return Orm::make<ServiceMountGroupSm>(controllerdbStatus, mountGroupConfig, serviceMountConfig,
                                        serviceMountStatus, mountsRegistry, parent);
}

// ---- construct

ServiceMountGroupSm::ServiceMountGroupSm(Ptr<Controllerdb::Status const> controllerdbStatus,
                                         Ptr<ServiceMountGroupConfig const> mountGroupConfig,
                                         Ptr<ServiceMountConfig const> serviceMountConfig,
                                         Ptr<ServiceMountStatus> serviceMountStatus,
                                         Ptr<MountsRegistry> mountsRegistry,
                                         ServiceMountConfigSm* parent)
    : controllerdbStatus_(std::move(controllerdbStatus)),
      mountGroupConfig_(std::move(mountGroupConfig)),
      serviceMountConfig_(std::move(serviceMountConfig)),
      serviceMountStatus_(std::move(serviceMountStatus)),
      mountsRegistry_(std::move(mountsRegistry)),
      parent_(parent),
      ormControllerdbStatus_(this),
      ormServiceMountConfig_(this),
      ormMountGroupConfig_(this) {}

void ServiceMountGroupSm::start() {
  ormControllerdbStatus_.notifierIs(controllerdbStatus_);
  ormServiceMountConfig_.notifierIs(serviceMountConfig_);
  ormMountGroupConfig_.notifierIs(mountGroupConfig_);
  handleInitialized();
}

void ServiceMountGroupSm::handleInitialized() {
  CONFIG_TRACE(8, "ServiceMountGroupSm::", "handleInitialized",
               " mountConfig genId:", serviceMountConfig_->genId(),
               " controller genId:", controllerdbStatus_->leaderGenId());
  if (initialized_) return;
  initialized_ = true;
  handleLeaderGenId();
}

void ServiceMountGroupSm::hasNotificationActiveIs(bool active) {
  ormControllerdbStatus_.hasNotificationActiveIs(active);
  ormServiceMountConfig_.hasNotificationActiveIs(active);
  ormMountGroupConfig_.hasNotificationActiveIs(active);
}

// ---- react

void ServiceMountGroupSm::OrmControllerdbStatus::onAttribute(Orm::AttributeId attribute,
                                                             const Orm::Key&) {
  if (attribute == Controllerdb::Status::Attr::leaderGenId) owner()->handleLeaderGenId();
}

void ServiceMountGroupSm::OrmServiceMountConfig::onAttribute(Orm::AttributeId attribute,
                                                             const Orm::Key&) {
  if (attribute == ServiceMountConfig::Attr::genId) owner()->handleLeaderGenId();
}

void ServiceMountGroupSm::OrmMountGroupConfig::onAttribute(Orm::AttributeId attribute,
                                                           const Orm::Key& key) {
  if (attribute == ServiceMountGroupConfig::Attr::mountConfig) {
    owner()->handleMountConfig(key.as<String>());
  }
}

void ServiceMountGroupSm::handleLeaderGenId() {
  CONFIG_TRACE(8, "ServiceMountGroupSm::", "handleLeaderGenId", " ", serviceMountConfig_->genId());
  if (canMount()) {
    handleMountConfig();
  } else if (!parent_->isProxy()) {
    doCleanup();
  }
}

void ServiceMountGroupSm::handleMountConfig() {
  if (!initialized_) return;
  CONFIG_TRACE(8, "ServiceMountGroupSm::", "handleMountConfig");
  mountGroupConfig_->mountConfig().walk(
      [this](const MountConfig& config) { handleMountConfig(config.path()); });
}

void ServiceMountGroupSm::handleMountConfig(const String& path) {
  CONFIG_TRACE(8, "ServiceMountGroupSm::", "handleMountConfig", ": ", path);
  if (!initialized_ || isDeleted()) return;
  if (!canMount()) {
    // The gate is closing, and the clean-up that comes will not see a path that has gone by then.
    if (!mountGroupConfig_->mountConfig(path) && hasMounter(path)) removeMountConfig(path);
    return;
  }
  if (mountGroupConfig_->mountConfig(path)) {
    addMountConfig(path);
  } else {
    removeMountConfig(path);
  }
}

// ---- act

bool ServiceMountGroupSm::canMount() {
  CONFIG_TRACE(8, "ServiceMountGroupSm::", "canMount",
               " mountConfig genId:", serviceMountConfig_->genId(),
               " controller genId:", controllerdbStatus_->leaderGenId());
  return isOpen();
}

bool ServiceMountGroupSm::isOpen() const {
  const String& leaderGenId = controllerdbStatus_->leaderGenId();
  return (!leaderGenId.empty() && leaderGenId == serviceMountConfig_->genId()) ||
         parent_->isProxy();
}

bool ServiceMountGroupSm::hasMounter(const String& path) const {
  const MountsRegistryEntry* const mre = mountsRegistry_->mountEntry(path);
  const Mounter* const mounter = mre ? mre->mounter(serviceMountConfig_->serviceName()) : nullptr;
  return mounter && mounter->mountGroupConfig() == mountGroupConfig_;
}

/// The prefix goes before its mounter: who is told of it finds a mounter that has none any more.
bool ServiceMountGroupSm::isGoing(const Mounter& mounter, const String& path) {
  return !mounter.serviceMountStatus()->mountedPathPrefix().has(path);
}

void ServiceMountGroupSm::addMountConfig(const String& path) {
  static constexpr char kSignature[] =
      "void Controller::ServiceMountGroupSm::addMountConfig(const String&)";
  CONFIG_TRACE(8, "ServiceMountGroupSm::", "addMountConfig", ": ", path);
  const String& serviceName = serviceMountConfig_->serviceName();
  const Ptr<MountConfig const> mountConfig(mountGroupConfig_->mountConfig(path));
  Ptr<MountsRegistryEntry> mre(mountsRegistry_->mountEntry(path));
  if (mre) {
    CONFIG_MESSAGE(5, kSignature, " dup registry entry service:%s group:%s rpath:%s", serviceName,
                   groupName(), path);
    Orm::assertThat(mre->ormType() == mountConfig->ormcType(),
                    "mre->ormType() == mountConfig->ormcType()");
    Orm::assertThat(mre->mountFlags() == mountConfig->mountFlags(),
                    "mre->mountFlags() == mountConfig->mountFlags()");
  } else {
    mre = newMountEntry(*mountConfig);
    Orm::assertThat(mre, "mre");
  }
  if (const Mounter* const mounter = mre->mounter(serviceName)) {
    if (!isGoing(*mounter, path)) {
      CONFIG_TRACE(8, "addMountConfig", " Service:", serviceName,
                   " has already requested a mount for ", path);
      return;
    }
    mre->mounterDel(serviceName);
  }
  CONFIG_MESSAGE(5, kSignature, " add mounter service:%s group:%s rpath:%s path prefix:%s",
                 serviceName, groupName(), path, mre->targetPath());
  serviceMountStatus_->mountedPathPrefixIs(path, mre->targetPath());
  // Who was told of it may have had another group of the service, or this one, ask for the path.
  if (mre->mounter(serviceName)) return;
  mre->mounterIs({serviceName, groupName()}, mountConfig, mountGroupConfig_, serviceMountStatus_);
  // Who was told of it may have taken the path or this machine away, or closed the gate, before
  // there was a mounter to take off.
  if (isDeleted() || !isOpen() || !mountGroupConfig_->mountConfig(path)) removeMountConfig(path);
}

Ptr<MountsRegistryEntry> ServiceMountGroupSm::newMountEntry(const MountConfig& mountConfig) {
  const String& path = mountConfig.path();
  String targetPath = mountConfig.targetPath();
  if (!targetPath.empty()) {
    doCreateDirPath(mountsRegistry_->rootDir(), targetPath);
  } else {
    targetPath = String({mountsRegistry_->registryDirPath().view(), "/", path.view()});
    doCreateDirPath(mountsRegistry_->registryDir(), path);
  }
  CONFIG_MESSAGE(5, "void Controller::ServiceMountGroupSm::addMountConfig(const String&)",
                 " add registry entry service:%s group:%s rpath:%s tpath:%s",
                 serviceMountConfig_->serviceName(), groupName(), path, targetPath);
  return mountsRegistry_->mountEntryIs(path, targetPath, mountConfig.ormcType(),
                                       mountConfig.mountFlags());
}

void ServiceMountGroupSm::removeMountConfig(const String& path) {
  static constexpr char kSignature[] =
      "void Controller::ServiceMountGroupSm::removeMountConfig(const String&)";
  CONFIG_TRACE(8, "ServiceMountGroupSm::", "removeMountConfig", ": ", path);
  const Ptr<MountsRegistryEntry> mre(mountsRegistry_->mountEntry(path));
  if (!mre) return;
  const String serviceName = serviceMountConfig_->serviceName();
  CONFIG_MESSAGE(5, kSignature, " del registry entry: service:%s group:%s path:%s", serviceName,
                 groupName(), path);
  if (const Ptr<Mounter const> mounter{mre->mounter(serviceName)}) {
    serviceMountStatus_->mountedPathPrefixDel(path);
    // Who was told of it may have wanted the path again.
    if (mre->mounter(serviceName) == mounter) mre->mounterDel(serviceName);
  }
  if (mre->mounter().empty()) {
    CONFIG_MESSAGE(5, kSignature, " all mounters gone path:%s", path);
  }
}

// ---- clean up

void ServiceMountGroupSm::doCleanup() {
  CONFIG_TRACE(8, "ServiceMountGroupSm::", "doCleanup");
  const Orm::ActivityScope scope;
  const bool wasOpen = isOpen();
  mountGroupConfig_->mountConfig().walk([this, wasOpen](const MountConfig& config) {
    // Whoever was told of the first paths may have opened the gate again.
    if (!initialized_ || isOpen() == wasOpen) removeMountConfig(config.path());
  });
}

void ServiceMountGroupSm::doFinalCleanup() {
  initialized_ = false;
  hasNotificationActiveIs(false);
  doCleanup();
}

}  // namespace Controller
