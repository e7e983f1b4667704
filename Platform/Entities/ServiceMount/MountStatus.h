#pragma once

#include "Platform/Entities/ServiceMount/MountState.h"
#include "Platform/Fennix/ChildPath.h"
#include "Platform/Orm/Entity.h"
#include "Platform/Orm/String.h"

namespace Controller {

class ServiceMountGroupStatus;

/// The mount of one path from one switch, as the services see it. A member of the group's status,
/// which counts its members by state.
class MountStatus : public Orm::Entity, private Kobble::Counted<MountStatus> {
 public:
  struct Attr {
    enum : Orm::AttributeId { mountState, mountedPath };
  };

  MountStatus(Orm::String path, ServiceMountGroupStatus* group)
      : path_(std::move(path)), group_(group) {}

  /// The remote path.
  const Orm::String& path() const { return path_; }

  MountState mountState() const { return mountState_; }
  void mountStateIs(MountState state);

  /// Where the switch's copy stands in the state store; empty until it was mounted once.
  const Fennix::ChildPath& mountedPath() const { return mountedPath_; }
  void mountedPathIs(Fennix::ChildPath path) {
    assign(mountedPath_, std::move(path), Attr::mountedPath);
  }

 private:
  friend class ServiceMountGroupStatus;

  Orm::String path_;
  Fennix::ChildPath mountedPath_;
  ServiceMountGroupStatus* group_;  // null once it has left the group
  MountState mountState_ = MountState::unmounted;
};

}  // namespace Controller
