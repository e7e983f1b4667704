#include "Controllerdb/MountsRegistry/MountsRegistry.h"

#include "Platform/Orm/MutatorReinstantiatingError.h"

namespace Controller {

using Orm::Ptr;
using Orm::String;

Ptr<MountsRegistryEntry> MountsRegistry::mountEntryIs(const String& name, const String& targetPath,
                                                      const String& ormType,
                                                      const String& mountFlags) {
  if (MountsRegistryEntry* present = mountEntry_.find(name)) {
    Orm::requireSame("targetPath", present->targetPath(), targetPath);
    Orm::requireSame("ormType", present->ormType(), ormType);
    Orm::requireSame("mountFlags", present->mountFlags(), mountFlags);
    return present;
  }
  return memberIs(mountEntry_, Attr::mountEntry,
                  Orm::make<MountsRegistryEntry>(name, targetPath, ormType, mountFlags, this));
}

Ptr<PublishRegistryEntry> MountsRegistry::publishEntryIs(
    const String& name, const String& remotePath, const String& type, bool isPrefixPath,
    const String& serviceName, const Ptr<MountFilterServiceVersion const>& versionFilter,
    const Ptr<MountFilterSystem const>& systemFilter) {
  if (PublishRegistryEntry* present = publishEntry_.find(name)) {
    Orm::requireSame("remotePath", present->remotePath(), remotePath);
    Orm::requireSame("type", present->type(), type);
    Orm::requireSame("isPrefixPath", present->isPrefixPath(), isPrefixPath);
    Orm::requireSame("serviceName", present->serviceName(), serviceName);
    Orm::requireSame("versionFilter", present->versionFilter(), versionFilter);
    Orm::requireSame("systemFilter", present->systemFilter(), systemFilter);
    return present;
  }
  return memberIs(publishEntry_, Attr::publishEntry,
                  Orm::make<PublishRegistryEntry>(name, remotePath, type, isPrefixPath, serviceName,
                                                  versionFilter, systemFilter, this));
}

}  // namespace Controller
