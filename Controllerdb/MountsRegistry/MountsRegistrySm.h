#pragma once

#include <cstdint>

#include "Controllerdb/MountsRegistry/ConnectionServiceStatusDirSm.h"
#include "Controllerdb/MountsRegistry/InactiveClientSm.h"
#include "Controllerdb/MountsRegistry/MountsRegistry.h"
#include "Controllerdb/MountsRegistry/MountsRegistryEntrySm.h"
#include "Controllerdb/MountsRegistry/MountsRegistryTrace.h"
#include "Controllerdb/MountsRegistry/ProxyServiceName.h"
#include "Controllerdb/MountsRegistry/PublishRegistryEntrySm.h"
#include "Controllerdb/MountsRegistry/ServiceIndex.h"
#include "Platform/Entities/Controllerdb/PublishStatus.h"
#include "Platform/Entities/Heartbeat/Config.h"

namespace Controller {

/// The machine over the whole registry, one of the three that a controller process makes.
///
/// It keeps a machine per mount entry, per publish entry and per connected peer, and one for the
/// inactive clients; forwards every change of a connection to the entries concerned; answers which
/// version of a service was negotiated on a connection; and mirrors into the controller database
/// which services' publications are ready.
///
/// The controller process owns it and keeps its inputs longer than it. Loop thread only. A switch
/// that comes or goes costs one decision an entry; a service's version on a connection one
/// decision an entry of that service.
class MountsRegistrySm : public Orm::Sm, private Kobble::Counted<MountsRegistrySm> {
 public:
  /// Reacts to the registry.
  class OrmMountsRegistry final : public Orm::ReactorOn<MountsRegistry, MountsRegistrySm> {
   public:
    explicit OrmMountsRegistry(MountsRegistrySm* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
  };

  /// Reacts to which peer table there is.
  class OrmOobStatus final : public Orm::ReactorOn<ControllerOob::Status, MountsRegistrySm> {
   public:
    explicit OrmOobStatus(MountsRegistrySm* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
  };

  /// Reacts to the peers.
  class OrmPeerTable final : public Orm::ReactorOn<PeerTable, MountsRegistrySm> {
   public:
    explicit OrmPeerTable(MountsRegistrySm* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;

   private:
    void onNotifier() override { owner()->handlePeer(); }
  };

  MountsRegistrySm(Orm::Ptr<MountsRegistry> mountsRegistry,
                   Orm::Ptr<ControllerOob::Status const> oobStatus,
                   Orm::Ptr<Heartbeat::Config const> heartbeatConfig,
                   Orm::Ptr<Fennix::Dir> directory,
                   Orm::Ptr<Controllerdb::PublishStatus> controllerdbPublishStatus,
                   Orm::Ptr<ServiceConfigDir const> serviceConfigDir);
  ~MountsRegistrySm() override;

  void hasNotificationActiveIs(bool active) override;

  // ---- reactions

  void handleMountEntry(const Orm::String& name);
  void handleMountEntry();
  void handlePublishEntry(const Orm::String& name);
  void handlePublishEntry();
  void handleServicePublishReady(const Orm::String& serviceName);
  void handleServicePublishReady();
  void handlePeer(const SystemId& systemId);
  void handlePeer();
  /// A connection changed: all entries decide it.
  void handleSwitchConnection(const SystemId& systemId);
  void handleSwitchConnection(const Connection& connection);
  /// All entries decide all peers.
  void handleSwitchConnection();
  void handleServiceVersion(const Orm::String& serviceName, const Orm::String& connectionName);
  void handleServiceVersion(const Orm::String& serviceName, const Connection& connection);
  /// A service's version on a connection may have changed: its entries decide the connection.
  void handleServiceSwitchConnection(const SystemId& systemId, const Orm::String& serviceName);
  void handleServiceSwitchConnection(const Connection& connection, const Orm::String& serviceName);
  void peerTableIs(const Orm::Ptr<PeerTable>& peerTable) {
    lastNegotiation_ = Negotiation();
    ormPeerTable_.notifierIs(peerTable);
  }

  // ---- answers to the entries

