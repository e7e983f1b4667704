#pragma once

#include "Fabric/StatusObserver.h"
#include "Platform/Entities/Controllerdb/PublishStatus.h"
#include "Platform/Orm/Collection.h"
#include "Platform/Orm/Reactor.h"

namespace Fabric {

/// Follows the controller database's publish status and tells an observer of each publication
/// that comes, changes or goes, and of each service's readiness.
///
/// Is to be made before the machines. Costs one reactor for each switch.
class PublishStatusWatch {
 public:
  /// Reacts to what is published to one switch.
  class OrmSystem final
      : public Orm::ReactorOn<Controllerdb::SystemPublishedMount, PublishStatusWatch> {
   public:
    explicit OrmSystem(PublishStatusWatch* owner) : ReactorOn(owner) {}
    const Controller::SystemId& systemId() const { return notifier()->systemId(); }
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
  };

  /// Reacts to the switches that have a record, and to the services' readiness.
  class OrmPublishStatus final
      : public Orm::ReactorOn<Controllerdb::PublishStatus, PublishStatusWatch> {
   public:
    explicit OrmPublishStatus(PublishStatusWatch* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;

   private:
    void onNotifier() override;
    void handleSystem(const Controller::SystemId& systemId);
    void handleReady(const Orm::String& serviceName);
  };

  /// What is there at this time makes no event. `observer` must stay.
  PublishStatusWatch(const Orm::Ptr<Controllerdb::PublishStatus const>& status,
                     StatusObserver& observer);

 private:
  StatusObserver& observer_;
  OrmPublishStatus status_;
  Orm::Collection<Orm::Owned<OrmSystem>, &OrmSystem::systemId> systems_;
};

}  // namespace Fabric
