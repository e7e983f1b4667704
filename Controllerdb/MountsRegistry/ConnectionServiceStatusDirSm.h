#pragma once

#include "Controllerdb/MountsRegistry/Connection.h"
#include "Platform/Entities/ServiceStatus/ServiceStatusDir.h"
#include "Platform/Orm/Collection.h"
#include "Platform/Orm/Reactor.h"
#include "Platform/Orm/Sm.h"

namespace Controller {

class MountsRegistrySm;

/// The machine of one connected peer: watches what the switch reports of each service and tells
/// the registry machine when a service's version on the connection may have changed.
///
/// A child of MountsRegistrySm while the peer is in the peer table; the registry machine calls
/// doCleanup before it lets the machine go. Loop thread only.
class ConnectionServiceStatusDirSm : public Orm::Sm,
                                     private Kobble::Counted<ConnectionServiceStatusDirSm> {
 public:
  /// Reacts to the services of the connection.
  class OrmControllerServiceStatusDir final
      : public Orm::ReactorOn<ServiceStatusDir, ConnectionServiceStatusDirSm> {
   public:
    explicit OrmControllerServiceStatusDir(ConnectionServiceStatusDirSm* owner)
        : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
  };

  class OrmServiceStatus;

  /// Reacts to the negotiation's result of one service.
  class OrmVersionStatus final : public Orm::ReactorOn<ServiceVersionStatusV1, OrmServiceStatus> {
   public:
    explicit OrmVersionStatus(OrmServiceStatus* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;

   private:
    void onNotifier() override;
  };

  /// Reacts to one service's status. Decides its service's entries once when it is made.
  class OrmServiceStatus final
      : public Orm::ReactorOn<ServiceStatusV1, ConnectionServiceStatusDirSm>,
        private Kobble::Counted<OrmServiceStatus> {
   public:
    explicit OrmServiceStatus(ConnectionServiceStatusDirSm* owner)
        : ReactorOn(owner), versionStatus_(this) {}

    const Orm::String& serviceName() const { return notifier()->serviceName(); }

    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
    void handleEnabled();
    void handleVersionStatus();
    void handleInitialized();
    void doCleanup();
    void notificationActiveIs(bool active);

    void versionStatusIs(const Orm::Ptr<ServiceVersionStatusV1 const>& status) {
      versionStatus_.notifierIs(status);
    }
    void versionStatusDel() { versionStatus_.notifierIs(nullptr); }

   private:
    void onNotifier() override;

    OrmVersionStatus versionStatus_;
    bool initialized_ = false;
  };

  ConnectionServiceStatusDirSm(const Orm::String& connectionName,
                               const Orm::Ptr<ServiceStatusDir const>& serviceStatusDir,
                               MountsRegistrySm* mountsRegistrySm,
                               Orm::Ptr<Peer const> peer = nullptr);

  /// The peer that it was made for; a peer that comes back is another one.
  const Orm::Ptr<Peer const>& peer() const { return peer_; }
  /// The text form of the peer's id; the machine's key.
  const Orm::String& connectionName() const { return connection_.name; }
  const Connection& connection() const { return connection_; }
  MountsRegistrySm* mountsRegistrySm() const { return mountsRegistrySm_; }

  /// Deals with the services that are present. Once, by the parent, which holds
  /// the machine by then, so that whoever is told of what it does may take it away again.
  void start();

  void hasNotificationActiveIs(bool active) override;

  void serviceStatusIs(const Orm::Ptr<ServiceStatusV1 const>& status);
  /// Lets the service's reactor clean up, so that its entries are decided without it, and go.
  void serviceStatusDel(const Orm::String& serviceName);
  void serviceStatusDelAll() { serviceStatus_.clear(); }

  void handleInitialized();
  /// Announces the change of the connection to all entries. Harmless when repeated.
  void doCleanup();

 private:
  Connection connection_;
  Orm::Ptr<Peer const> peer_;
  MountsRegistrySm* mountsRegistrySm_;
  OrmControllerServiceStatusDir serviceStatusDir_;
  Orm::Collection<Orm::Owned<OrmServiceStatus>, &OrmServiceStatus::serviceName> serviceStatus_;
  bool initialized_ = false;
  bool cleanedUp_ = false;
};

Orm::Ptr<ConnectionServiceStatusDirSm> connectionServiceStatusDirSmFactory(
    const Orm::String& connectionName, const Orm::Ptr<ServiceStatusDir const>& serviceStatusDir,
    MountsRegistrySm* mountsRegistrySm, const Orm::Ptr<Peer const>& peer = nullptr);

}  // namespace Controller
