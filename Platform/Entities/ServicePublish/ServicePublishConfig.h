#pragma once

#include "Platform/Entities/ServicePublish/ServicePublishGroupConfig.h"
#include "Platform/Orm/CollectionOwner.h"

namespace Controller {

/// What one service wants published, written under one leader's generation.
class ServicePublishConfig : public Orm::CollectionOwner,
                             private Kobble::Counted<ServicePublishConfig> {
 public:
  struct Attr {
    enum : Orm::AttributeId { serviceName, genId, publishReady, publishGroupConfig };
  };
  using PublishGroupConfigs =
      Orm::Collection<Orm::Ptr<ServicePublishGroupConfig>, &ServicePublishGroupConfig::groupName>;

  /// Empty until it is set.
  const Orm::String& serviceName() const { return serviceName_; }
  void serviceNameIs(Orm::String name) { assign(serviceName_, std::move(name), Attr::serviceName); }

  /// The leader's generation under which the configuration was written.
  const Orm::String& genId() const { return genId_; }
  void genIdIs(Orm::String id) { assign(genId_, std::move(id), Attr::genId); }

  /// The service says that its publications are complete.
  bool publishReady() const { return publishReady_; }
  void publishReadyIs(bool ready) { assign(publishReady_, ready, Attr::publishReady); }

  const PublishGroupConfigs& publishGroupConfig() const { return publishGroupConfig_; }
  ServicePublishGroupConfig* publishGroupConfig(const Orm::String& groupName) const {
    return publishGroupConfig_.find(groupName);
  }
  Orm::Ptr<ServicePublishGroupConfig> publishGroupConfigIs(const Orm::String& groupName) {
    if (ServicePublishGroupConfig* present = publishGroupConfig_.find(groupName)) return present;
    return memberIs(publishGroupConfig_, Attr::publishGroupConfig,
                    Orm::make<ServicePublishGroupConfig>(groupName));
  }
  /// Puts in a group that was built before, so that it is seen complete. Its key must be absent.
  void publishGroupConfigIs(Orm::Ptr<ServicePublishGroupConfig> group) {
    memberIs(publishGroupConfig_, Attr::publishGroupConfig, std::move(group));
  }
  void publishGroupConfigDel(const Orm::String& groupName) {
    memberDel(publishGroupConfig_, Attr::publishGroupConfig, groupName);
  }
  void publishGroupConfigDelAll() { memberDelAll(publishGroupConfig_, Attr::publishGroupConfig); }

 private:
  Orm::String serviceName_;
  Orm::String genId_;
  PublishGroupConfigs publishGroupConfig_;
  bool publishReady_ = false;
};

}  // namespace Controller
