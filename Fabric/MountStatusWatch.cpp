#include "Fabric/MountStatusWatch.h"

#include <utility>

namespace Fabric {

using Controller::ServiceMountGroupStatus;
using Controller::ServiceMountStatus;
using Controller::SystemStatus;
using Orm::Owned;
using Orm::Ptr;
using Orm::String;

MountStatusWatch::MountStatusWatch(const Ptr<Fennix::Dir const>& statusDir,
                                   StatusObserver& observer)
    : observer_(observer), statusDir_(this) {
  statusDir_.notifierIs(statusDir);
}

// ---- the directory

void MountStatusWatch::OrmStatusDir::onAttribute(Orm::AttributeId attribute, const Orm::Key& key) {
  if (attribute == Fennix::Dir::Attr::entity) owner()->handleService(key.as<String>());
}

void MountStatusWatch::OrmStatusDir::onNotifier() {
  notifier()->entity().walk(
      [this](const String& key, const Ptr<Orm::Entity>&) { owner()->handleService(key); });
}

void MountStatusWatch::handleService(const String& key) {
  const auto status = statusDir_.notifier()->entityAs<ServiceMountStatus>(key);
  OrmServiceMountStatus* const present = services_.find(key);
  if (present && present->notifier() == status.get()) return;
  services_.take(key);
  if (!status) return;
  Owned<OrmServiceMountStatus> service(new OrmServiceMountStatus(this, key));
  services_.insert(std::move(service)).notifierIs(status);
}

// ---- a service

void MountStatusWatch::OrmServiceMountStatus::onAttribute(Orm::AttributeId attribute,
                                                          const Orm::Key& key) {
  if (attribute == ServiceMountStatus::Attr::systemStatus) {
    handleSystem(key.as<String>());
  } else if (attribute == ServiceMountStatus::Attr::initialMountsComplete) {
    handleInitialMountsComplete(key.as<String>());
  } else if (attribute == ServiceMountStatus::Attr::mountedPathPrefix) {
    observer().pathPrefix(key_, key.as<String>());
  }
}

void MountStatusWatch::OrmServiceMountStatus::onNotifier() {
  notifier()->systemStatus().walk(
      [this](const SystemStatus& system) { handleSystem(system.name()); });
}

void MountStatusWatch::OrmServiceMountStatus::handleSystem(const String& systemName) {
  const Ptr<SystemStatus const> status(notifier()->systemStatus(systemName));
  OrmSystemStatus* const present = systems_.find(systemName);
  if (present && present->notifier() == status.get()) return;
  systems_.take(systemName);
  if (!status) return;
  // A member of the collection is known by what it watches.
  Owned<OrmSystemStatus> system(new OrmSystemStatus(this));
  system->notifierIs(status);
  systems_.insert(std::move(system));
}

void MountStatusWatch::OrmServiceMountStatus::handleInitialMountsComplete(const String& groupName) {
  observer().initialMountsComplete(key_, groupName,
                                   notifier()->initialMountsComplete().value(groupName));
}

// ---- a switch

void MountStatusWatch::OrmSystemStatus::onAttribute(Orm::AttributeId attribute,
                                                    const Orm::Key& key) {
  if (attribute == SystemStatus::Attr::serviceMountGroupStatus) handleGroup(key.as<String>());
}

void MountStatusWatch::OrmSystemStatus::onNotifier() {
  notifier()->serviceMountGroupStatus().walk(
      [this](const ServiceMountGroupStatus& group) { handleGroup(group.groupName()); });
}

void MountStatusWatch::OrmSystemStatus::handleGroup(const String& groupName) {
  const Ptr<ServiceMountGroupStatus const> status(notifier()->serviceMountGroupStatus(groupName));
  OrmGroupStatus* const present = groups_.find(groupName);
  if (present && present->notifier() == status.get()) return;
  groups_.take(groupName);
  if (!status) return;
  Owned<OrmGroupStatus> group(new OrmGroupStatus(this));
  group->notifierIs(status);
  groups_.insert(std::move(group));
}

// ---- a group

void MountStatusWatch::OrmGroupStatus::onAttribute(Orm::AttributeId attribute, const Orm::Key&) {
  if (attribute != ServiceMountGroupStatus::Attr::mountState) return;
  const OrmServiceMountStatus& service = owner()->service();
  service.observer().groupState(service.key(), groupName(), owner()->systemName(),
                                notifier()->mountState());
}

}  // namespace Fabric
