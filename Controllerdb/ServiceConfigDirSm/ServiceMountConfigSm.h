#pragma once

#include "Controllerdb/ServiceConfigDirSm/ServiceMountGroupSm.h"
#include "Platform/Orm/Collection.h"

namespace Controller {

class ServiceConfigDirSm;

/// The machine of one service's mount configuration: keeps one ServiceMountGroupSm per mount group
/// from the time when the configuration has a service name.
///
/// A child of ServiceConfigDirSm while the service has both a mount configuration and a mount
/// status. Loop thread only.
class ServiceMountConfigSm : public Orm::Sm, private Kobble::Counted<ServiceMountConfigSm> {
 public:
  /// Reacts to the configuration.
  class OrmServiceMountConfig final
      : public Orm::ReactorOn<ServiceMountConfig, ServiceMountConfigSm> {
   public:
    explicit OrmServiceMountConfig(ServiceMountConfigSm* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
  };

  /// `key` is the name under which the configuration stands in its directory.
  ServiceMountConfigSm(Orm::String key, bool isProxy,
                       Orm::Ptr<Controllerdb::Status const> controllerdbStatus,
                       Orm::Ptr<ServiceMountConfig const> mountConfig,
                       Orm::Ptr<ServiceMountStatus> mountStatus,
                       Orm::Ptr<MountsRegistry> mountsRegistry, ServiceConfigDirSm* parent);

  const Orm::String& key() const { return key_; }
  /// The configuration came from the directory of proxy services.
  bool isProxy() const { return isProxy_; }

  /// Registers on what it watches and deals with what is present. Once, by the parent, which holds
  /// the machine by then, so that whoever is told of what it does may take it away again.
  void start();

  void hasNotificationActiveIs(bool active) override;

  void handleInitialized();
  void handleServiceName();
  void handleMountGroupConfig(const Orm::String& groupName);
  void handleMountGroupConfig();

  using MountGroupSms =
      Orm::Collection<Orm::Ptr<ServiceMountGroupSm>, &ServiceMountGroupSm::groupName>;
  const MountGroupSms& mountGroupSm() const { return mountGroupSm_; }
  Orm::Ptr<ServiceMountGroupSm> mountGroupSmIs(
      const Orm::Ptr<Controllerdb::Status const>& controllerdbStatus,
      const Orm::Ptr<ServiceMountGroupConfig const>& mountGroupConfig,
      const Orm::Ptr<ServiceMountConfig const>& mountConfig,
      const Orm::Ptr<ServiceMountStatus>& mountStatus,
      const Orm::Ptr<MountsRegistry>& mountsRegistry);
  /// Cleans the group's machine up and lets it go.
  void mountGroupSmDel(const Orm::String& groupName);

  /// Takes the service's mounters, and the status that they caused, away. Harmless when repeated.
  void doCleanup();

 private:
  Orm::String key_;
  Orm::Ptr<Controllerdb::Status const> controllerdbStatus_;
  Orm::Ptr<ServiceMountConfig const> mountConfig_;
  Orm::Ptr<ServiceMountStatus> mountStatus_;
  Orm::Ptr<MountsRegistry> mountsRegistry_;
  ServiceConfigDirSm* parent_;

  OrmServiceMountConfig ormServiceMountConfig_;
  MountGroupSms mountGroupSm_;
  bool isProxy_;
  bool initialized_ = false;
};

Orm::Ptr<ServiceMountConfigSm> serviceMountConfigSmFactory(
    const Orm::String& key, bool isProxy,
    const Orm::Ptr<Controllerdb::Status const>& controllerdbStatus,
    const Orm::Ptr<ServiceMountConfig const>& mountConfig,
    const Orm::Ptr<ServiceMountStatus>& mountStatus, const Orm::Ptr<MountsRegistry>& mountsRegistry,
    ServiceConfigDirSm* parent);

}  // namespace Controller
