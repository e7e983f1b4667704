#include "Fabric/MountObserver.h"

namespace Fabric {

const char* name(MountRequestKind kind) {
  switch (kind) {
    case MountRequestKind::mount:
      return "mount";
    case MountRequestKind::remount:
      return "remount";
    case MountRequestKind::unmount:
      return "unmount";
    case MountRequestKind::preservingUnmount:
      return "preserving-unmount";
    case MountRequestKind::cleanup:
      return "cleanup";
  }
  return "unknown";
}

}  // namespace Fabric
