#include "Controllerdb/MountsRegistry/PublishRegistryEntrySm.h"

#include "Controllerdb/MountsRegistry/MountsRegistry.h"
#include "Controllerdb/MountsRegistry/MountsRegistrySm.h"
#include "Controllerdb/MountsRegistry/MountsRegistryTrace.h"
#include "Controllerdb/MountsRegistry/ProxyServiceName.h"
#include "Platform/Orm/ActivityManagerConfig.h"

namespace Controller {

using Controllerdb::MountDesc;
using Controllerdb::SystemPublishedMount;
using Orm::Ptr;
using Orm::String;

Ptr<PublishRegistryEntrySm> publishRegistryEntrySmFactory(
    const Ptr<PublishRegistryEntry>& publishEntry,
    const Ptr<ControllerOob::Status const>& oobStatus,
    const Ptr<Controllerdb::PublishStatus>& controllerdbPublishStatus,
    MountsRegistrySm* mountsRegistrySm) {
  return Orm::make<PublishRegistryEntrySm>(publishEntry, oobStatus, controllerdbPublishStatus,
                                           mountsRegistrySm);
}

// ---- construct

PublishRegistryEntrySm::PublishRegistryEntrySm(
    Ptr<PublishRegistryEntry> publishEntry, Ptr<ControllerOob::Status const> oobStatus,
    Ptr<Controllerdb::PublishStatus> controllerdbPublishStatus, MountsRegistrySm* mountsRegistrySm)
    : publishEntry_(std::move(publishEntry)),
      oobStatus_(std::move(oobStatus)),
      controllerdbPublishStatus_(std::move(controllerdbPublishStatus)),
      mountsRegistrySm_(mountsRegistrySm),
      order_(mountsRegistrySm->nextOrder()),
      localPath_(entryName().view()),
      mountFlags_(kMountFlags),
      ormPublishRegistryEntry_(this),
      systemFilter_(this),
      versionFilter_(this),
      entityPresenceCheckClock_(this) {}

void PublishRegistryEntrySm::start() {
  mountsRegistrySm_->publishServiceIs(realServiceName(publishEntry_->serviceName()), *this);
  ormPublishRegistryEntry_.notifierIs(publishEntry_);
  entityPresenceCheckClockIs(Orm::ActivityManagerConfig::instance()->clock());
  systemFilterIs(publishEntry_->systemFilter());
  versionFilterIs(publishEntry_->versionFilter());
  handleInitialized();
}

PublishRegistryEntrySm::~PublishRegistryEntrySm() { leaveIndex(); }

void PublishRegistryEntrySm::handleInitialized() {
  REGISTRY_TRACE(8, "PublishRegistryEntrySm::", "handleInitialized");
  initialized_ = true;
  entityPresenceCheckClock_.timeMinIs(Orm::kNever);
  handleSwitchConnection();
}

void PublishRegistryEntrySm::hasNotificationActiveIs(bool active) {
  ormPublishRegistryEntry_.hasNotificationActiveIs(active);
  systemFilter_.hasNotificationActiveIs(active);
  versionFilter_.hasNotificationActiveIs(active);
  entityPresenceCheckClock_.hasNotificationActiveIs(active);
}

void PublishRegistryEntrySm::systemFilterIs(const Ptr<MountFilterSystem const>& filter) {
  systemFilter_.notifierIs(filter);
  handleSystemFilter();
}

void PublishRegistryEntrySm::versionFilterIs(const Ptr<MountFilterServiceVersion const>& filter) {
  versionFilter_.notifierIs(filter);
  handleVersionFilter();
}

void PublishRegistryEntrySm::entityPresenceCheckClockIs(const Ptr<Orm::Clock>& clock) {
  entityPresenceCheckClock_.notifierIs(clock);
}

// ---- react

void PublishRegistryEntrySm::OrmPublishRegistryEntry::onAttribute(Orm::AttributeId attribute,
                                                                  const Orm::Key&) {
  switch (attribute) {
    case PublishRegistryEntry::Attr::systemFilter:
      owner()->systemFilterIs(notifier()->systemFilter());
      break;
    case PublishRegistryEntry::Attr::versionFilter:
      owner()->versionFilterIs(notifier()->versionFilter());
      break;
    case PublishRegistryEntry::Attr::readyToPublish:
      owner()->handleReadyToPublish();
      break;
    default:
      break;
  }
}

void PublishRegistryEntrySm::OrmSystemFilter::onAttribute(Orm::AttributeId attribute,
                                                          const Orm::Key& key) {
  if (attribute == MountFilterSystem::Attr::includedSystem) handleIncludedSystem(key.as<String>());
}

void PublishRegistryEntrySm::OrmSystemFilter::handleIncludedSystem() {
  const Ptr<MountFilterSystem const> filter(notifier());
  if (!filter) return;
  filter->includedSystem().walk(
      [this](const String& system, bool) { handleIncludedSystem(system); });
}

void PublishRegistryEntrySm::OrmSystemFilter::handleIncludedSystem(const String& system) {
  REGISTRY_TRACE(8, "PublishRegistryEntrySm::OrmSystemFilter::", "handleIncludedSystem", ": ",
                 system);
  owner()->handleSwitchConnection(Connection(system));
}

void PublishRegistryEntrySm::OrmVersionFilter::onAttribute(Orm::AttributeId attribute,
                                                           const Orm::Key& key) {
  if (attribute == MountFilterServiceVersion::Attr::includedServiceVersion) {
    handleIncludedServiceVersion(key.as<std::uint32_t>());
  }
}

void PublishRegistryEntrySm::OrmVersionFilter::handleIncludedServiceVersion() {
  const Ptr<MountFilterServiceVersion const> filter(notifier());
  if (!filter) return;
  filter->includedServiceVersion().walk(
      [this](std::uint32_t version, bool) { handleIncludedServiceVersion(version); });
}

void PublishRegistryEntrySm::OrmVersionFilter::handleIncludedServiceVersion(std::uint32_t version) {
  REGISTRY_TRACE(8, "PublishRegistryEntrySm::OrmVersionFilter::", "handleIncludedServiceVersion",
                 ": ", version);
  owner()->handleSwitchConnection();
}

void PublishRegistryEntrySm::handleReadyToPublish() {
  REGISTRY_TRACE(8, "PublishRegistryEntrySm::", "handleReadyToPublish", " ", entryName());
  handleSwitchConnection();
}

void PublishRegistryEntrySm::handleSystemFilter() {
  REGISTRY_TRACE(8, "PublishRegistryEntrySm::", "handleSystemFilter", " ", entryName());
  handleSwitchConnection();
}

void PublishRegistryEntrySm::handleVersionFilter() {
  REGISTRY_TRACE(8, "PublishRegistryEntrySm::", "handleVersionFilter", " ", entryName());
  handleSwitchConnection();
}

void PublishRegistryEntrySm::handleEntityPresenceCheckClock() {
  REGISTRY_MESSAGE(5, "void Controller::PublishRegistryEntrySm::handleEntityPresenceCheckClock()",
                   " %s", entryName());
  handleSwitchConnection();
  // Called before the machine is initialized, when the clock is bound, it has decided nothing.
  if (!initialized_ || entityPresenceCheckClock_.isArmed()) return;
  mountsRegistrySm_->handleServicePublishReady(publishEntry_->serviceName());
}

void PublishRegistryEntrySm::handleSwitchConnection() {
  REGISTRY_TRACE(8, "PublishRegistryEntrySm::", "handleSwitchConnection", " ", entryName());
  if (!initialized_) return;
  if (const Ptr<PeerTable const> table = mountsRegistrySm_->peerTable()) {
    table->peer().walk([this](const Peer& peer) { handleSwitchConnection(Connection(peer)); });
  }
  if (!initialized_ || publishEntityExists()) return;
  REGISTRY_MESSAGE(1, "void Controller::PublishRegistryEntrySm::handleSwitchConnection()",
                   "Entity at %s doesn't exist.", entryName());
  const Orm::Clock* const clock = entityPresenceCheckClock_.notifier();
  if (clock) entityPresenceCheckClock_.timeMinIs(clock->now() + kEntityCheckInterval);
}

void PublishRegistryEntrySm::handleSwitchConnection(const SystemId& systemId) {
  handleSwitchConnection(connectionOf(systemId));
}

void PublishRegistryEntrySm::handleSwitchConnection(const Connection& connection) {
  REGISTRY_TRACE(8, "PublishRegistryEntrySm::", "handleSwitchConnection", " ", entryName(), " ",
                 connection.name);
  if (!initialized_) return;
  const Ptr<Peer const> connected(peer(connection.systemId));
  if (!connected) {
    refused_.erase(connection.systemId);
    doDisconnectSwitch(connection);
    return;
  }
  // A peer that the registry machine is yet to be told of is decided then.
  if (!mountsRegistrySm_->connectionServiceStatusDirSm().has(connected->name())) return;
  if (publishEntry_->isPrefixPath()) addSwitchToPublishEntryDir(connection);
  if (!initialized_) return;  // whoever was told of the new child has removed the entry
  const Admission admission = decide(*connected, connection);
  admissionIs(connection.systemId, admission);
  if (admission == Admission::admitted) {
    doConnectSwitch(connection);
    return;
  }
  REGISTRY_MESSAGE(5,
                   "void Controller::PublishRegistryEntrySm::handleSwitchConnection(const "
                   "Controller::SystemId&)",
                   " Cannot publish:%s to:%s", entryName(), connection.name);
  doDisconnectSwitch(connection);
}

// ---- decide

Admission PublishRegistryEntrySm::decide(const Peer& peer, const Connection& connection) {
  if (!peer.connectionConfig()) return Admission::noConnectionConfig;
  const Admission filtered = admissionByFilters(connection);
  if (filtered != Admission::admitted) return filtered;
  if (!publishEntityExists()) return Admission::entityMissing;
  return publishEntry_->readyToPublish() ? Admission::admitted : Admission::notReady;
}

bool PublishRegistryEntrySm::canPublishToConnection(const String& connection) {
  return canPublishToConnection(Connection(connection));
}

bool PublishRegistryEntrySm::canPublishToConnection(const Connection& connection) {
  return admissionByFilters(connection) == Admission::admitted;
}

Admission PublishRegistryEntrySm::admissionByFilters(const Connection& connection) {
  static constexpr char kSignature[] =
      "bool Controller::PublishRegistryEntrySm::canPublishToConnection(const String&)";
  REGISTRY_TRACE(8, "PublishRegistryEntrySm::", "canPublishToConnection", " ", entryName());
  const std::uint32_t version =
      mountsRegistrySm_->negotiatedVersion(publishEntry_->serviceName(), connection);
  if (version == 0) {
    REGISTRY_MESSAGE(5, kSignature, " no version negotiated:%s", connection.name);
    return Admission::noVersionNegotiated;
  }
  if (!publishEntry_->versionFilter()) {
    REGISTRY_MESSAGE(5, kSignature, "no versionFilter for %s", entryName());
  } else if (!hasVersion(connection.name, version)) {
    return Admission::versionNotInFilter;
  }
  const Ptr<MountFilterSystem const>& systems = publishEntry_->systemFilter();
  if (!systems) {
    REGISTRY_MESSAGE(5, kSignature, " no systemfilter for %s", entryName());
    return Admission::admitted;
  }
  if (systems->includes(connection.name)) {
    REGISTRY_MESSAGE(5, kSignature, " matched systemFilter connection:%s", connection.name);
    return Admission::admitted;
  }
  REGISTRY_MESSAGE(5, kSignature, " no matched system for connection: %s", connection.name);
  return Admission::systemNotInFilter;
}

bool PublishRegistryEntrySm::hasVersion(const String& connection, std::uint32_t version) {
  static constexpr char kSignature[] =
      "bool Controller::PublishRegistryEntrySm::hasVersion(const String&, U32)";
  REGISTRY_TRACE(8, "PublishRegistryEntrySm::", "hasVersion");
  const Ptr<MountFilterServiceVersion const>& versions = publishEntry_->versionFilter();
  if (versions && versions->includes(version)) {
    REGISTRY_MESSAGE(5, kSignature, " matched version: %s service:%s connection:%s", version,
                     publishEntry_->serviceName(), connection);
    return true;
  }
  REGISTRY_MESSAGE(5, kSignature, " version not in filter:%s service:%s connection:%s", version,
                   publishEntry_->serviceName(), connection);
  return false;
}

bool PublishRegistryEntrySm::publishEntityExists() {
  REGISTRY_TRACE(8, "PublishRegistryEntrySm::", "publishEntityExists", " ", entryName());
  return static_cast<bool>(localEntity());
}

void PublishRegistryEntrySm::admissionIs(const SystemId& systemId, Admission admission) {
  if (admission == Admission::admitted) {
    refused_.erase(systemId);
  } else {
    refused_.set(systemId, admission);
  }
}

Admission PublishRegistryEntrySm::admission(const SystemId& systemId) const {
  const Peer* const connected = peer(systemId);
  if (!connected) return Admission::notConnected;
  if (const Admission* refusal = refused_.find(systemId)) return *refusal;
  const SystemPublishedMount* const system = publishedTo(systemId);
  const bool published =
      system && system->publishedMount().has(publishedPath(Connection(*connected)));
  return published ? Admission::admitted : Admission::undecided;
}

// ---- act

void PublishRegistryEntrySm::addSwitchToPublishEntryDir(const Connection& connection) {
  REGISTRY_TRACE(8, "PublishRegistryEntrySm::", "addSwitchToPublishEntryDir", " ", connection.name);
  Orm::assertThat(publishEntry()->isPrefixPath(), "publishEntry()->isPrefixPath()");
  const auto publishEntryDir = Orm::dynamicCast<Fennix::Dir>(localEntity());
  Orm::assertThat(publishEntryDir,
                  "publishEntryDir && \"Publish path doesn't exist or its type is not Orm::Dir\"");
  publishEntryDir->createEntity(publishEntry_->type(), connection.name);
}

void PublishRegistryEntrySm::doConnectSwitch(const Connection& connection) {
  static constexpr char kSignature[] =
      "void Controller::PublishRegistryEntrySm::doConnectSwitch(const Controller::SystemId&)";
  REGISTRY_TRACE(8, "PublishRegistryEntrySm::", "doConnectSwitch", " ", entryName(), " ",
                 connection.name);
  Orm::assertThat(peer(connection.systemId), "peer");
  if (!canPublishToConnection(connection)) {
    REGISTRY_MESSAGE(5, kSignature, " Cannot publish to:%s", connection.name);
    return;
  }
  const Ptr<SystemPublishedMount> system(publishedTo(connection.systemId));
  Orm::assertThat(system, "system");
  const PublishRegistryEntry& entry = *publishEntry_;
  if (entry.isPrefixPath()) {
    REGISTRY_MESSAGE(5, kSignature, " publishing ssm:%s to:%s type: %s service: %s",
                     connection.name, entry.remotePath(), entry.type(), entry.serviceName());
  } else {
    REGISTRY_MESSAGE(5, kSignature, " publishing:%s to:%s on:%s type: %s service: %s", entryName(),
                     entry.remotePath(), connection.name, entry.type(), entry.serviceName());
  }
  Orm::assertThat(publishedEntity(connection), "publishEntity && \"Publish entity doesn't exist\"");
  publishMount(*system, {publishedPath(connection), entry.remotePath(), entry.type(), mountFlags_,
                         entry.serviceName()});
}

void PublishRegistryEntrySm::publishMount(SystemPublishedMount& system, const MountDesc& mdesc) {
  Orm::assertThat(mdesc, "!!mdesc");
  system.publishedMountIs(mdesc);
}

void PublishRegistryEntrySm::doDisconnectSwitch(const Connection& connection) {
  REGISTRY_TRACE(8, "PublishRegistryEntrySm::", "doDisconnectSwitch", " ", connection.name);
  const Ptr<SystemPublishedMount> system(publishedTo(connection.systemId));
  if (!system) return;
  withdraw(*system, connection);
  if (system->publishedMount().empty()) {
    REGISTRY_TRACE(8, "PublishRegistryEntrySm::", "doDisconnectSwitch",
                   " All published mounts gone for ", connection.name);
  }
}

void PublishRegistryEntrySm::withdraw(SystemPublishedMount& system,
                                      const Connection& connection) const {
  if (system.publishedMount().empty()) return;  // no need to know the path
  const String path = publishedPath(connection);
  const MountDesc* const mdesc = system.publishedMount().find(path);
  if (!mdesc || !*mdesc) return;
  REGISTRY_MESSAGE(
      5, "void Controller::PublishRegistryEntrySm::doDisconnectSwitch(const Controller::SystemId&)",
      " un-publishing:%s from:%s", path, connection.name);
  system.publishedMountDel(path);
}

// ---- what is where

Peer* PublishRegistryEntrySm::peer(const SystemId& systemId) const {
  const PeerTable* const table = mountsRegistrySm_->peerTable();
  return table ? table->peer(systemId) : nullptr;
}

Connection PublishRegistryEntrySm::connectionOf(const SystemId& systemId) const {
  const Peer* const connected = peer(systemId);
  return connected ? Connection(*connected) : Connection(systemId);
}

Ptr<Orm::Entity> PublishRegistryEntrySm::localEntity() const {
  return localPath_.lookup(*mountsRegistrySm_->mountsRegistry()->rootDir());
}

Ptr<Orm::Entity> PublishRegistryEntrySm::publishedEntity(const Connection& connection) const {
  if (!publishEntry_->isPrefixPath()) return localEntity();
  const auto dir = Orm::dynamicCast<Fennix::Dir>(localEntity());
  return dir ? dir->entity(connection.name) : nullptr;
}

SystemPublishedMount* PublishRegistryEntrySm::publishedTo(const SystemId& systemId) const {
  return controllerdbPublishStatus_ ? controllerdbPublishStatus_->system(systemId) : nullptr;
}

String PublishRegistryEntrySm::publishedPath(const Connection& connection) const {
  if (!publishEntry_->isPrefixPath()) return entryName();
  return String({entryName().view(), "/", connection.name.view()});
}

// ---- clean up

void PublishRegistryEntrySm::doCleanup() {
  if (cleanedUp_) return;
  REGISTRY_TRACE(8, "PublishRegistryEntrySm::", "doCleanup", " ", entryName());
  const Orm::ActivityScope scope;
  cleanedUp_ = true;
  initialized_ = false;  // nothing is decided any more
  ormPublishRegistryEntry_.hasNotificationActiveIs(false);
  systemFilterDel();
  versionFilterDel();
  leaveIndex();  // the registry machine may be gone when this one's memory goes
  if (controllerdbPublishStatus_) {
    controllerdbPublishStatus_->system().walk([this](const SystemPublishedMount& system) {
      // Whoever was told of the first ones may have had the path published again.
      if (hasSuccessor()) return;
      doDisconnectSwitch(connectionOf(system.systemId()));
    });
  }
  refused_.clear();
  const bool waited = entityPresenceCheckClock_.isArmed();
  entityPresenceCheckClock_.timeMinIs(Orm::kNever);
  // The entry may have been the last one that its service's readiness waited for. It is not asked
  // when the registry machine goes and the entry stays.
  const MountsRegistry& registry = *mountsRegistrySm_->mountsRegistry();
  if (waited && registry.publishEntry(entryName()) != publishEntry_.get()) {
    mountsRegistrySm_->handleServicePublishReady(publishEntry_->serviceName());
  }
}

bool PublishRegistryEntrySm::hasSuccessor() const {
  const auto* const other = mountsRegistrySm_->publishRegistryEntrySm().find(entryName());
  return other && other != this;
}

void PublishRegistryEntrySm::leaveIndex() {
  if (!indexed_) return;
  indexed_ = false;
  mountsRegistrySm_->publishServiceDel(realServiceName(publishEntry_->serviceName()), *this);
}

}  // namespace Controller
