#pragma once

#include "Controllerdb/MountsRegistry/MountsRegistry.h"
#include "Platform/Entities/Controllerdb/Status.h"
#include "Platform/Entities/ServiceMount/ServiceMountConfig.h"
#include "Platform/Entities/ServiceMount/ServiceMountStatus.h"
#include "Platform/Orm/Reactor.h"
#include "Platform/Orm/Sm.h"

namespace Controller {

class ServiceMountConfigSm;

/// The machine of one mount group of one service: keeps the service registered as a mounter of
/// every path of the group, while the configuration was written under the present leader's
/// generation (a proxy service's always counts).
///
/// A child of ServiceMountConfigSm, which calls doCleanup before it lets the machine go. Loop
/// thread only. A change of a path costs that path; a change of a generation every path.
class ServiceMountGroupSm : public Orm::Sm, private Kobble::Counted<ServiceMountGroupSm> {
 public:
  /// Reacts to the leader's generation.
  class OrmControllerdbStatus final
      : public Orm::ReactorOn<Controllerdb::Status, ServiceMountGroupSm> {
   public:
    explicit OrmControllerdbStatus(ServiceMountGroupSm* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
  };

  /// Reacts to the configuration's generation.
  class OrmServiceMountConfig final
      : public Orm::ReactorOn<ServiceMountConfig, ServiceMountGroupSm> {
   public:
    explicit OrmServiceMountConfig(ServiceMountGroupSm* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
  };

  /// Reacts to the group's paths.
  class OrmMountGroupConfig final
      : public Orm::ReactorOn<ServiceMountGroupConfig, ServiceMountGroupSm> {
   public:
    explicit OrmMountGroupConfig(ServiceMountGroupSm* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
  };

  ServiceMountGroupSm(Orm::Ptr<Controllerdb::Status const> controllerdbStatus,
                      Orm::Ptr<ServiceMountGroupConfig const> mountGroupConfig,
                      Orm::Ptr<ServiceMountConfig const> serviceMountConfig,
                      Orm::Ptr<ServiceMountStatus> serviceMountStatus,
                      Orm::Ptr<MountsRegistry> mountsRegistry, ServiceMountConfigSm* parent);

  const Orm::Ptr<ServiceMountGroupConfig const>& mountGroupConfig() const {
    return mountGroupConfig_;
  }
  const Orm::String& groupName() const { return mountGroupConfig_->groupName(); }

  /// Registers on what it watches and deals with what is present. Once, by the parent, which holds
  /// the machine by then, so that whoever is told of what it does may take it away again.
  void start();

  void hasNotificationActiveIs(bool active) override;

  void handleInitialized();
  void handleLeaderGenId();
  void handleMountConfig(const Orm::String& path);
  void handleMountConfig();

  /// The generations agree, or the service is a proxy.
  bool canMount();
  void addMountConfig(const Orm::String& path);
  void removeMountConfig(const Orm::String& path);

  /// Takes the service off every path of the group. Harmless when repeated.
  void doCleanup();
  /// The same when the group has gone: nothing brings its paths back.
  void doFinalCleanup();

 private:
  /// canMount() without its trace.
  bool isOpen() const;
  bool hasMounter(const Orm::String& path) const;
  static bool isGoing(const Mounter& mounter, const Orm::String& path);
  Orm::Ptr<MountsRegistryEntry> newMountEntry(const MountConfig& mountConfig);

  Orm::Ptr<Controllerdb::Status const> controllerdbStatus_;
  Orm::Ptr<ServiceMountGroupConfig const> mountGroupConfig_;
  Orm::Ptr<ServiceMountConfig const> serviceMountConfig_;
  Orm::Ptr<ServiceMountStatus> serviceMountStatus_;
  Orm::Ptr<MountsRegistry> mountsRegistry_;
  ServiceMountConfigSm* parent_;

  OrmControllerdbStatus ormControllerdbStatus_;
  OrmServiceMountConfig ormServiceMountConfig_;
  OrmMountGroupConfig ormMountGroupConfig_;
  bool initialized_ = false;
};

Orm::Ptr<ServiceMountGroupSm> serviceMountGroupSmFactory(
    const Orm::Ptr<Controllerdb::Status const>& controllerdbStatus,
    const Orm::Ptr<ServiceMountGroupConfig const>& mountGroupConfig,
    const Orm::Ptr<ServiceMountConfig const>& serviceMountConfig,
    const Orm::Ptr<ServiceMountStatus>& serviceMountStatus,
    const Orm::Ptr<MountsRegistry>& mountsRegistry, ServiceMountConfigSm* parent);

}  // namespace Controller
