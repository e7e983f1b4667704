#pragma once

#include "Controllerdb/MountsRegistry/MountsRegistry.h"
#include "Controllerdb/ServiceConfigDirSm/PublishDirSm.h"
#include "Platform/Entities/Controllerdb/Status.h"
#include "Platform/Entities/ServicePublish/ServicePublishConfig.h"
#include "Platform/Entities/ServicePublish/ServicePublishGroupStatus.h"
#include "Platform/Orm/Collection.h"
#include "Platform/Orm/Reactor.h"
#include "Platform/Orm/Sm.h"

namespace Controller {

class ServicePublishConfigSm;

/// The machine of one publish group of one service: keeps the group's paths, and through a
/// PublishDirSm each its directories, as publish entries of the registry while the generation gate
/// is open, which is while the configuration was written under the present leader's generation.
///
/// A path that someone has published already is left to them; it is not tried again when they go.
/// Removal goes by path and does not ask who added the entry.
///
/// A child of ServicePublishConfigSm, which calls doFinalCleanup before it lets the machine go.
/// Loop thread only. A change of a path costs that path; a change of a generation or of a filter
/// every path of the group.
class ServicePublishGroupSm : public Orm::Sm, private Kobble::Counted<ServicePublishGroupSm> {
 public:
  /// Reacts to the leader's generation.
  class OrmControllerdbStatus final
      : public Orm::ReactorOn<Controllerdb::Status, ServicePublishGroupSm> {
   public:
    explicit OrmControllerdbStatus(ServicePublishGroupSm* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
  };

  /// Reacts to the configuration's generation.
  class OrmServicePublishConfig final
      : public Orm::ReactorOn<ServicePublishConfig, ServicePublishGroupSm> {
   public:
    explicit OrmServicePublishConfig(ServicePublishGroupSm* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
  };

  /// Reacts to the group's paths, directories and filters.
  class OrmServicePublishGroupConfig final
      : public Orm::ReactorOn<ServicePublishGroupConfig, ServicePublishGroupSm> {
   public:
    explicit OrmServicePublishGroupConfig(ServicePublishGroupSm* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
  };

  ServicePublishGroupSm(Orm::Ptr<Controllerdb::Status const> controllerdbStatus,
                        Orm::Ptr<ServicePublishConfig const> servicePublishConfig,
                        Orm::Ptr<ServicePublishGroupConfig const> publishGroupConfig,
                        Orm::Ptr<ServicePublishGroupStatus> publishGroupStatus,
                        Orm::Ptr<MountsRegistry> mountsRegistry, ServicePublishConfigSm* parent);

  const Orm::String& groupName() const { return publishGroupConfig_->groupName(); }
  const Orm::Ptr<ServicePublishGroupConfig const>& publishGroupConfig() const {
    return publishGroupConfig_;
  }
  const Orm::Ptr<MountsRegistry>& mountsRegistry() const { return mountsRegistry_; }
  bool initialized() const { return initialized_; }
  /// The generations agreed when they were last looked at; the entries are in the registry.
  bool gateOpen() const { return gateOpen_; }

  /// Registers on what it watches and deals with what is present. Once, by the parent, which holds
  /// the machine by then, so that whoever is told of what it does may take it away again.
  void start();

  void hasNotificationActiveIs(bool active) override;

  // ---- reactions

  void handleInitialized();
  /// Either generation changed. The parent calls it as well, ahead of the group's own reactors,
  /// when the gate has opened; whoever comes second finds everything done.
  void handleLeaderGenId();
  void handlePublishConfig(const Orm::String& path);
  void handlePublishConfig();
  void handlePublishDir(const Orm::String& path);
  void handlePublishDir();
  /// The entries of the group's paths get its filter; those of its directories keep the filter
  /// that they were created with.
  void handleSystemFilter();
  void handleVersionFilter();

  // ---- the registry's entries

  void addPublishConfig(const Orm::Ptr<PublishConfig const>& publishConfig,
                        const Orm::Ptr<ServicePublishGroupConfig const>& groupConfig);
  void addPublishDir(const Orm::Ptr<PublishDir const>& publishDir,
                     const Orm::Ptr<ServicePublishGroupConfig const>& groupConfig);
  void addPublishDirOrConfig(const Orm::String& cpath, const Orm::String& rpath,
                             const Orm::String& type, bool isPrefixPath, bool readyToPublish,
                             const Orm::Ptr<ServicePublishGroupConfig const>& groupConfig);
  void removePublishConfig(const Orm::String& path) { removePublishDirOrConfig(path); }
  void removePublishDir(const Orm::String& path);
  void removePublishDirOrConfig(const Orm::String& cpath);

  /// Removes the entries of all paths and directories; the paths' status stays.
  void doCleanup();
  /// The clean-up before the machine is let go: nothing is added from then on, also by a handler
  /// that is on the stack.
  void doFinalCleanup();

  // ---- children

  using PublishDirSms = Orm::Collection<Orm::Ptr<PublishDirSm>, &PublishDirSm::path>;
  const PublishDirSms& publishDirSm() const { return publishDirSm_; }
  Orm::Ptr<PublishDirSm> publishDirSmIs(const Orm::Ptr<PublishDir const>& publishDir);
  /// Cleans the directory's machine up and lets it go.
  void publishDirSmDel(const Orm::String& path);
  void publishDirSmDelAll();

 private:
  const Orm::String& serviceName() const { return servicePublishConfig_->serviceName(); }

  Orm::Ptr<Controllerdb::Status const> controllerdbStatus_;
  Orm::Ptr<ServicePublishConfig const> servicePublishConfig_;
  Orm::Ptr<ServicePublishGroupConfig const> publishGroupConfig_;
  Orm::Ptr<ServicePublishGroupStatus> publishGroupStatus_;
  Orm::Ptr<MountsRegistry> mountsRegistry_;
  ServicePublishConfigSm* parent_;

  OrmControllerdbStatus ormControllerdbStatus_;
  OrmServicePublishConfig ormServicePublishConfig_;
  OrmServicePublishGroupConfig ormServicePublishGroupConfig_;
  PublishDirSms publishDirSm_;
  bool initialized_ = false;
  bool gateOpen_ = false;
};

/// Makes the machine of a group, as a child of the service's machine.
Orm::Ptr<ServicePublishGroupSm> servicePublishGroupSmFactory(
    const Orm::Ptr<Controllerdb::Status const>& controllerdbStatus,
    const Orm::Ptr<ServicePublishConfig const>& servicePublishConfig,
    const Orm::Ptr<ServicePublishGroupConfig const>& publishGroupConfig,
    const Orm::Ptr<ServicePublishGroupStatus>& publishGroupStatus,
    const Orm::Ptr<MountsRegistry>& mountsRegistry, ServicePublishConfigSm* parent);

}  // namespace Controller
