#include "Fabric/PublishStatusWatch.h"

#include <utility>

namespace Fabric {

using Controllerdb::SystemPublishedMount;
using Orm::Ptr;
using Orm::String;

PublishStatusWatch::PublishStatusWatch(const Ptr<Controllerdb::PublishStatus const>& status,
                                       StatusObserver& observer)
    : observer_(observer), status_(this) {
  status_.notifierIs(status);
}

void PublishStatusWatch::OrmPublishStatus::onAttribute(Orm::AttributeId attribute,
                                                       const Orm::Key& key) {
  if (attribute == Controllerdb::PublishStatus::Attr::system) {
    handleSystem(key.as<Controller::SystemId>());
  } else if (attribute == Controllerdb::PublishStatus::Attr::servicePublishReady) {
    handleReady(key.as<String>());
  }
}

void PublishStatusWatch::OrmPublishStatus::onNotifier() {
  notifier()->system().walk(
      [this](const SystemPublishedMount& system) { handleSystem(system.systemId()); });
}

void PublishStatusWatch::OrmPublishStatus::handleSystem(const Controller::SystemId& systemId) {
  const Ptr<SystemPublishedMount const> record(notifier()->system(systemId));
  auto& systems = owner()->systems_;
  const OrmSystem* const present = systems.find(systemId);
  if (present && present->notifier() == record.get()) return;
  systems.take(systemId);
  if (!record) return;
  // A member of the collection is known by what it watches.
  Orm::Owned<OrmSystem> system(new OrmSystem(owner()));
  system->notifierIs(record);
  systems.insert(std::move(system));
}

void PublishStatusWatch::OrmPublishStatus::handleReady(const String& serviceName) {
  owner()->observer_.publishReady(serviceName,
                                  notifier()->servicePublishReady().value(serviceName));
}

void PublishStatusWatch::OrmSystem::onAttribute(Orm::AttributeId attribute, const Orm::Key& key) {
  if (attribute != SystemPublishedMount::Attr::publishedMount) return;
  const auto& path = key.as<String>();
  const String system = systemId().stringValue();
  if (const Controllerdb::MountDesc* mount = notifier()->publishedMount().find(path)) {
    owner()->observer_.published(system, *mount);
  } else {
    owner()->observer_.unpublished(system, path);
  }
}

}  // namespace Fabric
