#include "Controllerdb/InitialMountSm/SystemProcessedSm.h"

#include "Controllerdb/InitialMountSm/InitialMountTrace.h"
#include "Platform/Orm/ActivityScope.h"

namespace Controller {

using Orm::Ptr;
using Orm::String;

Ptr<SystemProcessedSm> systemProcessedSmFactory(const String& systemName, const String& groupName,
                                                const Ptr<SystemStatus const>& systemStatus,
                                                const Ptr<ProcessedSwitchSet>& processedSwitchSet) {
  return Orm::make<SystemProcessedSm>(systemName, groupName, systemStatus, processedSwitchSet);
}

SystemProcessedSm::SystemProcessedSm(String systemName, String groupName,
                                     const Ptr<SystemStatus const>& systemStatus,
                                     Ptr<ProcessedSwitchSet> processedSwitchSet)
    : systemName_(std::move(systemName)),
      groupName_(std::move(groupName)),
      processedSwitchSet_(std::move(processedSwitchSet)),
      systemStatus_(this) {
  systemStatus_.notifierIs(systemStatus);
  handleInitialized();
}

void SystemProcessedSm::handleInitialized() {
  INITIAL_MESSAGE(8, "void Controller::SystemProcessedSm::handleInitialized()", "");
  handleServiceMountGroupStatus(groupName_);
}

void SystemProcessedSm::hasNotificationActiveIs(bool active) {
  systemStatus_.hasNotificationActiveIs(active);
  if (groupProcessedSm_) groupProcessedSm_->hasNotificationActiveIs(active);
}

void SystemProcessedSm::OrmSystemStatus::onAttribute(Orm::AttributeId attribute,
                                                     const Orm::Key& key) {
  if (attribute == SystemStatus::Attr::serviceMountGroupStatus) {
    owner()->handleServiceMountGroupStatus(key.as<String>());
  }
}

void SystemProcessedSm::handleServiceMountGroupStatus() {
  handleServiceMountGroupStatus(groupName_);
}

void SystemProcessedSm::handleServiceMountGroupStatus(const String& groupName) {
  if (groupName != groupName_) return;
  const Ptr<ServiceMountGroupStatus const> status(
      systemStatus_.notifier()->serviceMountGroupStatus(groupName));
  const Orm::ActivityScope scope;  // a machine whose switch is processed at once is let go
  if (status) groupProcessedSmIs(systemName_, groupName_, status, processedSwitchSet_);
}

const Ptr<GroupProcessedSm>& SystemProcessedSm::groupProcessedSmIs(
    const String& systemName, const String& groupName,
    const Ptr<ServiceMountGroupStatus const>& serviceMountGroupStatus,
    const Ptr<ProcessedSwitchSet>& processedSwitchSet) {
  if (!groupProcessedSm_) {
    groupProcessedSm_ =
        groupProcessedSmFactory(systemName, groupName, serviceMountGroupStatus, processedSwitchSet);
  }
  return groupProcessedSm_;
}

}  // namespace Controller
