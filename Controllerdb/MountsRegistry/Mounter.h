#pragma once

#include <cstdint>

#include "Controllerdb/MountsRegistry/MounterName.h"
#include "Platform/Entities/ServiceMount/MountConfig.h"
#include "Platform/Entities/ServiceMount/ServiceMountGroupConfig.h"
#include "Platform/Entities/ServiceMount/ServiceMountStatus.h"

namespace Controller {

/// A service that wants a mount entry mounted. A member of the entry, keyed by the service's name
/// alone: a service has one mounter an entry, whichever of its groups asked first.
class Mounter : public Orm::Entity, private Kobble::Counted<Mounter> {
 public:
  Mounter(MounterName mounterName, Orm::Ptr<MountConfig const> mountConfig,
          Orm::Ptr<ServiceMountGroupConfig const> mountGroupConfig,
          Orm::Ptr<ServiceMountStatus> serviceMountStatus)
      : mounterName_(std::move(mounterName)),
        mountConfig_(std::move(mountConfig)),
        mountGroupConfig_(std::move(mountGroupConfig)),
        serviceMountStatus_(std::move(serviceMountStatus)),
        nameText_(mounterName_.stringValue()) {}

  const MounterName& mounterName() const { return mounterName_; }
  /// Its string form, made once: each report of a mount tells it to the traces.
  const Orm::String& mounterNameText() const { return nameText_; }
  const Orm::String& serviceName() const { return mounterName_.serviceName; }
  const Orm::String& groupName() const { return mounterName_.groupName; }

  const Orm::Ptr<MountConfig const>& mountConfig() const { return mountConfig_; }
  /// The group whose filters and preserve flag apply; may be null.
  const Orm::Ptr<ServiceMountGroupConfig const>& mountGroupConfig() const {
    return mountGroupConfig_;
  }
  const Orm::Ptr<ServiceMountStatus>& serviceMountStatus() const { return serviceMountStatus_; }

  /// Whether the group configures the path of the mounter's entry at present.
  bool groupHas(const Orm::String& path) const {
    return mountGroupConfig_->mountConfig().find(path, placeInConfig_) != nullptr;
  }
  /// The group's status in that of a system, null when it has none. A group has mostly the same
  /// place in the statuses of all systems, so that it is looked for there first.
  ServiceMountGroupStatus* groupStatusIn(const SystemStatus& systemStatus) const {
    return systemStatus.serviceMountGroupStatus().find(groupName(), placeOfGroup_);
  }
  /// The path's status in a status of the group, null when it has none. The path has mostly the
  /// same place in the statuses of all switches, so that it is looked for there first.
  MountStatus* statusIn(const ServiceMountGroupStatus& groupStatus, const Orm::String& path) const {
    return groupStatus.mountStatus().find(path, placeInStatus_);
  }
  /// Takes the path's status out, looking for it at that place first.
  void statusDelIn(ServiceMountGroupStatus& groupStatus, const Orm::String& path) const {
    groupStatus.mountStatusDel(path, placeInStatus_);
  }

  /// Room for the mount side; nobody is told of a change.
  std::uint64_t mountSideNote() const { return mountSideNote_; }
  void mountSideNoteIs(std::uint64_t note) { mountSideNote_ = note; }

 private:
  MounterName mounterName_;
  Orm::Ptr<MountConfig const> mountConfig_;
  Orm::Ptr<ServiceMountGroupConfig const> mountGroupConfig_;
  Orm::Ptr<ServiceMountStatus> serviceMountStatus_;
  std::uint64_t mountSideNote_ = 0;
  mutable ServiceMountGroupConfig::MountConfigs::Hint placeInConfig_ = 0;
  mutable SystemStatus::GroupStatuses::Hint placeOfGroup_ = 0;
  mutable ServiceMountGroupStatus::MountStatuses::Hint placeInStatus_ = 0;
  Orm::String nameText_;
};

}  // namespace Controller
