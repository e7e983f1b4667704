#pragma once

#include "Platform/Entities/ServicePublish/ServicePublishGroupStatus.h"
#include "Platform/Orm/CollectionOwner.h"

namespace Controller {

/// What of a service's publish configuration has been taken up.
class ServicePublishStatus : public Orm::CollectionOwner,
                             private Kobble::Counted<ServicePublishStatus> {
 public:
  struct Attr {
    enum : Orm::AttributeId { servicePublishGroupStatus };
  };
  using GroupStatuses =
      Orm::Collection<Orm::Ptr<ServicePublishGroupStatus>, &ServicePublishGroupStatus::groupName>;

  const GroupStatuses& servicePublishGroupStatus() const { return groupStatus_; }
  ServicePublishGroupStatus* servicePublishGroupStatus(const Orm::String& groupName) const {
    return groupStatus_.find(groupName);
  }
  Orm::Ptr<ServicePublishGroupStatus> servicePublishGroupStatusIs(const Orm::String& groupName) {
    if (ServicePublishGroupStatus* present = groupStatus_.find(groupName)) return present;
    return memberIs(groupStatus_, Attr::servicePublishGroupStatus,
                    Orm::make<ServicePublishGroupStatus>(groupName));
  }
  void servicePublishGroupStatusDel(const Orm::String& groupName) {
    memberDel(groupStatus_, Attr::servicePublishGroupStatus, groupName);
  }
  void servicePublishGroupStatusDelAll() {
    memberDelAll(groupStatus_, Attr::servicePublishGroupStatus);
  }

 private:
  GroupStatuses groupStatus_;
};

}  // namespace Controller
