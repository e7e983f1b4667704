#pragma once

#include "Controllerdb/InitialMountSm/GroupProcessedSm.h"
#include "Platform/Entities/ServiceMount/SystemStatus.h"

namespace Controller {

/// Waits for one switch to have a status of one mount group, and then keeps a GroupProcessedSm on
/// it, for good: a group status that goes and comes back is not followed again.
///
/// A child of MountGroupInitialMountSm while the service has a status for the switch, or until the
/// switch is in the set: then nothing more can follow. Loop thread only.
class SystemProcessedSm : public Orm::Sm, private Kobble::Counted<SystemProcessedSm> {
 public:
  /// Reacts to the groups of the switch.
  class OrmSystemStatus final : public Orm::ReactorOn<SystemStatus, SystemProcessedSm> {
   public:
    explicit OrmSystemStatus(SystemProcessedSm* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
  };

  SystemProcessedSm(Orm::String systemName, Orm::String groupName,
                    const Orm::Ptr<SystemStatus const>& systemStatus,
                    Orm::Ptr<ProcessedSwitchSet> processedSwitchSet);

  const Orm::String& systemName() const { return systemName_; }

  void hasNotificationActiveIs(bool active) override;

  void handleInitialized();
  void handleServiceMountGroupStatus(const Orm::String& groupName);
  void handleServiceMountGroupStatus();

  const Orm::Ptr<GroupProcessedSm>& groupProcessedSm() const { return groupProcessedSm_; }
  const Orm::Ptr<GroupProcessedSm>& groupProcessedSmIs(
      const Orm::String& systemName, const Orm::String& groupName,
      const Orm::Ptr<ServiceMountGroupStatus const>& serviceMountGroupStatus,
      const Orm::Ptr<ProcessedSwitchSet>& processedSwitchSet);
  void groupProcessedSmDel() { groupProcessedSm_ = nullptr; }

 private:
  Orm::String systemName_;
  Orm::String groupName_;
  Orm::Ptr<ProcessedSwitchSet> processedSwitchSet_;
  OrmSystemStatus systemStatus_;
  Orm::Ptr<GroupProcessedSm> groupProcessedSm_;
};

Orm::Ptr<SystemProcessedSm> systemProcessedSmFactory(
    const Orm::String& systemName, const Orm::String& groupName,
    const Orm::Ptr<SystemStatus const>& systemStatus,
    const Orm::Ptr<ProcessedSwitchSet>& processedSwitchSet);

}  // namespace Controller
