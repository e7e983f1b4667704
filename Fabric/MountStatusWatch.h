#pragma once

#include "Fabric/StatusObserver.h"
#include "Platform/Entities/ServiceMount/ServiceMountStatus.h"
#include "Platform/Fennix/Dir.h"
#include "Platform/Orm/Collection.h"
#include "Platform/Orm/Reactor.h"

namespace Fabric {

/// Follows the services' mount statuses in one directory and tells an observer of each change
/// of a group's state on a switch, of each group whose initial mounts are complete, and of where
/// paths are mounted.
///
/// Is to be made before the machines that write or watch the statuses, so that it is registered
/// before them and sees a change before what follows from it. Costs one reactor for each service,
/// switch and group, which go with the entities that they watch.
class MountStatusWatch {
 public:
  class OrmServiceMountStatus;
  class OrmSystemStatus;

  /// Reacts to which services have a status.
  class OrmStatusDir final : public Orm::ReactorOn<Fennix::Dir, MountStatusWatch> {
   public:
    explicit OrmStatusDir(MountStatusWatch* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;

   private:
    void onNotifier() override;
  };

  /// Reacts to one group's state on one switch.
  class OrmGroupStatus final
      : public Orm::ReactorOn<Controller::ServiceMountGroupStatus, OrmSystemStatus> {
   public:
    explicit OrmGroupStatus(OrmSystemStatus* owner) : ReactorOn(owner) {}
    const Orm::String& groupName() const { return notifier()->groupName(); }
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
  };

  /// Reacts to the groups that have a status on one switch.
  class OrmSystemStatus final
      : public Orm::ReactorOn<Controller::SystemStatus, OrmServiceMountStatus> {
   public:
    explicit OrmSystemStatus(OrmServiceMountStatus* owner) : ReactorOn(owner) {}
    const Orm::String& systemName() const { return notifier()->name(); }
    const OrmServiceMountStatus& service() const { return *owner(); }
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;

   private:
    void onNotifier() override;
    void handleGroup(const Orm::String& groupName);

    Orm::Collection<Orm::Owned<OrmGroupStatus>, &OrmGroupStatus::groupName> groups_;
  };

  /// Reacts to one service's status.
  class OrmServiceMountStatus final
      : public Orm::ReactorOn<Controller::ServiceMountStatus, MountStatusWatch> {
   public:
    OrmServiceMountStatus(MountStatusWatch* owner, Orm::String key)
        : ReactorOn(owner), key_(std::move(key)) {}
    /// The name under which the status stands in the directory.
    const Orm::String& key() const { return key_; }
    StatusObserver& observer() const { return owner()->observer_; }
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;

   private:
    void onNotifier() override;
    void handleSystem(const Orm::String& systemName);
    void handleInitialMountsComplete(const Orm::String& groupName);

    Orm::String key_;
    Orm::Collection<Orm::Owned<OrmSystemStatus>, &OrmSystemStatus::systemName> systems_;
  };

  /// What is in the directory at this time makes no event. `observer` must stay.
  MountStatusWatch(const Orm::Ptr<Fennix::Dir const>& statusDir, StatusObserver& observer);

 private:
  void handleService(const Orm::String& key);

  StatusObserver& observer_;
  OrmStatusDir statusDir_;
  Orm::Collection<Orm::Owned<OrmServiceMountStatus>, &OrmServiceMountStatus::key> services_;
};

}  // namespace Fabric
