#pragma once

#include "Controllerdb/ServiceConfigDirSm/ServicePublishGroupSm.h"
#include "Platform/Entities/Controllerdb/PublishStatus.h"
#include "Platform/Entities/ServicePublish/ServicePublishStatus.h"
#include "Platform/Orm/Collection.h"

namespace Controller {

class ServiceConfigDirSm;

/// The machine of one service's publish configuration: keeps one ServicePublishGroupSm per publish
/// group from the time when the configuration has a service name, and the registry's readiness of
/// the service while the configuration was written under the present leader's generation.
///
/// A child of ServiceConfigDirSm while the service has both a publish configuration and a publish
/// status. Loop thread only.
class ServicePublishConfigSm : public Orm::Sm, private Kobble::Counted<ServicePublishConfigSm> {
 public:
  /// Reacts to the leader's generation.
  class OrmControllerdbStatus final
      : public Orm::ReactorOn<Controllerdb::Status, ServicePublishConfigSm> {
   public:
    explicit OrmControllerdbStatus(ServicePublishConfigSm* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
  };

  /// Reacts to the configuration.
  class OrmServicePublishConfig final
      : public Orm::ReactorOn<ServicePublishConfig, ServicePublishConfigSm> {
   public:
    explicit OrmServicePublishConfig(ServicePublishConfigSm* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
  };

  /// `serviceKey` is the name under which the configuration stands in its directory.
  ServicePublishConfigSm(Orm::String serviceKey,
                         Orm::Ptr<Controllerdb::Status const> controllerdbStatus,
                         Orm::Ptr<ServicePublishConfig const> publishConfig,
                         Orm::Ptr<ServicePublishStatus> publishStatus,
                         Orm::Ptr<Controllerdb::PublishStatus> controllerdbPublishStatus,
                         Orm::Ptr<MountsRegistry> mountsRegistry, ServiceConfigDirSm* parent);

  const Orm::String& serviceKey() const { return serviceKey_; }
  const Orm::Ptr<Controllerdb::PublishStatus>& controllerdbPublishStatus() const {
    return controllerdbPublishStatus_;
  }
  ServiceConfigDirSm* parent() const { return parent_; }
  bool initialized() const { return initialized_; }

  /// Registers on what it watches and deals with what is present. Once, by the parent, which holds
  /// the machine by then, so that whoever is told of what it does may take it away again.
  void start();

  void hasNotificationActiveIs(bool active) override;

  // ---- reactions

  /// Nothing until the configuration has a service name; once only.
  void handleInitialized();
  void handleServiceName();
  void handlePublishGroupConfig(const Orm::String& groupName);
  void handlePublishGroupConfig();
  void handleLeaderGenId();
  void handlePublishReady();

  /// There is a leader, and the configuration was written under its generation.
  bool canPublish() const;

  // ---- children

  using PublishGroupSms =
      Orm::Collection<Orm::Ptr<ServicePublishGroupSm>, &ServicePublishGroupSm::groupName>;
  const PublishGroupSms& publishGroupSm() const { return publishGroupSm_; }
  Orm::Ptr<ServicePublishGroupSm> publishGroupSmIs(
      const Orm::Ptr<Controllerdb::Status const>& controllerdbStatus,
      const Orm::Ptr<ServicePublishConfig const>& publishConfig,
      const Orm::Ptr<ServicePublishGroupConfig const>& publishGroupConfig,
      const Orm::Ptr<ServicePublishGroupStatus>& publishGroupStatus,
      const Orm::Ptr<MountsRegistry>& mountsRegistry);
  /// Cleans the group's machine up and lets it go.
  void publishGroupSmDel(const Orm::String& groupName);
  void publishGroupSmDelAll();

  /// Takes the service's readiness, its groups' entries and their status away. Harmless when
  /// repeated.
  void doCleanup();

 private:
  const Orm::String& serviceName() const { return publishConfig_->serviceName(); }
  void removeGroup(const Orm::String& groupName);
  void withdrawReady();

  Orm::String serviceKey_;
  Orm::Ptr<Controllerdb::Status const> controllerdbStatus_;
  Orm::Ptr<ServicePublishConfig const> publishConfig_;
  Orm::Ptr<ServicePublishStatus> publishStatus_;
  Orm::Ptr<Controllerdb::PublishStatus> controllerdbPublishStatus_;
  Orm::Ptr<MountsRegistry> mountsRegistry_;
  ServiceConfigDirSm* parent_;

  OrmControllerdbStatus ormControllerdbStatus_;
  OrmServicePublishConfig ormServicePublishConfig_;
  PublishGroupSms publishGroupSm_;
  /// Under which name the registry has the readiness, empty for none: the service's may change.
  Orm::String readyName_;
  bool initialized_ = false;
};

/// Makes the machine of a service's publish configuration, as a child of the directory machine.
Orm::Ptr<ServicePublishConfigSm> servicePublishConfigSmFactory(
    const Orm::String& serviceKey, const Orm::Ptr<Controllerdb::Status const>& controllerdbStatus,
    const Orm::Ptr<ServicePublishConfig const>& publishConfig,
    const Orm::Ptr<ServicePublishStatus>& publishStatus,
    const Orm::Ptr<Controllerdb::PublishStatus>& controllerdbPublishStatus,
    const Orm::Ptr<MountsRegistry>& mountsRegistry, ServiceConfigDirSm* parent);

}  // namespace Controller
