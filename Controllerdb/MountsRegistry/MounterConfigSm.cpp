#include "Controllerdb/MountsRegistry/MounterConfigSm.h"

#include "Controllerdb/MountsRegistry/MountsRegistryEntrySm.h"
#include "Controllerdb/MountsRegistry/MountsRegistryTrace.h"

namespace Controller {

using Orm::Ptr;
using Orm::String;

Ptr<MounterConfigSm> mounterConfigSmFactory(const Ptr<Mounter>& mounter,
                                            MountsRegistryEntrySm* parent) {
  return Orm::make<MounterConfigSm>(mounter, parent);
}

// ---- construct

MounterConfigSm::MounterConfigSm(Ptr<Mounter> mounter, MountsRegistryEntrySm* parent)
    : mounter_(std::move(mounter)),
      parent_(parent),
      mountGroupConfig_(this),
      systemFilter_(this),
      versionFilter_(this) {}

void MounterConfigSm::start() {
  // What is left of one that is withdrawing: whoever it told has had the path mounted again.
  if (parent_->versionFilter().has(serviceName())) parent_->versionFilterDel(serviceName());
  mountGroupConfig_.notifierIs(mounter_->mountGroupConfig());
  systemFilterIs(groupSystemFilter());
  versionFilterIs(groupVersionFilter());
}

void MounterConfigSm::hasNotificationActiveIs(bool active) {
  mountGroupConfig_.hasNotificationActiveIs(active);
  systemFilter_.hasNotificationActiveIs(active);
  versionFilter_.hasNotificationActiveIs(active);
}

void MounterConfigSm::systemFilterIs(const Ptr<MountFilterSystem const>& filter) {
  systemFilter_.notifierIs(filter);
  if (filter) systemFilter_.handleInitialized();
}

void MounterConfigSm::versionFilterIs(const Ptr<MountFilterServiceVersion const>& filter) {
  versionFilter_.notifierIs(filter);
  if (filter) versionFilter_.handleInitialized();
}

const Ptr<MountFilterSystem const>& MounterConfigSm::groupSystemFilter() const {
  static const Ptr<MountFilterSystem const> kNone;
  const auto& group = mounter_->mountGroupConfig();
  return group ? group->systemFilter() : kNone;
}

const Ptr<MountFilterServiceVersion const>& MounterConfigSm::groupVersionFilter() const {
  static const Ptr<MountFilterServiceVersion const> kNone;
  const auto& group = mounter_->mountGroupConfig();
  return group ? group->versionFilter() : kNone;
}

// ---- react

void MounterConfigSm::OrmMountGroupConfig::onAttribute(Orm::AttributeId attribute,
                                                       const Orm::Key&) {
  if (attribute == ServiceMountGroupConfig::Attr::systemFilter) owner()->handleSystemFilter();
  if (attribute == ServiceMountGroupConfig::Attr::versionFilter) owner()->handleVersionFilter();
}

void MounterConfigSm::OrmSystemFilter::onAttribute(Orm::AttributeId attribute,
                                                   const Orm::Key& key) {
  if (attribute != MountFilterSystem::Attr::includedSystem) return;
  const std::uint64_t changes = notifier()->changes();
  const bool isNext = folded_ + 1 == changes;
  handleIncludedSystem(key.as<String>());
  if (isNext) foldedIs(changes);
}

void MounterConfigSm::OrmSystemFilter::handleIncludedSystem() {
  const Ptr<MountFilterSystem const> filter(notifier());
  const std::uint64_t changes = filter->changes();
  folded_ = kNothing;
  filter->includedSystem().walk(
      [this](const String& system, bool) { handleIncludedSystem(system); });
  if (notifier() == filter.get()) foldedIs(changes);
}

/// Whoever was told of what followed may have changed the filter again, or exchanged it; then the
/// union alone counts, until a filter is folded in whole.
void MounterConfigSm::OrmSystemFilter::foldedIs(std::uint64_t changes) {
  const Ptr<MountFilterSystem const> filter(notifier());
  const bool isThat = filter && filter == owner()->groupSystemFilter();
  folded_ = isThat && filter->changes() == changes ? changes : kNothing;
  if (folded_ == changes) owner()->systemFilterIsFolded(filter);
}

void MounterConfigSm::OrmSystemFilter::handleIncludedSystem(const String& system) {
  REGISTRY_TRACE(8, "MounterConfigSm::OrmSystemFilter::", "handleIncludedSystem", ": ", system);
  const Ptr<MountFilterSystem const>& filter = owner()->groupSystemFilter();
  if (filter && filter->includes(system)) {
    owner()->addSystemToConnectionFilter(system);
  } else {
    owner()->removeSystemFromConnectionFilter(system);
  }
}

void MounterConfigSm::OrmVersionFilter::onAttribute(Orm::AttributeId attribute,
                                                    const Orm::Key& key) {
  if (attribute == MountFilterServiceVersion::Attr::includedServiceVersion) {
    handleIncludedServiceVersion(key.as<std::uint32_t>());
  }
}

void MounterConfigSm::OrmVersionFilter::handleIncludedServiceVersion() {
  const Ptr<MountFilterServiceVersion const> filter(notifier());
  filter->includedServiceVersion().walk(
      [this](std::uint32_t version, bool) { handleIncludedServiceVersion(version); });
}

void MounterConfigSm::OrmVersionFilter::handleIncludedServiceVersion(std::uint32_t version) {
  REGISTRY_TRACE(8, "MounterConfigSm::OrmVersionFilter::", "handleIncludedServiceVersion",
                 ": version=", version);
  const Ptr<MountFilterServiceVersion const>& filter = owner()->groupVersionFilter();
  if (filter && filter->includes(version)) {
    owner()->addVersionToVersionFilter(version);
  } else {
    owner()->removeVersionFromVersionFilter(version);
  }
}

void MounterConfigSm::handleSystemFilter() {
  REGISTRY_TRACE(8, "MounterConfigSm::", "handleSystemFilter", ": ", parent_->entryName());
  refolding_ = true;
  withdrawSystems();
  systemFilterIs(groupSystemFilter());
  refolding_ = false;
  parent_->handleMounterFilters();
}

void MounterConfigSm::handleVersionFilter() {
  REGISTRY_TRACE(8, "MounterConfigSm::", "handleVersionFilter", ": ", parent_->entryName());
  refolding_ = true;
  withdrawVersions();
  versionFilterIs(groupVersionFilter());
  refolding_ = false;
  parent_->handleMounterFilters();
}

// ---- act

void MounterConfigSm::systemFilterIsFolded(const Ptr<MountFilterSystem const>& filter) {
  if (cleanedUp_ || contributed_.size() != parent_->connectionFilter().size()) return;
  parent_->connectionFilterIsSameAs(filter);
}

void MounterConfigSm::addSystemToConnectionFilter(const String& system) {
  REGISTRY_TRACE(8, "MounterConfigSm::", "addSystemToConnectionFilter", ": ", system);
  if (cleanedUp_ || !contributed_.set(system, true)) return;
  const std::uint32_t count = parent_->connectionFilter().value(system);
  if (count > 0) {
    REGISTRY_MESSAGE(5,
                     "void Controller::MounterConfigSm::addSystemToConnectionFilter(const String&)",
                     " path:%s refcount:%s filter:%s", parent_->entryName(), count, system);
    parent_->connectionFilterIs(system, count + 1);
    return;
  }
  REGISTRY_MESSAGE(5,
                   "void Controller::MounterConfigSm::addSystemToConnectionFilter(const String&)",
                   " new filter:%s path:%s", system, parent_->entryName());
  parent_->connectionFilterIs(system, 1);
  redecide();
}

void MounterConfigSm::removeSystemFromConnectionFilter(const String& system) {
  REGISTRY_TRACE(8, "MounterConfigSm::", "removeSystemFromConnectionFilter", ": ", system);
  if (!contributed_.erase(system)) return;
  const std::uint32_t refCount = parent_->connectionFilter().value(system);
  if (refCount == 0) return;
  if (refCount == 1) {
    REGISTRY_MESSAGE(
        5, "void Controller::MounterConfigSm::removeSystemFromConnectionFilter(const String&)",
        " del filter:%s path:%s", system, parent_->entryName());
    parent_->connectionFilterDel(system);
    redecide();
    return;
  }
  REGISTRY_MESSAGE(
      5, "void Controller::MounterConfigSm::removeSystemFromConnectionFilter(const String&)",
      " path:%s refcount:%s filter:%s", parent_->entryName(), refCount, system);
  Orm::assertThat(refCount > 1, "refCount > 1");
  parent_->connectionFilterIs(system, refCount - 1);
}

void MounterConfigSm::addVersionToVersionFilter(std::uint32_t version) {
  REGISTRY_TRACE(8, "MounterConfigSm::", "addVersionToVersionFilter", ": ", version);
  if (cleanedUp_) return;
  parent_->versionFilterIs(serviceName())->versionIs(version, true);
  redecide();
}

void MounterConfigSm::removeVersionFromVersionFilter(std::uint32_t version) {
  REGISTRY_TRACE(8, "MounterConfigSm::", "removeVersionFromVersionFilter", ": ", version);
  if (isReplaced()) return;
  const Ptr<ServiceVersionFilter> filter = parent_->versionFilterIs(serviceName());
  filter->versionDel(version);
  if (filter->version().empty()) parent_->versionFilterDel(serviceName());
  redecide();
}

void MounterConfigSm::redecide() {
  if (!refolding_) parent_->handleSwitchConnection();
}

// ---- clean up

void MounterConfigSm::doCleanup() {
  REGISTRY_TRACE(8, "MounterConfigSm::", "doCleanup");
  if (cleanedUp_) return;
  cleanedUp_ = true;
  const Orm::ActivityScope scope;
  mountGroupConfig_.notifierIs(nullptr);
  withdrawSystems();
  withdrawVersions();
  deleteMountStatus();
}

void MounterConfigSm::withdrawSystems() {
  const Ptr<MountFilterSystem const> filter(systemFilter_.notifier());
  systemFilterDel();
  if (filter) {
    filter->includedSystem().walk(
        [this](const String& system, bool) { removeSystemFromConnectionFilter(system); });
  }
  // What the filter lost while nobody was told of it.
  contributed_.walk(
      [this](const String& system, bool) { removeSystemFromConnectionFilter(system); });
}

/// Whoever was told of the first that went may have had the service mount the path again.
bool MounterConfigSm::isReplaced() const {
  const MounterConfigSm* const present = parent_->mounterConfigSm().find(serviceName());
  return present && present != this;
}

void MounterConfigSm::withdrawVersions() {
  const Ptr<MountFilterServiceVersion const> filter(versionFilter_.notifier());
  versionFilterDel();
  if (filter) {
    filter->includedServiceVersion().walk(
        [this](std::uint32_t version, bool) { removeVersionFromVersionFilter(version); });
  }
  if (isReplaced() || !parent_->versionFilter().has(serviceName())) return;
  parent_->versionFilterDel(serviceName());
  redecide();
}

void MounterConfigSm::deleteMountStatus() {
  const Ptr<ServiceMountStatus>& status = mounter_->serviceMountStatus();
  if (!status || isReplaced()) return;
  status->mountedPathPrefixDel(parent_->entryName());
  status->systemStatus().walk([this](SystemStatus& system) { deleteMountStatus(system); });
}

void MounterConfigSm::deleteMountStatus(SystemStatus& system) {
  if (isReplaced()) return;
  const String& path = parent_->entryName();
  const Ptr<ServiceMountGroupStatus> group(system.serviceMountGroupStatus(mounter_->groupName()));
  if (!group || !group->mountStatus(path)) return;
  REGISTRY_TRACE(8, "MounterConfigSm::", "doCleanup", ": Deleting mount status for ", path);
  group->mountStatusDel(path);
  if (!group->mountStatus().empty()) return;
  REGISTRY_TRACE(8, "MounterConfigSm::", "doCleanup", ": Deleting mount group status for ",
                 mounter_->groupName());
  system.serviceMountGroupStatusDel(mounter_->groupName());
  if (!system.serviceMountGroupStatus().empty()) return;
  REGISTRY_TRACE(8, "MounterConfigSm::", "doCleanup", ": Deleting system status for ",
                 system.name());
  mounter_->serviceMountStatus()->systemStatusDel(system.name());
}

}  // namespace Controller
