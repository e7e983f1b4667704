#include "Platform/Entities/ServiceMount/ServiceMountGroupStatus.h"

namespace Controller {

using Orm::Ptr;
using Orm::String;

ServiceMountGroupStatus::~ServiceMountGroupStatus() {
  // A member that someone still holds must not count on in what has gone.
  for (const Ptr<MountStatus>& status : mountStatus_) status->leaveGroup();
}

void ServiceMountGroupStatus::mountStatusDel(const String& path) {
  const Ptr<MountStatus> gone = mountStatus_.find(path);
  if (!gone) return;
  gone->leaveGroup();
  memberDel(mountStatus_, Attr::mountStatus, gone->path());
}

void ServiceMountGroupStatus::mountStatusDelAll() {
  const Ptr<ServiceMountGroupStatus> self(this);
  mountStatus_.walk([this](MountStatus& status) { mountStatusDel(status.path()); });
}

}  // namespace Controller
