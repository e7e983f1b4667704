#include "Controllerdb/MountsRegistry/MountsRegistrySm.h"

#include <limits>
#include <optional>

#include "Platform/Flipset/Flipset.h"

namespace Controller {

using Orm::Ptr;
using Orm::String;

Ptr<MountsRegistrySm> mountsRegistrySmFactory(
    const Ptr<MountsRegistry>& mountsRegistry, const Ptr<ControllerOob::Status const>& oobStatus,
    const Ptr<Heartbeat::Config const>& heartbeatConfig, const Ptr<Fennix::Dir>& directory,
    const Ptr<Controllerdb::PublishStatus>& controllerdbPublishStatus,
    const Ptr<ServiceConfigDir const>& serviceConfigDir) {
  const Orm::ActivityScope scope;
  return Orm::make<MountsRegistrySm>(mountsRegistry, oobStatus, heartbeatConfig, directory,
                                     controllerdbPublishStatus, serviceConfigDir);
}

// ---- construct

MountsRegistrySm::MountsRegistrySm(Ptr<MountsRegistry> mountsRegistry,
                                   Ptr<ControllerOob::Status const> oobStatus,
                                   Ptr<Heartbeat::Config const> heartbeatConfig,
                                   Ptr<Fennix::Dir> directory,
                                   Ptr<Controllerdb::PublishStatus> controllerdbPublishStatus,
                                   Ptr<ServiceConfigDir const> serviceConfigDir)
    : mountsRegistry_(std::move(mountsRegistry)),
      oobStatus_(std::move(oobStatus)),
      heartbeatConfig_(std::move(heartbeatConfig)),
      directory_(std::move(directory)),
      controllerdbPublishStatus_(std::move(controllerdbPublishStatus)),
      serviceConfigDir_(std::move(serviceConfigDir)),
      ormMountsRegistry_(this),
      ormOobStatus_(this),
      ormPeerTable_(this),
      mountMonitor_(Flipset::toggle("ControllerCommon.json", "ControllerMountMonitor", true)) {
  ormMountsRegistry_.notifierIs(mountsRegistry_);
  handleMountEntry();
  handlePublishEntry();
  ormOobStatus_.notifierIs(oobStatus_);
  peerTableIs(oobStatus_->peerTable());
  handleInitialized();
}

void MountsRegistrySm::handleInitialized() {
  initialized_ = true;
  inactiveClientSmIs(oobStatus_, serviceConfigDir_)->hasNotificationActiveIs(true);
  handleSwitchConnection();
  handleServicePublishReady();
}

void MountsRegistrySm::hasNotificationActiveIs(bool active) {
  ormMountsRegistry_.hasNotificationActiveIs(active);
  ormOobStatus_.hasNotificationActiveIs(active);
  ormPeerTable_.hasNotificationActiveIs(active);
  if (inactiveClientSm_) inactiveClientSm_->hasNotificationActiveIs(active);
  for (const auto& entry : publishRegistryEntrySm_) entry->hasNotificationActiveIs(active);
  for (const auto& entry : mountsRegistryEntrySm_) entry->hasNotificationActiveIs(active);
  for (const auto& connection : connectionServiceStatusDirSm_) {
    connection->hasNotificationActiveIs(active);
  }
}

// ---- react

void MountsRegistrySm::OrmMountsRegistry::onAttribute(Orm::AttributeId attribute,
                                                      const Orm::Key& key) {
  switch (attribute) {
    case MountsRegistry::Attr::mountEntry:
      owner()->handleMountEntry(key.as<String>());
      break;
    case MountsRegistry::Attr::publishEntry:
      owner()->handlePublishEntry(key.as<String>());
      break;
    case MountsRegistry::Attr::servicePublishReady:
      owner()->handleServicePublishReady(key.as<String>());
      break;
    default:
      break;
  }
}

void MountsRegistrySm::OrmOobStatus::onAttribute(Orm::AttributeId attribute, const Orm::Key&) {
  if (attribute == ControllerOob::Status::Attr::peerTable) {
    owner()->peerTableIs(notifier()->peerTable());
  }
}

void MountsRegistrySm::OrmPeerTable::onAttribute(Orm::AttributeId attribute, const Orm::Key& key) {
  if (attribute == PeerTable::Attr::peer) owner()->handlePeer(key.as<SystemId>());
}

void MountsRegistrySm::handleMountEntry() {
  mountsRegistry_->mountEntry().walk(
      [this](const MountsRegistryEntry& entry) { handleMountEntry(entry.name()); });
}

void MountsRegistrySm::handleMountEntry(const String& name) {
  REGISTRY_TRACE(8, "MountsRegistrySm::", "handleMountEntry", ": ", " Remote Path:", name);
  const Ptr<MountsRegistryEntry> entry(mountsRegistry_->mountEntry(name));
  const Ptr<MountsRegistryEntrySm> machine(mountsRegistryEntrySm_.find(name));
  if (entry) {
    if (machine && machine->registryEntry() == entry) return;
    // Whoever was told first of the entry before this one has replaced it.
    if (machine) mountsRegistryEntrySmDel(name);
    mountsRegistryEntrySmIs(entry, oobStatus_, serviceConfigDir_, directory_);
  } else if (machine) {
    REGISTRY_TRACE(8, "MountsRegistrySm::", "handleMountEntry", ": ",
                   " Deleting registry entry sm for :", name);
    mountsRegistryEntrySmDel(name);
  }
}

void MountsRegistrySm::handlePublishEntry() {
  mountsRegistry_->publishEntry().walk(
      [this](const PublishRegistryEntry& entry) { handlePublishEntry(entry.name()); });
}

void MountsRegistrySm::handlePublishEntry(const String& name) {
  REGISTRY_TRACE(8, "MountsRegistrySm::", "handlePublishEntry", ": ", " Controller Path:", name);
  const Ptr<PublishRegistryEntry> pe(mountsRegistry_->publishEntry(name));
  const Ptr<PublishRegistryEntrySm> preSm(publishRegistryEntrySm_.find(name));
  if (pe) {
    Orm::assertThat(!preSm || pe->serviceName() == preSm->publishEntry()->serviceName(),
                    "!preSm || pe->serviceName() == preSm->publishEntry()->serviceName()");
    // Whoever was told first of the entry before this one has replaced it.
    if (preSm && preSm->publishEntry() != pe) publishRegistryEntrySmDel(name);
    publishRegistryEntrySmIs(pe, oobStatus_, controllerdbPublishStatus_);
  } else if (preSm) {
    REGISTRY_TRACE(8, "MountsRegistrySm::", "handlePublishEntry", ": ",
                   " Deleting publish sm for: ", name);
    publishRegistryEntrySmDel(name);
  }
}

void MountsRegistrySm::handleServicePublishReady() {
  mountsRegistry_->servicePublishReady().walk(
      [this](const String& serviceName, bool) { handleServicePublishReady(serviceName); });
}

void MountsRegistrySm::handleServicePublishReady(const String& serviceName) {
  static constexpr char kSignature[] =
      "void Controller::MountsRegistrySm::handleServicePublishReady(const String&)";
  REGISTRY_TRACE(8, "MountsRegistrySm::", "handleServicePublishReady", ": ", serviceName);
  const bool ready = mountsRegistry_->servicePublishReady().value(serviceName);
  const bool published = controllerdbPublishStatus_ &&
                         controllerdbPublishStatus_->servicePublishReady().value(serviceName);
  if (ready == published) return;
  if (!controllerdbPublishStatus_) return;
  if (!ready) {
    controllerdbPublishStatus_->servicePublishReadyDel(serviceName);
    return;
  }
  for (const Ptr<PublishRegistryEntrySm>& entry : publishRegistryEntrySm_) {
    if (entry->publishEntry()->serviceName() != serviceName) continue;
    if (entry->entityPresenceCheckClockTimeMin() > std::numeric_limits<Orm::Seconds>::max()) {
      continue;
    }
    REGISTRY_MESSAGE(5, kSignature, "Publish entry %s not yet processed", entry->entryName());
    return;
  }
  REGISTRY_MESSAGE(5, kSignature, "Setting publishReady for %s", serviceName);
  controllerdbPublishStatus_->servicePublishReadyIs(serviceName, true);
}

void MountsRegistrySm::handlePeer() {
  const Ptr<PeerTable const> table(peerTable());
  if (!table) return;
  table->peer().walk([this](const Peer& peer) { handlePeer(peer.systemId()); });
}

void MountsRegistrySm::handlePeer(const SystemId& systemId) {
  const Ptr<Peer const> peer(peerTable() ? peerTable()->peer(systemId) : nullptr);
  const String name = peer ? peer->name() : systemId.stringValue();
  REGISTRY_TRACE(8, "MountsRegistrySm::", "handlePeer", " ", name);
  const ConnectionServiceStatusDirSm* const machine = connectionServiceStatusDirSm_.find(name);
  if (peer) {
    REGISTRY_TRACE(8, "MountsRegistrySm::", "handlePeer", " peer:", name, " added");
    // Whoever was told first that the peer had gone has had it come back.
    if (machine && machine->peer() != peer) connectionServiceStatusDirSmDel(name);
    if (controllerdbPublishStatus_) controllerdbPublishStatus_->systemIs(systemId);
    connectionServiceStatusDirSmIs(name, serviceStatusDir(*peer), peer);
    return;
  }
  if (!machine) return;
  REGISTRY_TRACE(8, "MountsRegistrySm::", "handlePeer", " peer:", name, " removed");
  connectionServiceStatusDirSmDel(name);
}

void MountsRegistrySm::handleSwitchConnection() {
  REGISTRY_TRACE(8, "MountsRegistrySm::", "handleSwitchConnection");
  const Ptr<PeerTable const> table(peerTable());
  if (!table) return;
  table->peer().walk([this](const Peer& peer) { handleSwitchConnection(Connection(peer)); });
}

void MountsRegistrySm::handleSwitchConnection(const SystemId& systemId) {
  handleSwitchConnection(Connection(systemId));
}

void MountsRegistrySm::handleSwitchConnection(const Connection& connection) {
  REGISTRY_TRACE(8, "MountsRegistrySm::", "handleSwitchConnection", " ", connection.name);
  for (const auto& entry : mountsRegistryEntrySm_) entry->fetchMount(connection.systemId);
  mountsRegistryEntrySm_.walk(
      [&](MountsRegistryEntrySm& entry) { entry.handleSwitchConnection(connection); });
  publishRegistryEntrySm_.walk(
      [&](PublishRegistryEntrySm& entry) { entry.handleSwitchConnection(connection); });
}

void MountsRegistrySm::handleServiceVersion(const String& serviceName,
                                            const String& connectionName) {
  handleServiceVersion(serviceName, Connection(connectionName));
}

void MountsRegistrySm::handleServiceVersion(const String& serviceName,
                                            const Connection& connection) {
  REGISTRY_TRACE(8, "MountsRegistrySm::", "handleServiceVersion", " ", serviceName, " ",
                 connection.name);
  handleServiceSwitchConnection(connection, serviceName);
}

void MountsRegistrySm::handleServiceSwitchConnection(const SystemId& systemId,
                                                     const String& serviceName) {
  handleServiceSwitchConnection(Connection(systemId), serviceName);
}

void MountsRegistrySm::handleServiceSwitchConnection(const Connection& connection,
                                                     const String& serviceName) {
  REGISTRY_TRACE(8, "MountsRegistrySm::", "handleServiceSwitchConnection", " ", connection.name,
                 " ", serviceName);
  mountsOfService_.walk(
      serviceName, [&](MountsRegistryEntrySm& entry) { entry.handleSwitchConnection(connection); });
  publicationsOfService_.walk(serviceName, [&](PublishRegistryEntrySm& entry) {
    entry.handleSwitchConnection(connection);
  });
}

// ---- answer

std::uint32_t MountsRegistrySm::negotiatedServiceVersionForConnection(
    const String& serviceName, const String& connectionName) {
  if (const std::optional<SystemId> systemId = SystemId::parse(connectionName)) {
    return negotiatedServiceVersionForConnection(serviceName,
                                                 Connection(*systemId, connectionName));
  }
  REGISTRY_TRACE(8, "MountsRegistrySm::", "negotiatedServiceVersionForConnection", " ", serviceName,
                 " ", connectionName);
  return 0;  // no peer has such a name
}

template <bool kTraced>
std::uint32_t MountsRegistrySm::negotiatedServiceVersionForConnection(
    const String& serviceName, const Connection& connection) {
  STEP_TRACE(8, "MountsRegistrySm::", "negotiatedServiceVersionForConnection", " ", serviceName,
             " ", connection.name);
  const Peer* const peer = peerTable() ? peerTable()->peer(connection.systemId) : nullptr;
  if (!peer) return 0;
  const ServiceStatusDir* const dir = serviceStatusDir(*peer);
  const ServiceStatusV1* const status =
      dir ? dir->service(realServiceNameOf(serviceName)) : nullptr;
  if (status && status->enabled() && status->versionStatus() &&
      status->versionStatus()->negotiated()) {
    const std::uint32_t version = status->versionStatus()->version();
    STEP_TRACE(8, "MountsRegistrySm::", "negotiatedServiceVersionForConnection",
               " negotiated service version for ", connection.name, " for service ", serviceName,
               " = ", version);
    return version;
  }
  STEP_TRACE(8, "MountsRegistrySm::", "negotiatedServiceVersionForConnection",
             " no version negotiated for ", connection.name, " for service ", serviceName);
  return 0;
}

template <bool kTraced>
void MountsRegistrySm::lastNegotiationIs(const String& serviceName, const Connection& connection) {
  lastNegotiation_ = {serviceName, connection.name, NegotiationPart::changes(),
                      negotiatedServiceVersionForConnection<kTraced>(serviceName, connection)};
}

template std::uint32_t MountsRegistrySm::negotiatedServiceVersionForConnection<true>(
    const String&, const Connection&);
template void MountsRegistrySm::lastNegotiationIs<true>(const String&, const Connection&);
template void MountsRegistrySm::lastNegotiationIs<false>(const String&, const Connection&);

Connection MountsRegistrySm::namedConnection(const SystemId& systemId) const {
  const Peer* const connected = peerTable() ? peerTable()->peer(systemId) : nullptr;
  return connected ? Connection(*connected) : Connection(systemId);
}

const ServiceStatusDir* MountsRegistrySm::serviceStatusDir(const Peer& peer) const {
  const ControllerOob::ClientStatus* const client = oobStatus_->clientStatus(peer.clientAddress());
  return client ? client->serviceStatusDir().get() : nullptr;
}

const String& MountsRegistrySm::realNameOfProxy(const String& serviceName) {
  if (const String* known = realNameOfProxy_.find(serviceName)) return *known;
  realNameOfProxy_.set(serviceName, realServiceNameOfProxy(serviceName));
  return *realNameOfProxy_.find(serviceName);
}

// ---- children

Ptr<MountsRegistryEntrySm> MountsRegistrySm::mountsRegistryEntrySmIs(
    const Ptr<MountsRegistryEntry>& entry, const Ptr<ControllerOob::Status const>& oobStatus,
    const Ptr<ServiceConfigDir const>& serviceConfigDir, const Ptr<Fennix::Dir>& directory) {
  if (MountsRegistryEntrySm* present = mountsRegistryEntrySm_.find(entry->name())) return present;
  return Orm::childIs(
      mountsRegistryEntrySm_,
      mountsRegistryEntrySmFactory(entry, oobStatus, serviceConfigDir, directory, this));
}

void MountsRegistrySm::mountsRegistryEntrySmDel(const String& name) {
  if (const Ptr<MountsRegistryEntrySm> gone = mountsRegistryEntrySm_.take(name)) gone->doCleanup();
}

Ptr<PublishRegistryEntrySm> MountsRegistrySm::publishRegistryEntrySmIs(
    const Ptr<PublishRegistryEntry>& entry, const Ptr<ControllerOob::Status const>& oobStatus,
    const Ptr<Controllerdb::PublishStatus>& controllerdbPublishStatus) {
  if (PublishRegistryEntrySm* present = publishRegistryEntrySm_.find(entry->name())) {
    return present;
  }
  return Orm::childIs(
      publishRegistryEntrySm_,
      publishRegistryEntrySmFactory(entry, oobStatus, controllerdbPublishStatus, this));
}

void MountsRegistrySm::publishRegistryEntrySmDel(const String& name) {
  if (const Ptr<PublishRegistryEntrySm> gone = publishRegistryEntrySm_.take(name)) {
    gone->doCleanup();
  }
}

Ptr<ConnectionServiceStatusDirSm> MountsRegistrySm::connectionServiceStatusDirSmIs(
    const String& connectionName, const Ptr<ServiceStatusDir const>& serviceStatusDir,
    const Ptr<Peer const>& peer) {
  if (auto* present = connectionServiceStatusDirSm_.find(connectionName)) return present;
  return Orm::childIs(
      connectionServiceStatusDirSm_,
      connectionServiceStatusDirSmFactory(connectionName, serviceStatusDir, this, peer));
}

void MountsRegistrySm::connectionServiceStatusDirSmDel(const String& connectionName) {
  const Ptr<ConnectionServiceStatusDirSm> gone = connectionServiceStatusDirSm_.take(connectionName);
  if (gone) gone->doCleanup();
}

const Ptr<InactiveClientSm>& MountsRegistrySm::inactiveClientSmIs(
    const Ptr<ControllerOob::Status const>& oobStatus,
    const Ptr<ServiceConfigDir const>& serviceConfigDir) {
  if (!inactiveClientSm_) {
    inactiveClientSm_ = inactiveClientSmFactory(oobStatus, serviceConfigDir, this);
  }
  return inactiveClientSm_;
}

void MountsRegistrySm::inactiveClientSmDel() {
  if (inactiveClientSm_) inactiveClientSm_->doCleanup();
  inactiveClientSm_ = nullptr;
}

// ---- clean up

MountsRegistrySm::~MountsRegistrySm() {
  const Orm::ActivityScope scope;
  hasNotificationActiveIs(false);
  // The entries go first, so that connections that go after them are not decided once more.
  publishRegistryEntrySm_.walk(
      [this](PublishRegistryEntrySm& entry) { publishRegistryEntrySmDel(entry.entryName()); });
  mountsRegistryEntrySm_.walk(
      [this](MountsRegistryEntrySm& entry) { mountsRegistryEntrySmDel(entry.entryName()); });
  connectionServiceStatusDirSm_.walk([this](ConnectionServiceStatusDirSm& connection) {
    connectionServiceStatusDirSmDel(connection.connectionName());
  });
  inactiveClientSmDel();
}

}  // namespace Controller
