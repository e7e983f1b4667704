#include "Platform/Entities/ServiceMount/ServiceMountGroupStatus.h"

namespace Controller {

using Orm::Ptr;
using Orm::String;

ServiceMountGroupStatus::~ServiceMountGroupStatus() {
  // A member that someone still holds must not count on in what has gone.
  for (const Ptr<MountStatus>& status : mountStatus_) status->group_ = nullptr;
}

Ptr<MountStatus> ServiceMountGroupStatus::mountStatusIs(const String& path) {
  if (MountStatus* present = mountStatus_.find(path)) return present;
  ++count_[static_cast<std::size_t>(MountState::unmounted)];
  return memberIs(mountStatus_, Attr::mountStatus, Orm::make<MountStatus>(path, this));
}

void ServiceMountGroupStatus::mountStatusDel(const String& path) {
  const Ptr<MountStatus> gone = mountStatus_.find(path);
  if (!gone) return;
  memberLeft(*gone);
  memberDel(mountStatus_, Attr::mountStatus, gone->path());
}

void ServiceMountGroupStatus::mountStatusDelAll() {
  const Ptr<ServiceMountGroupStatus> self(this);
  mountStatus_.walk([this](MountStatus& status) { mountStatusDel(status.path()); });
}

void ServiceMountGroupStatus::memberLeft(MountStatus& status) {
  --count_[static_cast<std::size_t>(status.mountState())];
  status.group_ = nullptr;
}

}  // namespace Controller
