#pragma once

#include "Controllerdb/InitialMountSm/ProcessedSwitchSet.h"
#include "Platform/Entities/ServiceMount/ServiceMountGroupStatus.h"
#include "Platform/Orm/Reactor.h"
#include "Platform/Orm/Sm.h"

namespace Controller {

/// Puts one switch into a group's set of processed switches when the switch's status of the group
/// says that it was processed. Nothing here takes it out again.
///
/// The one child of a SystemProcessedSm. Loop thread only.
class GroupProcessedSm : public Orm::Sm, private Kobble::Counted<GroupProcessedSm> {
 public:
  /// Reacts to the group's status on the switch.
  class OrmServiceMountGroupStatus final
      : public Orm::ReactorOn<ServiceMountGroupStatus, GroupProcessedSm> {
   public:
    explicit OrmServiceMountGroupStatus(GroupProcessedSm* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
  };

  GroupProcessedSm(Orm::String systemName, Orm::String groupName,
                   const Orm::Ptr<ServiceMountGroupStatus const>& serviceMountGroupStatus,
                   Orm::Ptr<ProcessedSwitchSet> processedSwitchSet);

  void hasNotificationActiveIs(bool active) override {
    serviceMountGroupStatus_.hasNotificationActiveIs(active);
  }

  void handleInitialized();
  void handleProcessed();

 private:
  Orm::String systemName_;
  Orm::String groupName_;
  Orm::Ptr<ProcessedSwitchSet> processedSwitchSet_;
  OrmServiceMountGroupStatus serviceMountGroupStatus_;
};

Orm::Ptr<GroupProcessedSm> groupProcessedSmFactory(
    const Orm::String& systemName, const Orm::String& groupName,
    const Orm::Ptr<ServiceMountGroupStatus const>& serviceMountGroupStatus,
    const Orm::Ptr<ProcessedSwitchSet>& processedSwitchSet);

}  // namespace Controller
