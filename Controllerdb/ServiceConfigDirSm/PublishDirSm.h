#pragma once

#include "Platform/Entities/ServicePublish/PublishDir.h"
#include "Platform/Orm/Reactor.h"
#include "Platform/Orm/Sm.h"

namespace Controller {

class ServicePublishGroupSm;

/// The machine of one publish directory of a publish group: adds the directory's prefix-path entry
/// to the registry and carries the directory's remote path and readiness into it.
///
/// It reacts to the readiness alone; another remote path reaches the entry with the next change of
/// readiness. A child of ServicePublishGroupSm while the group's generation gate is open, which
/// calls doCleanup before it lets the machine go. Loop thread only.
class PublishDirSm : public Orm::Sm, private Kobble::Counted<PublishDirSm> {
 public:
  /// Reacts to the directory.
  class OrmPublishDir final : public Orm::ReactorOn<PublishDir, PublishDirSm> {
   public:
    explicit OrmPublishDir(PublishDirSm* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
  };

  PublishDirSm(Orm::Ptr<PublishDir const> publishDir, ServicePublishGroupSm* parent);

  const Orm::Ptr<PublishDir const>& publishDir() const { return publishDir_; }
  /// The directory's local path.
  const Orm::String& path() const { return publishDir_->path(); }
  ServicePublishGroupSm* parent() const { return parent_; }
  bool initialized() const { return initialized_; }

  /// Registers on what it watches and deals with what is present. Once, by the parent, which holds
  /// the machine by then, so that whoever is told of what it does may take it away again.
  void start();

  void hasNotificationActiveIs(bool active) override;

  void handleInitialized();
  void handlePublishDir();
  void handleReadyToPublish();

  /// Removes the directory's entry from the registry; once only, as the path may be another
  /// publisher's by the next time.
  void doCleanup();

 private:
  Orm::Ptr<PublishDir const> publishDir_;
  ServicePublishGroupSm* parent_;
  OrmPublishDir ormPublishDir_;
  bool initialized_ = false;
  bool cleanedUp_ = false;
};

/// Makes the machine of a directory, as a child of the group's machine.
Orm::Ptr<PublishDirSm> publishDirSmFactory(const Orm::Ptr<PublishDir const>& publishDir,
                                           ServicePublishGroupSm* parent);

}  // namespace Controller
