#pragma once

#include "Controllerdb/MountsRegistry/Mounter.h"
#include "Platform/Orm/CollectionOwner.h"

namespace Controller {

class MountsRegistry;

/// One remote path that services want mounted from the switches. A member of the registry.
class MountsRegistryEntry : public Orm::CollectionOwner,
                            private Kobble::Counted<MountsRegistryEntry> {
 public:
  struct Attr {
    enum : Orm::AttributeId { mounter };
  };
  using Mounters = Orm::Collection<Orm::Ptr<Mounter>, &Mounter::serviceName>;

  MountsRegistryEntry(Orm::String name, Orm::String targetPath, Orm::String ormType,
                      Orm::String mountFlags, MountsRegistry* mountsRegistry)
      : name_(std::move(name)),
        targetPath_(std::move(targetPath)),
        ormType_(std::move(ormType)),
        mountFlags_(std::move(mountFlags)),
        mountsRegistry_(mountsRegistry) {}

  /// The remote path; the entry's key.
  const Orm::String& name() const { return name_; }
  /// The local directory in which the switches' copies stand, each under its switch's name.
  const Orm::String& targetPath() const { return targetPath_; }
  const Orm::String& ormType() const { return ormType_; }
  const Orm::String& mountFlags() const { return mountFlags_; }
  /// The owning registry, which outlives its entries' machines.
  MountsRegistry* mountsRegistry() const { return mountsRegistry_; }

  /// Who wants the entry, by service name.
  const Mounters& mounter() const { return mounter_; }
  Mounter* mounter(const Orm::String& serviceName) const { return mounter_.find(serviceName); }
  /// Raises MutatorReinstantiatingError when the service is a mounter already, but of another
  /// group or configuration.
  Orm::Ptr<Mounter> mounterIs(const MounterName& mounterName,
                              const Orm::Ptr<MountConfig const>& mountConfig,
                              const Orm::Ptr<ServiceMountGroupConfig const>& mountGroupConfig,
                              const Orm::Ptr<ServiceMountStatus>& serviceMountStatus);
  void mounterDel(const Orm::String& serviceName) {
    memberDel(mounter_, Attr::mounter, serviceName);
  }
  void mounterDelAll() { memberDelAll(mounter_, Attr::mounter); }

 private:
  Orm::String name_;
  Orm::String targetPath_;
  Orm::String ormType_;
  Orm::String mountFlags_;
  MountsRegistry* mountsRegistry_;
  Mounters mounter_;
};

}  // namespace Controller
