#pragma once

#include "Platform/Entities/ControllerOob/Status.h"
#include "Platform/Entities/ServiceConfig/ServiceConfigDir.h"
#include "Platform/Orm/Collection.h"
#include "Platform/Orm/Reactor.h"
#include "Platform/Orm/Sm.h"

namespace Controller {

class MountsRegistrySm;

/// Follows the switches that are known but inactive, so that mounts that were kept for them go at
/// the right moment: when a switch is remembered no longer, and when a service is switched off.
///
/// The one such child of MountsRegistrySm. Loop thread only. A switch that is forgotten costs one
/// decision an entry; a service that is disabled one disconnection an entry and inactive switch.
class InactiveClientSm : public Orm::Sm, private Kobble::Counted<InactiveClientSm> {
 public:
  /// Reacts to the inactive clients.
  class OrmOobStatus final : public Orm::ReactorOn<ControllerOob::Status, InactiveClientSm> {
   public:
    explicit OrmOobStatus(InactiveClientSm* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
  };

  /// Reacts to the services that are configured.
  class OrmServiceConfigDir final : public Orm::ReactorOn<ServiceConfigDir, InactiveClientSm> {
   public:
    explicit OrmServiceConfigDir(InactiveClientSm* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
  };

  /// Reacts to one service's enabled flag.
  class OrmServiceConfig final : public Orm::ReactorOn<ServiceConfigV1, InactiveClientSm>,
                                 private Kobble::Counted<OrmServiceConfig> {
   public:
    explicit OrmServiceConfig(InactiveClientSm* owner) : ReactorOn(owner) {}
    const Orm::String& serviceName() const { return notifier()->serviceName(); }
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
    void handleEnabled();
    /// Once it is held: what it does at once may be what it goes by.
    void handleInitialized();

   private:
    void onNotifier() override {
      if (initialized_) handleEnabled();
    }

    bool initialized_ = false;
  };

  InactiveClientSm(Orm::Ptr<ControllerOob::Status const> oobStatus,
                   const Orm::Ptr<ServiceConfigDir const>& serviceConfigDir,
                   MountsRegistrySm* mountsRegistrySm);

  void hasNotificationActiveIs(bool active) override;

  void handleInactivePeer(const SystemId& systemId);
  void serviceConfigIs(const Orm::Ptr<ServiceConfigV1 const>& config);
  void serviceConfigDel(const Orm::String& serviceName) { serviceConfig_.take(serviceName); }
  void serviceConfigDelAll() { serviceConfig_.clear(); }
  /// Lets the services' reactors go. Harmless when repeated.
  void doCleanup();

 private:
  Orm::Ptr<ControllerOob::Status const> oobStatus_;
  MountsRegistrySm* mountsRegistrySm_;
  OrmOobStatus ormOobStatus_;
  OrmServiceConfigDir ormServiceConfigDir_;
  Orm::Collection<Orm::Owned<OrmServiceConfig>, &OrmServiceConfig::serviceName> serviceConfig_;
};

Orm::Ptr<InactiveClientSm> inactiveClientSmFactory(
    const Orm::Ptr<ControllerOob::Status const>& oobStatus,
    const Orm::Ptr<ServiceConfigDir const>& serviceConfigDir, MountsRegistrySm* mountsRegistrySm);

}  // namespace Controller
