#include "Controllerdb/MountsRegistry/MountsRegistryEntrySm.h"

#include <algorithm>

#include "Controllerdb/MountsRegistry/MountsRegistry.h"
#include "Controllerdb/MountsRegistry/MountsRegistrySm.h"
#include "Controllerdb/MountsRegistry/MountsRegistryTrace.h"
#include "Controllerdb/MountsRegistry/ProxyServiceName.h"
#include "Platform/Orm/ActivityManagerConfig.h"

// The machine's mounters, its decisions and what it does about them; what it makes of the mounts'
// reports is in MountsRegistryEntrySmStatus.cpp.
namespace Controller {

using Orm::Ptr;
using Orm::String;

Ptr<MountsRegistryEntrySm> mountsRegistryEntrySmFactory(
    const Ptr<MountsRegistryEntry>& registryEntry,
    const Ptr<ControllerOob::Status const>& oobStatus,
    const Ptr<ServiceConfigDir const>& serviceConfigDir, const Ptr<Fennix::Dir>& directory,
    MountsRegistrySm* mountsRegistrySm) {
  return Orm::make<MountsRegistryEntrySm>(registryEntry, oobStatus, serviceConfigDir, directory,
                                          mountsRegistrySm);
}

namespace {

std::int32_t wholeSeconds(Orm::Seconds seconds) {
  constexpr auto kLongest = static_cast<Orm::Seconds>(MountsRegistryEntrySm::kNoTimeout);
  return static_cast<std::int32_t>(std::min(seconds, kLongest));
}

}  // namespace

// ---- construct

MountsRegistryEntrySm::MountsRegistryEntrySm(Ptr<MountsRegistryEntry> registryEntry,
                                             Ptr<ControllerOob::Status const> oobStatus,
                                             Ptr<ServiceConfigDir const> serviceConfigDir,
                                             Ptr<Fennix::Dir> directory,
                                             MountsRegistrySm* mountsRegistrySm)
    : registryEntry_(std::move(registryEntry)),
      mountsRegistrySm_(mountsRegistrySm),
      oobStatus_(std::move(oobStatus)),
      timeoutClock_(this),
      serviceConfigDir_(std::move(serviceConfigDir)),
      directory_(std::move(directory)),
      order_(mountsRegistrySm->nextOrder()),
      ormMountsRegistryEntry_(this) {}

void MountsRegistryEntrySm::start() {
  ormMountsRegistryEntry_.notifierIs(registryEntry_);
  handleMounter();
  handleInitialized();
}

MountsRegistryEntrySm::~MountsRegistryEntrySm() { leaveIndex(); }

void MountsRegistryEntrySm::handleInitialized() {
  timeoutClockIs(Orm::ActivityManagerConfig::instance()->clock());
  timeoutClock_.timeMinIs(Orm::kNever);
  initialized_ = true;
  // The prefix is misspelt in this one trace; tools know it by that.
  REGISTRY_TRACE(8, "MoutnsRegistryEntrySm::", "handleInitialized");
  handleSwitchConnection();
}

void MountsRegistryEntrySm::hasNotificationActiveIs(bool active) {
  ormMountsRegistryEntry_.hasNotificationActiveIs(active);
  timeoutClock_.hasNotificationActiveIs(active);
  for (const auto& mounter : mounterConfigSm_) mounter->hasNotificationActiveIs(active);
  for (const auto& mount : mountSmDataSm_) mount->hasNotificationActiveIs(active);
}

// ---- react: mounters

void MountsRegistryEntrySm::OrmMountsRegistryEntry::onAttribute(Orm::AttributeId attribute,
                                                                const Orm::Key& key) {
  if (attribute == MountsRegistryEntry::Attr::mounter) owner()->handleMounter(key.as<String>());
}

void MountsRegistryEntrySm::handleMounter() {
  registryEntry_->mounter().walk(
      [this](const Mounter& mounter) { handleMounter(mounter.serviceName()); });
}

void MountsRegistryEntrySm::handleMounter(const String& serviceName) {
  REGISTRY_TRACE(8, "MountsRegistryEntrySm::", "handleMounter", " ", entryName());
  indexMounter(serviceName);
  evaluateMounters();
  const Ptr<MounterConfigSm> machine(mounterConfigSm_.find(serviceName));
  const Ptr<Mounter> mounter(registryEntry_->mounter(serviceName));
  if (!mounter) {
    if (!machine) return;
    REGISTRY_MESSAGE(5, "void Controller::MountsRegistryEntrySm::handleMounter(const String&)",
                     " mounter gone:%s service:%s", entryName(), serviceName);
    mounterConfigSmDel(serviceName);
    handleSwitchConnection();
    return;
  }
  if (machine && machine->mounter() == mounter) return;
  // Whoever was told first of the mounter before this one has replaced it.
  if (machine) mounterConfigSmDel(serviceName);
  REGISTRY_MESSAGE(5, "void Controller::MountsRegistryEntrySm::handleMounter(const String&)",
                   " new mounter:%s service:%s group:%s", entryName(), serviceName,
                   mounter->groupName());
  mounterConfigSmIs(mounter);
  handleSwitchConnection();
}

void MountsRegistryEntrySm::handleMounterFilters() {
  evaluateMounters();
  handleSwitchConnection();
}

Ptr<MounterConfigSm> MountsRegistryEntrySm::mounterConfigSmIs(const Ptr<Mounter>& mounter) {
  if (MounterConfigSm* present = mounterConfigSm_.find(mounter->serviceName())) return present;
  return Orm::childIs(mounterConfigSm_, mounterConfigSmFactory(mounter, this));
}

void MountsRegistryEntrySm::mounterConfigSmDel(const String& serviceName) {
  if (const Ptr<MounterConfigSm> gone = mounterConfigSm_.take(serviceName)) gone->doCleanup();
}

void MountsRegistryEntrySm::indexMounter(const String& serviceName) {
  const String realName = realServiceName(serviceName);
  if (hasMounterOf(realName)) {
    if (indexedService_.set(realName, true)) mountsRegistrySm_->mountServiceIs(realName, *this);
  } else {
    if (indexedService_.erase(realName)) mountsRegistrySm_->mountServiceDel(realName, *this);
  }
}

void MountsRegistryEntrySm::leaveIndex() {
  for (const auto& service : indexedService_) {
    mountsRegistrySm_->mountServiceDel(service.key, *this);
  }
  indexedService_.clear();
}

bool MountsRegistryEntrySm::hasMounterOf(const String& realServiceName) const {
  if (!isProxyServiceName(realServiceName) && registryEntry_->mounter(realServiceName)) return true;
  return registryEntry_->mounter(String({realServiceName.view(), kProxySuffix})) != nullptr;
}

void MountsRegistryEntrySm::evaluateMounters() {
  REGISTRY_TRACE(8, "MountsRegistryEntrySm::", "evaluateMounters", " ", entryName());
  wildcard_ = false;
  for (const Ptr<Mounter>& mounter : registryEntry_->mounter()) {
    const auto& group = mounter->mountGroupConfig();
    if (group && (group->systemFilter() || group->versionFilter())) continue;
    wildcard_ = true;
    REGISTRY_MESSAGE(5, "void Controller::MountsRegistryEntrySm::evaluateMounters()",
                     " wildcard mount:%s service:%s group:%s", entryName(), mounter->serviceName(),
                     mounter->groupName());
    return;
  }
}

Ptr<ServiceVersionFilter> MountsRegistryEntrySm::versionFilterIs(const String& serviceName) {
  if (ServiceVersionFilter* present = versionFilter_.find(serviceName)) return present;
  Ptr<ServiceVersionFilter> filter = Orm::make<ServiceVersionFilter>(serviceName);
  versionFilter_.insert(filter);
  return filter;
}

// ---- react: connections

Connection MountsRegistryEntrySm::connectionOf(const SystemId& systemId) const {
  return mountsRegistrySm_->connectionOf(systemId);
}

void MountsRegistryEntrySm::handleSwitchConnection() {
  if (!initialized_) return;
  const Ptr<PeerTable> table = oobStatus_->peerTable();
  if (!table) return;
  table->peer().walk([this](const Peer& peer) { handleSwitchConnection(Connection(peer)); });
}

void MountsRegistryEntrySm::handleNamedSwitchConnection(const String& systemName) {
  handleSwitchConnection(Connection(systemName));
}

void MountsRegistryEntrySm::handleSwitchConnection(const SystemId& systemId) {
  handleSwitchConnection(connectionOf(systemId));
}

void MountsRegistryEntrySm::handleSwitchConnection(const Connection& connection) {
  if (mountsRegistryTrace.isOn()) {
    handleSwitchConnection<true>(connection);
  } else {
    handleSwitchConnection<false>(connection);
  }
}

// Flattened: every entry decides every connection, and the calls would cost more than the decision.
template <bool kTraced>
[[gnu::flatten]] void MountsRegistryEntrySm::handleSwitchConnection(const Connection& connection) {
  STEP_TRACE(8, "MountsRegistryEntrySm::", "handleSwitchConnection", " ", entryName(),
             " Peer:", connection.name);
  if (!initialized_) return;
  const Ptr<Peer const> connected(peer(connection.systemId));
  if (!connected) {
    STEP_MESSAGE(5,
                 "void Controller::MountsRegistryEntrySm::handleSwitchConnection(const "
                 "Controller::SystemId&)",
                 " connection:%s registered:%s", connection.name, "false");
    doDisconnectSwitch<kTraced>(connection);
    updateSystemStatus<kTraced>(connection);
    return;
  }
  if (!hasSystemStatus(connection)) updateSystemStatus<kTraced>(connection, true);
  if (decide<kTraced>(*connected, connection) == Admission::admitted) {
    doConnectSwitch<kTraced>(connection, connected.get());
    return;
  }
  STEP_MESSAGE(
      5,
      "void Controller::MountsRegistryEntrySm::handleSwitchConnection(const Controller::SystemId&)",
      " Cannot mount:%s from:%s", entryName(), connection.name);
  doDisconnectSwitch<kTraced>(connection);
}

// ---- decide

bool MountsRegistryEntrySm::canMountFromConnection(const String& connection) {
  return decide<true>(Connection(connection)) == Admission::admitted;
}

template <bool kTraced>
Admission MountsRegistryEntrySm::decide(const Peer& connected, const Connection& connection) const {
  return connected.connectionConfig() ? decide<kTraced>(connection) : Admission::noConnectionConfig;
}

template <bool kTraced>
Admission MountsRegistryEntrySm::decide(const Connection& connection) const {
  static constexpr char kSignature[] =
      "bool Controller::MountsRegistryEntrySm::canMountFromConnection(const String&)";
  STEP_TRACE(8, "MountsRegistryEntrySm::", "canMountFromConnection", " ", entryName(), " ",
             connection.name);
  if (!hasNegotiatedVersion<kTraced>(connection)) {
    STEP_MESSAGE(5, kSignature, " no version negotiated:%s", connection.name);
    return Admission::noVersionNegotiated;
  }
  if (wildcard_) {
    STEP_MESSAGE(5, kSignature, " wildcard mount:%s", connection.name);
    return Admission::admitted;
  }
  if (versionFilter_.empty()) {
    STEP_MESSAGE(5, kSignature, " no versionfilter for %s", entryName());
  } else {
    if (!connectionMatchesVersionFilter<kTraced>(connection)) {
      STEP_MESSAGE(5, kSignature, " version filter not matched for %s", connection.name);
      return Admission::versionNotInFilter;
    }
    STEP_MESSAGE(5, kSignature, " matched versionFilter:%s", connection.name);
  }
  if (connectionFilter_.empty()) {
    STEP_MESSAGE(5, kSignature, " no connectionFilter for %s", entryName());
    return Admission::admitted;
  }
  if (isInConnectionFilter(connection.name)) {
    STEP_MESSAGE(5, kSignature, " matched connectionFilter:%s", connection.name);
    return Admission::admitted;
  }
  STEP_MESSAGE(5, kSignature, " not in connectionFilter:%s", connection.name);
  return Admission::systemNotInFilter;
}

template <bool kTraced>
bool MountsRegistryEntrySm::hasNegotiatedVersion(const Connection& connection) const {
  for (const Ptr<Mounter>& mounter : registryEntry_->mounter()) {
    if (mountsRegistrySm_->negotiatedVersion<kTraced>(mounter->serviceName(), connection) != 0)
      return true;
  }
  return false;
}

bool MountsRegistryEntrySm::connectionMatchesVersionFilter(const String& connection) {
  return connectionMatchesVersionFilter<true>(Connection(connection));
}

template <bool kTraced>
bool MountsRegistryEntrySm::connectionMatchesVersionFilter(const Connection& connection) const {
  STEP_TRACE(8, "MountsRegistryEntrySm::", "connectionMatchesVersionFilter", " ", entryName(), " ",
             connection.name);
  for (const Ptr<ServiceVersionFilter>& filter : versionFilter_) {
    if (matchingServiceVersionFilter<kTraced>(filter->serviceName(), connection)) return true;
  }
  return false;
}

Admission MountsRegistryEntrySm::admission(const SystemId& systemId) const {
  const Peer* const connected = peer(systemId);
  if (!connected) return Admission::notConnected;
  const OrmMountSmDataSm* const mount = mountSmDataSm(systemId);
  if (mount && mount->mountSm() && !mount->leaving_) return Admission::admitted;
  const Connection connection(*connected);
  if (!hasSystemStatus(connection)) return Admission::undecided;
  const Admission refusal = decide<false>(*connected, connection);
  return refusal == Admission::admitted ? Admission::undecided : refusal;
}

Admission MountsRegistryEntrySm::mounterAdmission(const Mounter& mounter,
                                                  const SystemId& systemId) const {
  const Admission decided = admission(systemId);
  if (decided != Admission::admitted) return decided;
  return interestOf<false>(mounter, connectionOf(systemId));
}

// ---- act

template <bool kTraced>
void MountsRegistryEntrySm::doConnectSwitch(const Connection& connection, const Peer* connected) {
  static constexpr char kSignature[] =
      "void Controller::MountsRegistryEntrySm::doConnectSwitch(const Controller::SystemId&)";
  STEP_TRACE(8, "MountsRegistryEntrySm::", "doConnectSwitch", " ", entryName(), " ",
             connection.name);
  if (!initialized_ || !connected) return;
  OrmMountSmDataSm* const mount = mountSmDataSm(connection.systemId);
  if (mount) mount->leaving_ = false;
  if (!mount || !mount->mountSm()) {
    STEP_MESSAGE(5, kSignature, " mounting:%s from:%s", entryName(), connection.name);
    startMount<kTraced>(connection, *connected, mount);
    return;
  }
  const Ptr<MountSm> mountSm = mount->mountSm();
  if (mount->record().mountState() == MountState::mounted && !mountSm->pendingRequest()) {
    STEP_MESSAGE(5, kSignature, " updating status:%s from:%s", entryName(), connection.name);
    updateMountersStatus<kTraced>(connection, MountState::mounted);
    return;
  }
  STEP_MESSAGE(5, kSignature, " remounting:%s from:%s", entryName(), connection.name);
  mount->askedAgain_ = true;
  mountSm->doRemount();
}

template <bool kTraced>
void MountsRegistryEntrySm::startMount(const Connection& connection, const Peer& peer,
                                       OrmMountSmDataSm* mount) {
  const MountsRegistry& registry = *registryEntry_->mountsRegistry();
  const Ptr<Fennix::Dir> prefixDir = this->prefixDir();
  Orm::assertThat(prefixDir, "prefixDir");
  STEP_TRACE(8, "targetPath=", prefixDir->childPath(connection.name.view()));
  if (!mount) mount = &newMount(connection.systemId, String());
  const std::uint32_t retries = registry.reconnectRetries();
  const Orm::Seconds timeout = registry.mountTimeout();
  const Ptr<MountSmData> mountSmData = mount->mountSmData();
  const Orm::ActivityScope scope;  // whoever is told of the mount may take it away
  mountSmIs(*mount, {.systemId = connection.systemId,
                     .connectionConfig = peer.connectionConfig(),
                     .heartbeatConfig = mountsRegistrySm_->heartbeatConfig(),
                     .remoteRoot = registry.remoteRootPath(),
                     .remotePath = entryName(),
                     .mountDir = prefixDir,
                     .mountName = connection.name,
                     .ormType = registryEntry_->ormType(),
                     .mountFlags = registryEntry_->mountFlags(),
                     .retries = retries != 0 ? retries : kNoRetryLimit,
                     .timeout = timeout != 0 ? wholeSeconds(timeout) : kNoTimeout,
                     .mountSmData = mountSmData});
  mountSmDataSmIs<kTraced>(*mount);
}

const Ptr<Fennix::Dir>& MountsRegistryEntrySm::prefixDir() {
  if (!prefixDir_ || prefixDirAsOf_ != Fennix::Dir::departures()) {
    prefixDirAsOf_ = Fennix::Dir::departures();
    prefixDir_ = Orm::dynamicCast<Fennix::Dir>(
        registryEntry_->mountsRegistry()->rootDir()->lookup(registryEntry_->targetPath().view()));
  }
  return prefixDir_;
}

template <bool kTraced>
void MountsRegistryEntrySm::doDisconnectSwitch(const Connection& connection) {
  static constexpr char kSignature[] =
      "void Controller::MountsRegistryEntrySm::doDisconnectSwitch(const Controller::SystemId&)";
  STEP_TRACE(8, "MountsRegistryEntrySm::", "doDisconnectSwitch", " ", entryName(), " ",
             connection.name);
  if (!initialized_) return;
  OrmMountSmDataSm* const mount = mountSmDataSm(connection.systemId);
  const Ptr<MountSm> mountSm(mount ? mount->mountSm() : nullptr);
  if (!mountSm) {
    STEP_MESSAGE(5, kSignature, " already unmounted:%s from:%s", entryName(), connection.name);
    updateMountersStatus<kTraced>(connection, MountState::unmounted);
    return;
  }
  STEP_MESSAGE(5, kSignature, " unmounting:%s from:%s", entryName(), connection.name);
  mount->askedAgain_ = false;
  mount->leaving_ = true;
  if (preserveMountsOnDisconnect(connection)) {
    STEP_TRACE(8, "doDisconnectSwitch", ": unmount is state-preserving");
    mountSm->doStatePreservingUnmount();
  } else {
    STEP_TRACE(8, "doDisconnectSwitch", ": unmount is not state-preserving");
    mountSm->doUnmount();
  }
}

bool MountsRegistryEntrySm::preserveMountsOnDisconnect(const Connection& connection) {
  REGISTRY_TRACE(8, "MountsRegistryEntrySm::", "preserveMountsOnDisconnect", ": ", connection.name);
  // A switch that has gone for good leaves nothing behind.
  if (!oobStatus_->isInactive(connection.systemId)) return false;
  for (const Ptr<Mounter>& mounter : registryEntry_->mounter()) {
    const auto& group = mounter->mountGroupConfig();
    if (!group || !group->preserve()) continue;
    if (group->systemFilter() && !group->systemFilter()->includes(connection.name)) continue;
    const ServiceConfigV1* const config =
        serviceConfigDir_ ? serviceConfigDir_->service(realServiceName(mounter->serviceName()))
                          : nullptr;
    if (!config || !config->enabled()) continue;
    REGISTRY_TRACE(8, ": mounter for group ", mounter->groupName(), " and service ",
                   mounter->serviceName(), " has preserve=1");
    return true;
  }
  return false;
}

// ---- the mounts

MountSm* MountsRegistryEntrySm::mountSm(const SystemId& systemId) const {
  const OrmMountSmDataSm* const mount = mountSmDataSm(systemId);
  return mount ? mount->mountSm().get() : nullptr;
}

void MountsRegistryEntrySm::mountSmIs(OrmMountSmDataSm& mount, const MountRequest& request) {
  if (!mount.mountSm_) mount.mountSm_ = MountSm::MountSmIs(request);
}

void MountsRegistryEntrySm::mountSmDel(const SystemId& systemId) const {
  if (OrmMountSmDataSm* const mount = mountSmDataSm(systemId)) mount->mountSm_ = nullptr;
}

Ptr<MountSmData> MountsRegistryEntrySm::mountSmData(const SystemId& systemId) const {
  const OrmMountSmDataSm* const mount = mountSmDataSm(systemId);
  return mount ? mount->mountSmData() : nullptr;
}

Ptr<MountSmData> MountsRegistryEntrySm::mountSmDataIs(const SystemId& systemId,
                                                      const String& text) {
  OrmMountSmDataSm* const present = mountSmDataSm(systemId);
  return (present ? *present : newMount(systemId, text)).mountSmData();
}

MountsRegistryEntrySm::OrmMountSmDataSm& MountsRegistryEntrySm::newMount(const SystemId& systemId,
                                                                         const String& text) {
  return mountSmDataSm_.insert(Orm::Owned<OrmMountSmDataSm>(new OrmMountSmDataSm(
                                   this, Orm::make<MountSmData>(systemId, text))),
                               lastMount_);
}

void MountsRegistryEntrySm::mountSmDataDel(const SystemId& systemId) {
  mountSmDataSm_.take(systemId, lastMount_);
}

template <bool kTraced>
void MountsRegistryEntrySm::mountSmDataSmIs(OrmMountSmDataSm& mount) {
  mount.hasNotificationActiveIs(true);
  mount.handleMountState<kTraced>();
}

void MountsRegistryEntrySm::mountSmDataSmDelAll() {
  mountSmDataSm_.walk([this](OrmMountSmDataSm& mount) {
    const SystemId systemId = mount.systemId();
    mount.hasNotificationActiveIs(false);
    if (const Ptr<MountSm> mountSm = mount.mountSm()) mountSm->doCleanup();
    mountSmDel(systemId);
    mountSmDataDel(systemId);
  });
}

// ---- clean up

void MountsRegistryEntrySm::doCleanup() {
  REGISTRY_TRACE(8, "MountsRegistryEntrySm::", "doCleanup", " ", entryName());
  const Orm::ActivityScope scope;
  initialized_ = false;  // nothing is decided any more
  ormMountsRegistryEntry_.hasNotificationActiveIs(false);
  timeoutClock_.timeMinIs(Orm::kNever);
  mounterConfigSm_.walk(
      [this](MounterConfigSm& mounter) { mounterConfigSmDel(mounter.serviceName()); });
  mountSmDataSmDelAll();
  leaveIndex();  // the registry machine may be gone when this one's memory goes
}

// What is called from elsewhere, with traces.
template void MountsRegistryEntrySm::doConnectSwitch<true>(const Connection&, const Peer*);
template void MountsRegistryEntrySm::doDisconnectSwitch<true>(const Connection&);
template void MountsRegistryEntrySm::mountSmDataSmIs<true>(OrmMountSmDataSm&);

}  // namespace Controller