  /// The version of a service that was negotiated on a connection, 0 when none was. A proxy
  /// service has that of the service that it stands for.
  std::uint32_t negotiatedServiceVersionForConnection(const Orm::String& serviceName,
                                                      const Orm::String& connectionName);
  /// The same without parsing and allocating. O(1).
  template <bool kTraced = true>
  std::uint32_t negotiatedServiceVersionForConnection(const Orm::String& serviceName,
                                                      const Connection& connection);
  /// The same; a few compares for what was asked for last: one event makes each entry of a service
  /// ask for its version, several times.
  template <bool kTraced = true>
  std::uint32_t negotiatedVersion(const Orm::String& serviceName, const Connection& connection) {
    if (lastNegotiation_.asOf != NegotiationPart::changes() ||
        lastNegotiation_.serviceName != serviceName ||
        lastNegotiation_.connectionName != connection.name ||
        (kTraced && mountsRegistryTrace.enabled(8))) {
      lastNegotiationIs<kTraced>(serviceName, connection);
    }
    return lastNegotiation_.version;
  }

  /// A system with the name of its connection, also when it is not connected any more. Cheapest for
  /// the one that was asked for last: the mounts of a switch report one after the other.
  Connection connectionOf(const SystemId& systemId) {
    if (lastConnection_.systemId != systemId || lastConnection_.name.empty()) {
      lastConnection_ = namedConnection(systemId);
    }
    return lastConnection_;
  }

  const Orm::Ptr<MountsRegistry>& mountsRegistry() const { return mountsRegistry_; }
  const Orm::Ptr<Heartbeat::Config const>& heartbeatConfig() const { return heartbeatConfig_; }
  const Orm::Ptr<Controllerdb::PublishStatus>& controllerdbPublishStatus() const {
    return controllerdbPublishStatus_;
  }
  /// The table that is watched; null while there is none.
  const PeerTable* peerTable() const { return ormPeerTable_.notifier(); }
  /// Whether mounts that take too long are reported: a toggle, read when the machine is made.
  bool mountMonitor() const { return mountMonitor_; }
  std::uint64_t nextOrder() { return nextOrder_++; }

  // ---- the index of entries by real service name, kept by the entries themselves

  void mountServiceIs(const Orm::String& realServiceName, MountsRegistryEntrySm& entry) {
    mountsOfService_.add(realServiceName, entry);
  }
  void mountServiceDel(const Orm::String& realServiceName, MountsRegistryEntrySm& entry) {
    mountsOfService_.remove(realServiceName, entry);
  }
  void publishServiceIs(const Orm::String& realServiceName, PublishRegistryEntrySm& entry) {
    publicationsOfService_.add(realServiceName, entry);
  }
  void publishServiceDel(const Orm::String& realServiceName, PublishRegistryEntrySm& entry) {
    publicationsOfService_.remove(realServiceName, entry);
  }

  const ServiceIndex<MountsRegistryEntrySm>& mountsOfService() const { return mountsOfService_; }
  const ServiceIndex<PublishRegistryEntrySm>& publicationsOfService() const {
    return publicationsOfService_;
  }

  // ---- children; each is cleaned up before it is let go

  using MountsRegistryEntrySms =
      Orm::Collection<Orm::Ptr<MountsRegistryEntrySm>, &MountsRegistryEntrySm::entryName>;
  using PublishRegistryEntrySms =
      Orm::Collection<Orm::Ptr<PublishRegistryEntrySm>, &PublishRegistryEntrySm::entryName>;
  using ConnectionServiceStatusDirSms =
      Orm::Collection<Orm::Ptr<ConnectionServiceStatusDirSm>,
                      &ConnectionServiceStatusDirSm::connectionName>;

  const MountsRegistryEntrySms& mountsRegistryEntrySm() const { return mountsRegistryEntrySm_; }
  Orm::Ptr<MountsRegistryEntrySm> mountsRegistryEntrySmIs(
      const Orm::Ptr<MountsRegistryEntry>& entry,
      const Orm::Ptr<ControllerOob::Status const>& oobStatus,
      const Orm::Ptr<ServiceConfigDir const>& serviceConfigDir,
      const Orm::Ptr<Fennix::Dir>& directory);
  void mountsRegistryEntrySmDel(const Orm::String& name);

