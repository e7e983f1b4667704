#include "Platform/Entities/ServiceMount/ServiceMountGroupStatus.h"

namespace Controller {

using Orm::Ptr;
using Orm::String;

ServiceMountGroupStatus::~ServiceMountGroupStatus() {
  // A member that someone still holds must not count on in what has gone.
  for (const Ptr<MountStatus>& status : mountStatus_) status->leaveGroup();
}

void ServiceMountGroupStatus::mountStatusDel(const String& path) {
  MountStatuses::Hint hint = 0;
  mountStatusDel(path, hint);
}

void ServiceMountGroupStatus::mountStatusDel(const String& path, MountStatuses::Hint& hint) {
  const Ptr<MountStatus> gone(mountStatus_.find(path, hint));
  if (!gone) return;
  gone->leaveGroup();
  memberDel(mountStatus_, Attr::mountStatus, gone->path(), hint);
}

void ServiceMountGroupStatus::mountStatusDelAll() {
  const Ptr<ServiceMountGroupStatus> self(this);
  mountStatus_.walk([this](MountStatus& status) { mountStatusDel(status.path()); });
}

}  // namespace Controller
