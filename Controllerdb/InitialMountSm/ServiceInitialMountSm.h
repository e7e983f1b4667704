#pragma once

#include "Controllerdb/InitialMountSm/MountGroupInitialMountSm.h"
#include "Platform/Entities/Controllerdb/Status.h"
#include "Platform/Entities/ServiceMount/ServiceMountConfig.h"

namespace Controller {

/// Tracks the initial mounts of one service: keeps one MountGroupInitialMountSm per mount group
/// while the service's configuration was written under the present leader's generation.
///
/// A child of InitialMountSm, which calls doCleanup before it lets the machine go. Loop thread
/// only.
class ServiceInitialMountSm : public Orm::Sm, private Kobble::Counted<ServiceInitialMountSm> {
 public:
  /// Reacts to the leader's generation.
  class OrmControllerdbStatus final
      : public Orm::ReactorOn<Controllerdb::Status, ServiceInitialMountSm> {
   public:
    explicit OrmControllerdbStatus(ServiceInitialMountSm* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
  };

  /// Reacts to the configuration's generation and groups.
  class OrmServiceMountConfig final
      : public Orm::ReactorOn<ServiceMountConfig, ServiceInitialMountSm> {
   public:
    explicit OrmServiceMountConfig(ServiceInitialMountSm* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
  };

  /// `key` is the name under which the configuration stands in its directory.
  ServiceInitialMountSm(Orm::String key, Orm::Ptr<ServiceMountConfig const> serviceMountConfig,
                        Orm::Ptr<ServiceMountStatus> serviceMountStatus,
                        Orm::Ptr<ConnectionPeriod const> connectionPeriod,
                        Orm::Ptr<ControllerOob::Status const> oobStatus,
                        Orm::Ptr<Controllerdb::Status const> controllerdbStatus);

  const Orm::String& key() const { return key_; }

  /// Registers on what it watches and deals with what is present. Once, by the parent, which holds
  /// the machine by then, so that whoever is told of what it does may take it away again.
  void start();

  void hasNotificationActiveIs(bool active) override;

  void handleInitialized();
  void handleLeaderGenId();
  void handleMountGroupConfig(const Orm::String& groupName);
  void handleMountGroupConfig();
  /// The generations agree and are known.
  bool canHandleMountGroup();
  /// Lets all groups' machines clean up and go. Harmless when repeated.
  void doCleanup();

  using MountGroupInitialMountSms =
      Orm::Collection<Orm::Ptr<MountGroupInitialMountSm>, &MountGroupInitialMountSm::name>;
  const MountGroupInitialMountSms& mountGroupInitialMountSm() const {
    return mountGroupInitialMountSm_;
  }
  /// Null when the group was taken away, or is being made by a caller, while it is made.
  Orm::Ptr<MountGroupInitialMountSm> mountGroupInitialMountSmIs(
      const Orm::String& groupName, const Orm::Ptr<ServiceMountStatus>& serviceMountStatus,
      const Orm::Ptr<ControllerOob::Status const>& oobStatus,
      const Orm::Ptr<ConnectionPeriod const>& connectionPeriod);
  /// Cleans the group's machine up and lets it go.
  void mountGroupInitialMountSmDel(const Orm::String& groupName);
  void mountGroupInitialMountSmDelAll();

 private:
  Orm::String key_;
  Orm::Ptr<ServiceMountConfig const> serviceMountConfig_;
  Orm::Ptr<ServiceMountStatus> serviceMountStatus_;
  Orm::Ptr<ConnectionPeriod const> connectionPeriod_;
  Orm::Ptr<ControllerOob::Status const> oobStatus_;
  Orm::Ptr<Controllerdb::Status const> controllerdbStatus_;

  OrmControllerdbStatus ormControllerdbStatus_;
  OrmServiceMountConfig ormServiceMountConfig_;
  MountGroupInitialMountSms mountGroupInitialMountSm_;
  bool initialized_ = false;
};

Orm::Ptr<ServiceInitialMountSm> serviceInitialMountSmFactory(
    const Orm::String& key, const Orm::Ptr<ServiceMountConfig const>& serviceMountConfig,
    const Orm::Ptr<ServiceMountStatus>& serviceMountStatus,
    const Orm::Ptr<ConnectionPeriod const>& connectionPeriod,
    const Orm::Ptr<ControllerOob::Status const>& oobStatus,
    const Orm::Ptr<Controllerdb::Status const>& controllerdbStatus);

}  // namespace Controller
