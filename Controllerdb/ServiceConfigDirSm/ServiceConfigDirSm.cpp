#include "Controllerdb/ServiceConfigDirSm/ServiceConfigDirSm.h"

#include "Controllerdb/ServiceConfigDirSm/ServiceConfigTrace.h"

namespace Controller {

using Fennix::Dir;
using Orm::Ptr;
using Orm::String;

Ptr<ServiceConfigDirSm> serviceConfigDirSmFactory(
    const Ptr<Controllerdb::Status const>& controllerdbStatus, const Ptr<Dir const>& mountConfigDir,
    const Ptr<Dir>& mountStatusDir, const Ptr<Dir const>& publishConfigDir,
    const Ptr<Dir>& publishStatusDir, const Ptr<Dir const>& proxyMountConfigDir,
    const Ptr<Dir>& proxyMountStatusDir,
    const Ptr<Controllerdb::PublishStatus>& controllerdbPublishStatus,
    const Ptr<MountsRegistry>& mountsRegistry) {
  const Orm::ActivityScope scope;
  return Orm::make<ServiceConfigDirSm>(
      controllerdbStatus, mountConfigDir, mountStatusDir, publishConfigDir, publishStatusDir,
      proxyMountConfigDir, proxyMountStatusDir, controllerdbPublishStatus, mountsRegistry);
}

namespace {

/// The member of a directory that may not exist, when it is a T.
template <class T, class D>
Ptr<T> memberOf(const Ptr<D>& dir, const String& name) {
  return dir ? dir->template entityAs<T>(name) : nullptr;
}

}  // namespace

// ---- construct

ServiceConfigDirSm::ServiceConfigDirSm(Ptr<Controllerdb::Status const> controllerdbStatus,
                                       Ptr<Dir const> mountConfigDir, Ptr<Dir> mountStatusDir,
                                       Ptr<Dir const> publishConfigDir, Ptr<Dir> publishStatusDir,
                                       Ptr<Dir const> proxyMountConfigDir,
                                       Ptr<Dir> proxyMountStatusDir,
                                       Ptr<Controllerdb::PublishStatus> controllerdbPublishStatus,
                                       Ptr<MountsRegistry> mountsRegistry)
    : controllerdbStatus_(std::move(controllerdbStatus)),
      mountConfigDir_(std::move(mountConfigDir)),
      mountStatusDir_(std::move(mountStatusDir)),
      publishConfigDir_(std::move(publishConfigDir)),
      publishStatusDir_(std::move(publishStatusDir)),
      proxyMountConfigDir_(std::move(proxyMountConfigDir)),
      proxyMountStatusDir_(std::move(proxyMountStatusDir)),
      controllerdbPublishStatus_(std::move(controllerdbPublishStatus)),
      mountsRegistry_(std::move(mountsRegistry)),
      ormMountConfigDir_(this),
      ormMountStatusDir_(this),
      ormPublishConfigDir_(this),
      ormPublishStatusDir_(this),
      ormProxyMountConfigDir_(this),
      ormProxyMountStatusDir_(this) {
  ormMountConfigDir_.notifierIs(mountConfigDir_);
  ormMountStatusDir_.notifierIs(mountStatusDir_);
  ormPublishConfigDir_.notifierIs(publishConfigDir_);
  ormPublishStatusDir_.notifierIs(publishStatusDir_);
  ormProxyMountConfigDir_.notifierIs(proxyMountConfigDir_);
  ormProxyMountStatusDir_.notifierIs(proxyMountStatusDir_);
  handleInitialized();
}

void ServiceConfigDirSm::handleInitialized() {
  if (initialized_) return;
  initialized_ = true;
  handleServiceMount();
  handleProxyServiceMount();
  handleServicePublish();
}

void ServiceConfigDirSm::hasNotificationActiveIs(bool active) {
  ormMountConfigDir_.hasNotificationActiveIs(active);
  ormMountStatusDir_.hasNotificationActiveIs(active);
  ormPublishConfigDir_.hasNotificationActiveIs(active);
  ormPublishStatusDir_.hasNotificationActiveIs(active);
  ormProxyMountConfigDir_.hasNotificationActiveIs(active);
  ormProxyMountStatusDir_.hasNotificationActiveIs(active);
  for (const auto& service : serviceMountConfigSm_) service->hasNotificationActiveIs(active);
  for (const auto& service : servicePublishConfigSm_) service->hasNotificationActiveIs(active);
}

// ---- react

void ServiceConfigDirSm::handleServiceMount() {
  if (!mountConfigDir_) return;
  mountConfigDir_->entity().walk(
      [this](const String& name, const Ptr<Orm::Entity>&) { handleServiceMount(name); });
}

void ServiceConfigDirSm::handleServiceMount(const String& name) {
  CONFIG_TRACE(8, "ServiceConfigDirSm::", "handleServiceMount", ": ", name);
  const auto status = memberOf<ServiceMountStatus>(mountStatusDir_, name);
  const auto config = memberOf<ServiceMountConfig const>(mountConfigDir_, name);
  handleServiceMountCommon(false, name, config, status);
}

void ServiceConfigDirSm::handleProxyServiceMount() {
  if (!proxyMountConfigDir_) return;
  proxyMountConfigDir_->entity().walk(
      [this](const String& name, const Ptr<Orm::Entity>&) { handleProxyServiceMount(name); });
}

void ServiceConfigDirSm::handleProxyServiceMount(const String& name) {
  CONFIG_TRACE(8, "ServiceConfigDirSm::", "handleProxyServiceMount", ": ", name);
  const auto status = memberOf<ServiceMountStatus>(proxyMountStatusDir_, name);
  const auto config = memberOf<ServiceMountConfig const>(proxyMountConfigDir_, name);
  handleServiceMountCommon(true, name, config, status);
}

void ServiceConfigDirSm::handleServiceMountCommon(bool isProxy, const String& name,
                                                  const Ptr<ServiceMountConfig const>& config,
                                                  const Ptr<ServiceMountStatus>& status) {
  if (!initialized_) return;
  CONFIG_TRACE(8, "ServiceConfigDirSm::", "handleServiceMountCommon", ": ", name);
  const bool present = serviceMountConfigSm_.has(name);
  if (config && status) {
    if (present) {
      CONFIG_TRACE(8, "ServiceConfigDirSm::", "handleServiceMountCommon",
                   " serviceMountConfigSm already present!");
      return;
    }
    CONFIG_TRACE(8, "ServiceConfigDirSm::", "handleServiceMountCommon",
                 " creating serviceMountConfigSm for ", name);
    serviceMountConfigSmIs(name, isProxy, controllerdbStatus_, config, status, mountsRegistry_);
  } else if (present) {
    CONFIG_TRACE(8, "ServiceConfigDirSm::", "handleServiceMountCommon", " deleting ", name,
                 " serviceMountConfigSm");
    serviceMountConfigSmDel(name);
  } else {
    CONFIG_TRACE(8, "ServiceConfigDirSm::", "handleServiceMountCommon", " mounts not complete ");
  }
}

void ServiceConfigDirSm::handleServicePublish() {
  if (!publishConfigDir_) return;
  publishConfigDir_->entity().walk(
      [this](const String& name, const Ptr<Orm::Entity>&) { handleServicePublish(name); });
}

void ServiceConfigDirSm::handleServicePublish(const String& name) {
  if (!initialized_) return;
  CONFIG_TRACE(8, "ServiceConfigDirSm::", "handleServicePublish", ": ", name);
  const auto config = memberOf<ServicePublishConfig const>(publishConfigDir_, name);
  const auto status = memberOf<ServicePublishStatus>(publishStatusDir_, name);
  const bool present = servicePublishConfigSm_.has(name);
  if (config && status) {
    if (present) return;
    CONFIG_TRACE(8, "ServiceConfigDirSm::", "handleServicePublish",
                 " creating servicePublishConfigSm for ", name);
    servicePublishConfigSmIs(name, controllerdbStatus_, config, status, controllerdbPublishStatus_,
                             mountsRegistry_);
  } else if (present) {
    CONFIG_TRACE(8, "ServiceConfigDirSm::", "handleServicePublish", " deleting ", name,
                 " servicePublishConfigSm");
    servicePublishConfigSmDel(name);
  } else {
    CONFIG_TRACE(8, "ServiceConfigDirSm::", "handleServicePublish", " mounts not complete ");
  }
}

// ---- children

Ptr<ServiceMountConfigSm> ServiceConfigDirSm::serviceMountConfigSmIs(
    const String& name, bool isProxy, const Ptr<Controllerdb::Status const>& controllerdbStatus,
    const Ptr<ServiceMountConfig const>& mountConfig, const Ptr<ServiceMountStatus>& mountStatus,
    const Ptr<MountsRegistry>& mountsRegistry) {
  if (ServiceMountConfigSm* present = serviceMountConfigSm_.find(name)) return present;
  return Orm::childIs(serviceMountConfigSm_,
                      serviceMountConfigSmFactory(name, isProxy, controllerdbStatus, mountConfig,
                                                  mountStatus, mountsRegistry, this));
}

void ServiceConfigDirSm::serviceMountConfigSmDel(const String& name) {
  if (const Ptr<ServiceMountConfigSm> gone = serviceMountConfigSm_.take(name)) gone->doCleanup();
}

Ptr<ServicePublishConfigSm> ServiceConfigDirSm::servicePublishConfigSmIs(
    const String& name, const Ptr<Controllerdb::Status const>& controllerdbStatus,
    const Ptr<ServicePublishConfig const>& publishConfig,
    const Ptr<ServicePublishStatus>& publishStatus,
    const Ptr<Controllerdb::PublishStatus>& controllerdbPublishStatus,
    const Ptr<MountsRegistry>& mountsRegistry) {
  if (ServicePublishConfigSm* present = servicePublishConfigSm_.find(name)) return present;
  return Orm::childIs(
      servicePublishConfigSm_,
      servicePublishConfigSmFactory(name, controllerdbStatus, publishConfig, publishStatus,
                                    controllerdbPublishStatus, mountsRegistry, this));
}

void ServiceConfigDirSm::servicePublishConfigSmDel(const String& name) {
  const Ptr<ServicePublishConfigSm> gone = servicePublishConfigSm_.take(name);
  if (gone) gone->doCleanup();
}

// ---- clean up

ServiceConfigDirSm::~ServiceConfigDirSm() {
  const Orm::ActivityScope scope;
  hasNotificationActiveIs(false);
  serviceMountConfigSm_.walk(
      [this](ServiceMountConfigSm& service) { serviceMountConfigSmDel(service.key()); });
  servicePublishConfigSm_.walk(
      [this](ServicePublishConfigSm& service) { servicePublishConfigSmDel(service.serviceKey()); });
}

}  // namespace Controller
