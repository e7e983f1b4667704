#include "Controllerdb/MountsRegistry/MountsRegistryEntry.h"

#include "Platform/Orm/MutatorReinstantiatingError.h"

namespace Controller {

Orm::Ptr<Mounter> MountsRegistryEntry::mounterIs(
    const MounterName& mounterName, const Orm::Ptr<MountConfig const>& mountConfig,
    const Orm::Ptr<ServiceMountGroupConfig const>& mountGroupConfig,
    const Orm::Ptr<ServiceMountStatus>& serviceMountStatus) {
  if (Mounter* present = mounter_.find(mounterName.serviceName)) {
    Orm::requireSame("mounterName", present->mounterName(), mounterName);
    Orm::requireSame("mountConfig", present->mountConfig(), mountConfig);
    Orm::requireSame("mountGroupConfig", present->mountGroupConfig(), mountGroupConfig);
    Orm::requireSame("serviceMountStatus", present->serviceMountStatus(), serviceMountStatus);
    return present;
  }
  return memberIs(
      mounter_, Attr::mounter,
      Orm::make<Mounter>(mounterName, mountConfig, mountGroupConfig, serviceMountStatus));
}

}  // namespace Controller
