#pragma once

#include "Controllerdb/ServiceConfigDirSm/ServiceMountConfigSm.h"
#include "Controllerdb/ServiceConfigDirSm/ServicePublishConfigSm.h"
#include "Platform/Fennix/Dir.h"

namespace Controller {

/// The machine over the services' configuration, one of the three that a controller process makes.
///
/// It keeps a ServiceMountConfigSm per service (proxy services included) that has both a mount
/// configuration and a mount status, and a ServicePublishConfigSm per service that has both a
/// publish configuration and a publish status. A machine is not replaced when the configuration
/// under its name is; only the disappearance of either side removes it.
///
/// The controller process owns it and keeps its inputs longer than it. Loop thread only.
class ServiceConfigDirSm : public Orm::Sm, private Kobble::Counted<ServiceConfigDirSm> {
 public:
  using Handler = void (ServiceConfigDirSm::*)(const Orm::String& name);

  /// Reacts to the members of one of the directories.
  template <Handler handler>
  class OrmServiceDir final : public Orm::ReactorOn<Fennix::Dir, ServiceConfigDirSm> {
   public:
    explicit OrmServiceDir(ServiceConfigDirSm* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override {
      if (attribute == Fennix::Dir::Attr::entity) (this->owner()->*handler)(key.as<Orm::String>());
    }
  };

  ServiceConfigDirSm(Orm::Ptr<Controllerdb::Status const> controllerdbStatus,
                     Orm::Ptr<Fennix::Dir const> mountConfigDir,
                     Orm::Ptr<Fennix::Dir> mountStatusDir,
                     Orm::Ptr<Fennix::Dir const> publishConfigDir,
                     Orm::Ptr<Fennix::Dir> publishStatusDir,
                     Orm::Ptr<Fennix::Dir const> proxyMountConfigDir,
                     Orm::Ptr<Fennix::Dir> proxyMountStatusDir,
                     Orm::Ptr<Controllerdb::PublishStatus> controllerdbPublishStatus,
                     Orm::Ptr<MountsRegistry> mountsRegistry);
  ~ServiceConfigDirSm() override;

  void hasNotificationActiveIs(bool active) override;

  void handleInitialized();
  void handleServiceMount(const Orm::String& name);
  void handleServiceMount();
  void handleProxyServiceMount(const Orm::String& name);
  void handleProxyServiceMount();
  void handleServicePublish(const Orm::String& name);
  void handleServicePublish();

  // ---- children

  using ServiceMountConfigSms =
      Orm::Collection<Orm::Ptr<ServiceMountConfigSm>, &ServiceMountConfigSm::key>;
  using ServicePublishConfigSms =
      Orm::Collection<Orm::Ptr<ServicePublishConfigSm>, &ServicePublishConfigSm::serviceKey>;

  const ServiceMountConfigSms& serviceMountConfigSm() const { return serviceMountConfigSm_; }
  Orm::Ptr<ServiceMountConfigSm> serviceMountConfigSmIs(
      const Orm::String& name, bool isProxy,
      const Orm::Ptr<Controllerdb::Status const>& controllerdbStatus,
      const Orm::Ptr<ServiceMountConfig const>& mountConfig,
      const Orm::Ptr<ServiceMountStatus>& mountStatus,
      const Orm::Ptr<MountsRegistry>& mountsRegistry);
  /// Cleans the machine up and lets it go.
  void serviceMountConfigSmDel(const Orm::String& name);

  const ServicePublishConfigSms& servicePublishConfigSm() const { return servicePublishConfigSm_; }
  Orm::Ptr<ServicePublishConfigSm> servicePublishConfigSmIs(
      const Orm::String& name, const Orm::Ptr<Controllerdb::Status const>& controllerdbStatus,
      const Orm::Ptr<ServicePublishConfig const>& publishConfig,
      const Orm::Ptr<ServicePublishStatus>& publishStatus,
      const Orm::Ptr<Controllerdb::PublishStatus>& controllerdbPublishStatus,
      const Orm::Ptr<MountsRegistry>& mountsRegistry);
  /// Cleans the machine up and lets it go.
  void servicePublishConfigSmDel(const Orm::String& name);

 private:
  void handleServiceMountCommon(bool isProxy, const Orm::String& name,
                                const Orm::Ptr<ServiceMountConfig const>& config,
                                const Orm::Ptr<ServiceMountStatus>& status);

  Orm::Ptr<Controllerdb::Status const> controllerdbStatus_;
  Orm::Ptr<Fennix::Dir const> mountConfigDir_;
  Orm::Ptr<Fennix::Dir> mountStatusDir_;
  Orm::Ptr<Fennix::Dir const> publishConfigDir_;
  Orm::Ptr<Fennix::Dir> publishStatusDir_;
  Orm::Ptr<Fennix::Dir const> proxyMountConfigDir_;
  Orm::Ptr<Fennix::Dir> proxyMountStatusDir_;
  Orm::Ptr<Controllerdb::PublishStatus> controllerdbPublishStatus_;
  Orm::Ptr<MountsRegistry> mountsRegistry_;

  OrmServiceDir<&ServiceConfigDirSm::handleServiceMount> ormMountConfigDir_;
  OrmServiceDir<&ServiceConfigDirSm::handleServiceMount> ormMountStatusDir_;
  OrmServiceDir<&ServiceConfigDirSm::handleServicePublish> ormPublishConfigDir_;
  OrmServiceDir<&ServiceConfigDirSm::handleServicePublish> ormPublishStatusDir_;
  OrmServiceDir<&ServiceConfigDirSm::handleProxyServiceMount> ormProxyMountConfigDir_;
  OrmServiceDir<&ServiceConfigDirSm::handleProxyServiceMount> ormProxyMountStatusDir_;

  ServiceMountConfigSms serviceMountConfigSm_;
  ServicePublishConfigSms servicePublishConfigSm_;
  bool initialized_ = false;
};

/// Makes the machine and lets it deal with everything that is present. For the controller process.
Orm::Ptr<ServiceConfigDirSm> serviceConfigDirSmFactory(
    const Orm::Ptr<Controllerdb::Status const>& controllerdbStatus,
    const Orm::Ptr<Fennix::Dir const>& mountConfigDir, const Orm::Ptr<Fennix::Dir>& mountStatusDir,
    const Orm::Ptr<Fennix::Dir const>& publishConfigDir,
    const Orm::Ptr<Fennix::Dir>& publishStatusDir,
    const Orm::Ptr<Fennix::Dir const>& proxyMountConfigDir,
    const Orm::Ptr<Fennix::Dir>& proxyMountStatusDir,
    const Orm::Ptr<Controllerdb::PublishStatus>& controllerdbPublishStatus,
    const Orm::Ptr<MountsRegistry>& mountsRegistry);

}  // namespace Controller
