#pragma once

#include "Platform/Entities/ServicePublish/PublishStatus.h"
#include "Platform/Orm/CollectionOwner.h"

namespace Controller {

/// What became of one publish group of a service.
class ServicePublishGroupStatus : public Orm::CollectionOwner,
                                  private Kobble::Counted<ServicePublishGroupStatus> {
 public:
  struct Attr {
    enum : Orm::AttributeId { publishState, publishStatus };
  };
  using PublishStatuses = Orm::Collection<Orm::Ptr<PublishStatus>, &PublishStatus::path>;

  explicit ServicePublishGroupStatus(Orm::String groupName) : groupName_(std::move(groupName)) {}

  const Orm::String& groupName() const { return groupName_; }

  PublishState publishState() const { return publishState_; }
  void publishStateIs(PublishState state) { assign(publishState_, state, Attr::publishState); }

  /// By local path; directories have none.
  const PublishStatuses& publishStatus() const { return publishStatus_; }
  PublishStatus* publishStatus(const Orm::String& path) const { return publishStatus_.find(path); }
  Orm::Ptr<PublishStatus> publishStatusIs(const Orm::String& path) {
    if (PublishStatus* present = publishStatus_.find(path)) return present;
    return memberIs(publishStatus_, Attr::publishStatus, Orm::make<PublishStatus>(path));
  }
  void publishStatusDel(const Orm::String& path) {
    memberDel(publishStatus_, Attr::publishStatus, path);
  }
  void publishStatusDelAll() { memberDelAll(publishStatus_, Attr::publishStatus); }

 private:
  Orm::String groupName_;
  PublishStatuses publishStatus_;
  PublishState publishState_ = PublishState::unknown;
};

}  // namespace Controller
