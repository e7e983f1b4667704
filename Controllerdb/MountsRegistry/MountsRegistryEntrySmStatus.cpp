#include "Controllerdb/MountsRegistry/MountsRegistryEntrySm.h"
#include "Controllerdb/MountsRegistry/MountsRegistrySm.h"
#include "Controllerdb/MountsRegistry/MountsRegistryTrace.h"

// What the machine of a mount entry makes of its mounts' reports: which mounters they interest, the
// services' status, and the report of mounts that take too long.
namespace Controller {

using Orm::Ptr;
using Orm::String;

namespace {

constexpr char kHandleMountTimeout[] =
    "void Controller::MountsRegistryEntrySm::handleMountTimeout()";

}  // namespace

// ---- a mount's reports

void MountsRegistryEntrySm::OrmMountSmDataSm::onAttribute(Orm::AttributeId attribute,
                                                          const Orm::Key&) {
  if (attribute == MountSmData::Attr::mountState) handleMountState();
}

void MountsRegistryEntrySm::OrmMountSmDataSm::handleMountState() {
  if (mountsRegistryTrace.isOn()) {
    handleMountState<true>();
  } else {
    handleMountState<false>();
  }
}

// Flattened: what a mount's report leads to is spread over many small functions, whose calls would
// cost more than what they do.
template <bool kTraced>
[[gnu::flatten]] void MountsRegistryEntrySm::OrmMountSmDataSm::handleMountState() {
  const MountState state = record().mountState();
  STEP_MESSAGE(5, "void Controller::MountsRegistryEntrySm::OrmMountSmDataSm::handleMountState()",
               "%s connection:%s oldMountState:%s newMountState:%s", owner()->entryName(),
               systemId(), lastMountState_, state);
  const Connection connection = owner()->mountsRegistrySm()->connectionOf(systemId());
  askedAgain_ = false;
  owner()->updateMountersStatus<kTraced>(connection, state);
  if (isDeleted()) return;  // who was told of the status has taken the mount away
  if (askedAgain_) {
    lastMountState_ = state;  // or has had it asked for again, so that it stays
    return;
  }
  if (lastMountState_ == MountState::unmounted || state != MountState::unmounted) {
    lastMountState_ = state;
  } else {
    const Ptr<MountSm> mountSm = mountSm_;
    Orm::assertThat(mountSm, "mountsRegistryEntrySm()->mountSm( connectionId )");
    STEP_TRACE(8, "MountsRegistryEntrySm::", "handleMountState", ": Deleting mountSm for ",
               connection.name);
    mountSm->doCleanup();
    owner()->mountSmDel(connection.systemId);
    owner()->mountSmDataDel(connection.systemId);
  }
  if (owner()->mountsRegistrySm()->mountMonitor()) handleMountStateTimer<kTraced>();
}

template <bool kTraced>
void MountsRegistryEntrySm::OrmMountSmDataSm::handleMountStateTimer() {
  if (owner() && !owner()->initialized()) return;
  STEP_TRACE(8,
             "void Controller::MountsRegistryEntrySm::OrmMountSmDataSm::"
             "handleMountStateTimer()");
  const MountState state = record().mountState();
  if (state == MountState::mounting || state == MountState::failed) {
    owner()->startMountTimer<kTraced>();
  }
}

// ---- a mounter's interest

bool MountsRegistryEntrySm::matchingServiceVersionFilter(const String& serviceName,
                                                         const String& connection) {
  return matchingServiceVersionFilter<true>(serviceName, Connection(connection));
}

template <bool kTraced>
bool MountsRegistryEntrySm::matchingServiceVersionFilter(const String& serviceName,
                                                         const Connection& connection) const {
  static constexpr char kSignature[] =
      "bool Controller::MountsRegistryEntrySm::matchingServiceVersionFilter(const String&, const "
      "String&)";
  STEP_TRACE(8, "MountsRegistryEntrySm::", "matchingServiceVersionFilter", " ", serviceName, " ",
             connection.name);
  const ServiceVersionFilter* const filter = versionFilter_.find(serviceName);
  if (!filter) {
    STEP_TRACE(8, "MountsRegistryEntrySm::", "matchingServiceVersionFilter",
               " no version filter for service ", serviceName);
    return false;
  }
  const std::uint32_t version =
      mountsRegistrySm_->negotiatedVersion<kTraced>(serviceName, connection);
  if (version == 0) {
    STEP_MESSAGE(5, kSignature, " no version service:%s connection:%s", serviceName,
                 connection.name);
    return false;
  }
  if (kTraced && mountsRegistryTrace.enabled(8)) {
    for (const auto& supported : filter->version()) {
      STEP_TRACE(8, "Supported version for ", serviceName, " for ", connection.name, " ",
                 supported.key);
    }
  }
  if (filter->version().value(version)) {
    STEP_MESSAGE(5, kSignature, " matched version:%s service:%s connection:%s", version,
                 serviceName, connection.name);
    return true;
  }
  STEP_MESSAGE(5, kSignature, " version:%s not in filter service:%s connection:%s", version,
               serviceName, connection.name);
  return false;
}

bool MountsRegistryEntrySm::mounterIsInterestedInConnection(const Mounter& mounter,
                                                            const String& connection) {
  return mounterIsInterestedInConnection(mounter, Connection(connection));
}

template <bool kTraced>
Admission MountsRegistryEntrySm::interestOf(const Mounter& mounter,
                                            const Connection& connection) const {
  STEP_TRACE(8, "MountsRegistryEntrySm::", "mounterIsInterestedInConnection", " ", entryName());
  const Ptr<ServiceMountGroupConfig const>& group = mounter.mountGroupConfig();
  if (!group) return Admission::admitted;
  const bool included = !group->systemFilter() || group->systemFilter()->includes(connection.name);
  // The version is tested, and its messages written, for a system that is left out as well.
  const bool matching = !group->versionFilter() ||
                        matchingServiceVersionFilter<kTraced>(mounter.serviceName(), connection);
  if (!included) return Admission::systemNotInFilter;
  return matching ? Admission::admitted : Admission::versionNotInFilter;
}

// ---- the services' status

template <bool kTraced>
void MountsRegistryEntrySm::updateMountersStatus(const Connection& connection, MountState state) {
  STEP_MESSAGE(5,
               "void Controller::MountsRegistryEntrySm::updateMountersStatus(const "
               "Controller::SystemId&, Controller::MountState)",
               "%s mount state:%s connection:%s", entryName(), state, connection.name);
  registryEntry_->mounter().walk(
      [&](const Mounter& mounter) { updateMounterStatus<kTraced>(mounter, connection, state); });
}

template <bool kTraced>
void MountsRegistryEntrySm::updateMounterStatus(const Mounter& mounter,
                                                const Connection& connection, MountState state) {
  static constexpr char kSignature[] =
      "void Controller::MountsRegistryEntrySm::updateMounterStatus(const PtrConst&, const "
      "Controller::SystemId&, Controller::MountState)";
  STEP_MESSAGE(5, kSignature, "mounter: %s connectionId: %s mountState: %s",
               mounter.mounterNameText(), connection.name, state);
  const Ptr<ServiceMountStatus>& serviceMountStatus = mounter.serviceMountStatus();
  Orm::assertThat(serviceMountStatus, "serviceMountStatus");
  const SystemStatus* const systemStatus = serviceMountStatus->systemStatus(connection.name);
  if (!systemStatus) {
    STEP_MESSAGE(5, kSignature, "no system status for: %s", connection.name);
    return;
  }
  const Ptr<ServiceMountGroupConfig const>& mountGroupConfig = mounter.mountGroupConfig();
  Orm::assertThat(mountGroupConfig,
                  "mountGroupConfig && \"mountGroupConfig does not exist for mounter\"");
  const Ptr<ServiceMountGroupStatus> groupStatus(mounter.groupStatusIn(*systemStatus));
  if (!groupStatus) {
    STEP_TRACE(8, "serviceMountGroupStatus does not exist for mounter");
    return;
  }
  const bool configured = mounter.groupHas(entryName());
  // The "%s" before "config" has always stood in this text.
  STEP_MESSAGE(5, kSignature, "group: %s mount: %s%%s config: %s", mounter.groupName(), entryName(),
               configured);
  const bool wanted = configured && state != MountState::unmounted &&
                      mounterIsInterestedInConnection<kTraced>(mounter, connection);
  MountStatus* const mountStatus = mounter.statusIn(*groupStatus, entryName());
  if (wanted == (mountStatus != nullptr)) {
    handleMountState<kTraced>(mounter, connection, state, *groupStatus, mountStatus);
  } else {
    if (wanted) {
      groupStatus->newMountStatus(entryName(), mountGroupConfig->mountConfig().size());
    } else {
      mounter.statusDelIn(*groupStatus, entryName());
    }
    // Whoever was told of that may have exchanged any of the statuses: they are looked for again.
    handleMountState<kTraced>(mounter, connection, state);
  }
  groupStatus->processedIs(true);
}

template <bool kTraced>
void MountsRegistryEntrySm::handleMountState(const Mounter& mounter, const Connection& connection,
                                             MountState state) {
  const SystemStatus* const systemStatus =
      mounter.serviceMountStatus()->systemStatus(connection.name);
  if (!systemStatus) return;
  const Ptr<ServiceMountGroupStatus> groupStatus(mounter.groupStatusIn(*systemStatus));
  if (!groupStatus) return;
  handleMountState<kTraced>(mounter, connection, state, *groupStatus,
                            mounter.statusIn(*groupStatus, entryName()));
}

template <bool kTraced>
void MountsRegistryEntrySm::handleMountState(const Mounter& mounter, const Connection& connection,
                                             MountState state, ServiceMountGroupStatus& groupStatus,
                                             MountStatus* mountStatus) {
  STEP_MESSAGE(5,
               "void Controller::MountsRegistryEntrySm::handleMountState(const PtrConst&, "
               "const Controller::SystemId&, Controller::MountState)",
               "%s mount state:%s connection:%s service:%s mountGroup:%s remote path:%s",
               entryName(), state, connection.name, mounter.serviceName(), mounter.groupName(),
               entryName());
  if (mountStatus && state == MountState::mounted) {
    const Ptr<MountStatus> held(mountStatus);  // whoever is told of the path may take it away
    held->mountedPathIs(Fennix::ChildPath(registryEntry_->targetPath(), connection.name));
    held->mountStateIs(state);
  } else if (mountStatus) {
    mountStatus->mountStateIs(state);
  }
  updateMountGroupMountState<kTraced>(*mounter.mountGroupConfig(), groupStatus, state);
}

template <bool kTraced>
void MountsRegistryEntrySm::updateMountGroupMountState(
    const ServiceMountGroupConfig& mountGroupConfig, ServiceMountGroupStatus& mountGroupStatus,
    MountState state) const {
  STEP_TRACE(8, "MountsRegistryEntrySm::", "updateMountGroupMountState", " ", entryName());
  // The group's paths are not walked: a path has a status only while the group configures it, so
  // that the counts of the statuses and the number of paths tell the same.
  if (mountGroupStatus.mountStatusCount(MountState::failed) != 0) {
    mountGroupStatus.mountStateIs(MountState::failed);
    return;
  }
  const bool mixed =
      mountGroupStatus.mountStatusCount(state) != mountGroupConfig.mountConfig().size();
  mountGroupStatus.mountStateIs(mixed ? MountState::unmounted : state);
}

/// Whether every mounter has its group's status for the connection, as it mostly has when the
/// connection is decided: then nobody is told of anything.
bool MountsRegistryEntrySm::hasSystemStatus(const Connection& connection) const {
  for (const Ptr<Mounter>& mounter : registryEntry_->mounter()) {
    const Ptr<ServiceMountStatus>& status = mounter->serviceMountStatus();
    const SystemStatus* const system = status ? status->systemStatus(connection.name) : nullptr;
    if (!system || !mounter->groupStatusIn(*system)) return false;
  }
  return true;
}

template <bool kTraced>
void MountsRegistryEntrySm::updateSystemStatus(const Connection& connection) {
  updateSystemStatus<kTraced>(
      connection, peer(connection.systemId) || oobStatus_->isInactive(connection.systemId));
}

template <bool kTraced>
void MountsRegistryEntrySm::updateSystemStatus(const Connection& connection, bool known) {
  registryEntry_->mounter().walk(
      [&](const Mounter& mounter) { updateSystemStatus<kTraced>(mounter, connection, known); });
}

template <bool kTraced>
void MountsRegistryEntrySm::updateSystemStatus(const Mounter& mounter, const Connection& connection,
                                               bool known) {
  static constexpr char kSignature[] =
      "void Controller::MountsRegistryEntrySm::updateSystemStatus(const Controller::SystemId&)";
  const Ptr<ServiceMountStatus>& status = mounter.serviceMountStatus();
  Orm::assertThat(status, "serviceMountStatus");
  if (!known) {
    STEP_MESSAGE(5, kSignature, "Deleting systemStatus for: %s", connection.name);
    status->systemStatusDel(connection.name);
    return;
  }
  const Ptr<SystemStatus> systemStatus = status->systemStatusIs(connection.name);
  if (mounter.groupStatusIn(*systemStatus)) return;
  STEP_MESSAGE(5, kSignature, "Adding serviceMountGroupStatus for: %s", connection.name);
  systemStatus->serviceMountGroupStatusIs(mounter.groupName());
}

// ---- the mount timer

void MountsRegistryEntrySm::timeoutClockIs(const Ptr<Orm::Clock>& clock) {
  timeoutClock_.notifierIs(clock);
}

void MountsRegistryEntrySm::timeoutClockDel() { timeoutClock_.notifierIs(nullptr); }

template <bool kTraced>
void MountsRegistryEntrySm::startMountTimer() {
  STEP_TRACE(8, "MountsRegistryEntrySm::startMountTimer", ", timeout period: ", timeoutPeriod_);
  const Orm::Clock* const clock = timeoutClock_.notifier();
  if (clock) timeoutClock_.timeMinIs(clock->now() + static_cast<Orm::Seconds>(timeoutPeriod_));
}

void MountsRegistryEntrySm::handleMountTimeout() {
  if (!initialized_) return;
  REGISTRY_TRACE(8, kHandleMountTimeout);
  mountSmDataSm_.walk([this](const OrmMountSmDataSm& mount) { handleMountTimeout(mount); });
}

void MountsRegistryEntrySm::handleMountTimeout(const OrmMountSmDataSm& mount) const {
  const MountState state = mount.record().mountState();
  if (state == MountState::mounting) {
    REGISTRY_MESSAGE(5, kHandleMountTimeout, "mount in progress too long");
  } else if (state == MountState::failed) {
    REGISTRY_MESSAGE(5, kHandleMountTimeout, "mount failed");
  } else {
    return;
  }
  mountsRegistryTimeoutLog.log("ZORB", "switch", displayName(mount.systemId()));
}

String MountsRegistryEntrySm::displayName(const SystemId& systemId) const {
  const ControllerOob::ClientStatus* const client = oobStatus_->clientStatusOfSystem(systemId);
  return client && !client->name().empty() ? client->name() : systemId.stringValue();
}

// What is called from elsewhere: of each step the copy with traces, and what the machine's
// decisions call without.
template void MountsRegistryEntrySm::OrmMountSmDataSm::handleMountStateTimer<true>();
template void MountsRegistryEntrySm::updateMounterStatus<true>(const Mounter&, const Connection&,
                                                               MountState);
template void MountsRegistryEntrySm::handleMountState<true>(const Mounter&, const Connection&,
                                                            MountState);
template void MountsRegistryEntrySm::updateMountGroupMountState<true>(
    const ServiceMountGroupConfig&, ServiceMountGroupStatus&, MountState) const;
template void MountsRegistryEntrySm::startMountTimer<true>();

#define INSTANTIATE(kTraced)                                                                       \
  template void MountsRegistryEntrySm::OrmMountSmDataSm::handleMountState<kTraced>();              \
  template bool MountsRegistryEntrySm::matchingServiceVersionFilter<kTraced>(                      \
      const String&, const Connection&) const;                                                     \
  template Admission MountsRegistryEntrySm::interestOf<kTraced>(const Mounter&, const Connection&) \
      const;                                                                                       \
  template void MountsRegistryEntrySm::updateMountersStatus<kTraced>(const Connection&,            \
                                                                     MountState);                  \
  template void MountsRegistryEntrySm::updateSystemStatus<kTraced>(const Connection&);             \
  template void MountsRegistryEntrySm::updateSystemStatus<kTraced>(const Connection&, bool)
INSTANTIATE(true);
INSTANTIATE(false);
#undef INSTANTIATE

}  // namespace Controller
