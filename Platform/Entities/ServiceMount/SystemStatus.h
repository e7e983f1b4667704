#pragma once

#include "Platform/Entities/ServiceMount/ServiceMountGroupStatus.h"
#include "Platform/Orm/CollectionOwner.h"

namespace Controller {

/// One service's mounts from one switch, by mount group.
class SystemStatus : public Orm::CollectionOwner, private Kobble::Counted<SystemStatus> {
 public:
  struct Attr {
    enum : Orm::AttributeId { serviceMountGroupStatus };
  };
  using GroupStatuses =
      Orm::Collection<Orm::Ptr<ServiceMountGroupStatus>, &ServiceMountGroupStatus::groupName>;

  explicit SystemStatus(Orm::String name) : name_(std::move(name)) {}

  /// The text form of the switch's id.
  const Orm::String& name() const { return name_; }

  const GroupStatuses& serviceMountGroupStatus() const { return groupStatus_; }
  ServiceMountGroupStatus* serviceMountGroupStatus(const Orm::String& groupName) const {
    return groupStatus_.find(groupName);
  }
  Orm::Ptr<ServiceMountGroupStatus> serviceMountGroupStatusIs(const Orm::String& groupName) {
    if (ServiceMountGroupStatus* present = groupStatus_.find(groupName)) return present;
    return memberIs(groupStatus_, Attr::serviceMountGroupStatus,
                    Orm::make<ServiceMountGroupStatus>(groupName));
  }
  void serviceMountGroupStatusDel(const Orm::String& groupName) {
    const Orm::Ptr<ServiceMountGroupStatus> gone = groupStatus_.take(groupName);
    if (!gone) return;
    const Orm::Ptr<SystemStatus> self(this);
    gone->leaveSystem();
    notify(Attr::serviceMountGroupStatus, gone->groupName());
  }
  void serviceMountGroupStatusDelAll() {
    const Orm::Ptr<SystemStatus> self(this);
    groupStatus_.walk([this](const ServiceMountGroupStatus& group) {
      serviceMountGroupStatusDel(group.groupName());
    });
  }

 private:
  Orm::String name_;
  GroupStatuses groupStatus_;
};

}  // namespace Controller