  const PublishRegistryEntrySms& publishRegistryEntrySm() const { return publishRegistryEntrySm_; }
  Orm::Ptr<PublishRegistryEntrySm> publishRegistryEntrySmIs(
      const Orm::Ptr<PublishRegistryEntry>& entry,
      const Orm::Ptr<ControllerOob::Status const>& oobStatus,
      const Orm::Ptr<Controllerdb::PublishStatus>& controllerdbPublishStatus);
  void publishRegistryEntrySmDel(const Orm::String& name);

  const ConnectionServiceStatusDirSms& connectionServiceStatusDirSm() const {
    return connectionServiceStatusDirSm_;
  }
  Orm::Ptr<ConnectionServiceStatusDirSm> connectionServiceStatusDirSmIs(
      const Orm::String& connectionName, const Orm::Ptr<ServiceStatusDir const>& serviceStatusDir,
      const Orm::Ptr<Peer const>& peer = nullptr);
  void connectionServiceStatusDirSmDel(const Orm::String& connectionName);

  const Orm::Ptr<InactiveClientSm>& inactiveClientSm() const { return inactiveClientSm_; }
  const Orm::Ptr<InactiveClientSm>& inactiveClientSmIs(
      const Orm::Ptr<ControllerOob::Status const>& oobStatus,
      const Orm::Ptr<ServiceConfigDir const>& serviceConfigDir);
  void inactiveClientSmDel();

 private:
  void handleInitialized();
  Connection namedConnection(const SystemId& systemId) const;
  const ServiceStatusDir* serviceStatusDir(const Peer& peer) const;
  template <bool kTraced>
  void lastNegotiationIs(const Orm::String& serviceName, const Connection& connection);
  /// The name itself, or the real service of a proxy; allocates when a proxy is first seen.
  const Orm::String& realServiceNameOf(const Orm::String& serviceName) {
    return isProxyServiceName(serviceName) ? realNameOfProxy(serviceName) : serviceName;
  }
  const Orm::String& realNameOfProxy(const Orm::String& serviceName);

  Orm::Ptr<MountsRegistry> mountsRegistry_;
  Orm::Ptr<ControllerOob::Status const> oobStatus_;
  Orm::Ptr<Heartbeat::Config const> heartbeatConfig_;
  Orm::Ptr<Fennix::Dir> directory_;
  Orm::Ptr<Controllerdb::PublishStatus> controllerdbPublishStatus_;
  Orm::Ptr<ServiceConfigDir const> serviceConfigDir_;

  OrmMountsRegistry ormMountsRegistry_;
  OrmOobStatus ormOobStatus_;
  OrmPeerTable ormPeerTable_;

  ServiceIndex<MountsRegistryEntrySm> mountsOfService_;
  ServiceIndex<PublishRegistryEntrySm> publicationsOfService_;
  Orm::ValueCollection<Orm::String, Orm::String> realNameOfProxy_;
  /// The version that was asked for last; the empty one is of no connection.
  struct Negotiation {
    Orm::String serviceName;
    Orm::String connectionName;
    std::uint64_t asOf = 0;  // NegotiationPart::changes()
    std::uint32_t version = 0;
  };
  Negotiation lastNegotiation_;
  Connection lastConnection_{SystemId(), Orm::String()};
  std::uint64_t nextOrder_ = 0;
  bool mountMonitor_;
  bool initialized_ = false;

  MountsRegistryEntrySms mountsRegistryEntrySm_;
  PublishRegistryEntrySms publishRegistryEntrySm_;
  ConnectionServiceStatusDirSms connectionServiceStatusDirSm_;
  Orm::Ptr<InactiveClientSm> inactiveClientSm_;
};

/// Makes the machine and lets it deal with everything that is present. For the controller process.
Orm::Ptr<MountsRegistrySm> mountsRegistrySmFactory(
    const Orm::Ptr<MountsRegistry>& mountsRegistry,
    const Orm::Ptr<ControllerOob::Status const>& oobStatus,
    const Orm::Ptr<Heartbeat::Config const>& heartbeatConfig,
    const Orm::Ptr<Fennix::Dir>& directory,
    const Orm::Ptr<Controllerdb::PublishStatus>& controllerdbPublishStatus,
    const Orm::Ptr<ServiceConfigDir const>& serviceConfigDir);

}  // namespace Controller
