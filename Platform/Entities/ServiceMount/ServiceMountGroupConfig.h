#pragma once

#include "Platform/Entities/MountFilter/MountFilterServiceVersion.h"
#include "Platform/Entities/MountFilter/MountFilterSystem.h"
#include "Platform/Entities/ServiceMount/MountConfig.h"
#include "Platform/Orm/CollectionOwner.h"

namespace Controller {

/// Paths that a service wants mounted together, from the switches that its filters let through.
class ServiceMountGroupConfig : public Orm::CollectionOwner,
                                private Kobble::Counted<ServiceMountGroupConfig> {
 public:
  struct Attr {
    enum : Orm::AttributeId { mountConfig, systemFilter, versionFilter, preserve };
  };
  using MountConfigs = Orm::Collection<Orm::Ptr<MountConfig>, &MountConfig::path>;

  explicit ServiceMountGroupConfig(Orm::String groupName) : groupName_(std::move(groupName)) {}

  const Orm::String& groupName() const { return groupName_; }

  const MountConfigs& mountConfig() const { return mountConfig_; }
  MountConfig* mountConfig(const Orm::String& path) const { return mountConfig_.find(path); }
  Orm::Ptr<MountConfig> mountConfigIs(const Orm::String& path, const Orm::String& ormcType,
                                      const Orm::String& mountFlags, const Orm::String& targetPath);
  void mountConfigDel(const Orm::String& path) { memberDel(mountConfig_, Attr::mountConfig, path); }
  void mountConfigDelAll() { memberDelAll(mountConfig_, Attr::mountConfig); }

  /// Null: no system is left out.
  const Orm::Ptr<MountFilterSystem const>& systemFilter() const { return systemFilter_; }
  void systemFilterIs(Orm::Ptr<MountFilterSystem const> filter) {
    assign(systemFilter_, std::move(filter), Attr::systemFilter);
  }

  /// Null: no version is left out.
  const Orm::Ptr<MountFilterServiceVersion const>& versionFilter() const { return versionFilter_; }
  void versionFilterIs(Orm::Ptr<MountFilterServiceVersion const> filter) {
    assign(versionFilter_, std::move(filter), Attr::versionFilter);
  }

  /// What was mounted stays in the state store when the switch goes inactive.
  bool preserve() const { return preserve_; }
  void preserveIs(bool preserve) { assign(preserve_, preserve, Attr::preserve); }

 private:
  Orm::String groupName_;
  MountConfigs mountConfig_;
  Orm::Ptr<MountFilterSystem const> systemFilter_;
  Orm::Ptr<MountFilterServiceVersion const> versionFilter_;
  bool preserve_ = false;
};

}  // namespace Controller
