#include "Platform/Entities/ServiceMount/MountStatus.h"

#include "Platform/Entities/ServiceMount/ServiceMountGroupStatus.h"

namespace Controller {

void MountStatus::mountStateIs(MountState state) {
  if (state == mountState_) return;
  if (group_) group_->memberMoved(mountState_, state);
  assign(mountState_, state, Attr::mountState);
}

}  // namespace Controller
