#include "Platform/Entities/ServiceMount/ServiceMountGroupConfig.h"

#include "Platform/Orm/MutatorReinstantiatingError.h"

namespace Controller {

Orm::Ptr<MountConfig> ServiceMountGroupConfig::mountConfigIs(const Orm::String& path,
                                                             const Orm::String& ormcType,
                                                             const Orm::String& mountFlags,
                                                             const Orm::String& targetPath) {
  if (MountConfig* present = mountConfig_.find(path)) {
    Orm::requireSame("ormcType", present->ormcType(), ormcType);
    Orm::requireSame("mountFlags", present->mountFlags(), mountFlags);
    Orm::requireSame("targetPath", present->targetPath(), targetPath);
    return present;
  }
  return memberIs(mountConfig_, Attr::mountConfig,
                  Orm::make<MountConfig>(path, ormcType, mountFlags, targetPath));
}

}  // namespace Controller
