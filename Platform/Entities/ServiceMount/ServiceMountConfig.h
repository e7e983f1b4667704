#pragma once

#include "Platform/Entities/ServiceMount/ServiceMountGroupConfig.h"
#include "Platform/Orm/CollectionOwner.h"

namespace Controller {

/// What one service wants mounted, written under one leader's generation.
class ServiceMountConfig : public Orm::CollectionOwner,
                           private Kobble::Counted<ServiceMountConfig> {
 public:
  struct Attr {
    enum : Orm::AttributeId { serviceName, genId, mountGroupConfig };
  };
  using MountGroupConfigs =
      Orm::Collection<Orm::Ptr<ServiceMountGroupConfig>, &ServiceMountGroupConfig::groupName>;

  /// Empty until it is set.
  const Orm::String& serviceName() const { return serviceName_; }
  void serviceNameIs(Orm::String name) { assign(serviceName_, std::move(name), Attr::serviceName); }

  /// The leader's generation under which the configuration was written.
  const Orm::String& genId() const { return genId_; }
  void genIdIs(Orm::String id) { assign(genId_, std::move(id), Attr::genId); }

  const MountGroupConfigs& mountGroupConfig() const { return mountGroupConfig_; }
  ServiceMountGroupConfig* mountGroupConfig(const Orm::String& groupName) const {
    return mountGroupConfig_.find(groupName);
  }
  Orm::Ptr<ServiceMountGroupConfig> mountGroupConfigIs(const Orm::String& groupName) {
    if (ServiceMountGroupConfig* present = mountGroupConfig_.find(groupName)) return present;
    return memberIs(mountGroupConfig_, Attr::mountGroupConfig,
                    Orm::make<ServiceMountGroupConfig>(groupName));
  }
  /// Puts in a group that was built before, so that it is seen complete. Its key must be absent.
  void mountGroupConfigIs(Orm::Ptr<ServiceMountGroupConfig> group) {
    memberIs(mountGroupConfig_, Attr::mountGroupConfig, std::move(group));
  }
  void mountGroupConfigDel(const Orm::String& groupName) {
    memberDel(mountGroupConfig_, Attr::mountGroupConfig, groupName);
  }
  void mountGroupConfigDelAll() { memberDelAll(mountGroupConfig_, Attr::mountGroupConfig); }

 private:
  Orm::String serviceName_;
  Orm::String genId_;
  MountGroupConfigs mountGroupConfig_;
};

}  // namespace Controller
