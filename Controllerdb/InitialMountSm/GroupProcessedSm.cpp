#include "Controllerdb/InitialMountSm/GroupProcessedSm.h"

#include "Controllerdb/InitialMountSm/InitialMountTrace.h"
#include "Platform/Orm/ActivityScope.h"

namespace Controller {

using Orm::Ptr;
using Orm::String;

Ptr<GroupProcessedSm> groupProcessedSmFactory(
    const String& systemName, const String& groupName,
    const Ptr<ServiceMountGroupStatus const>& serviceMountGroupStatus,
    const Ptr<ProcessedSwitchSet>& processedSwitchSet) {
  return Orm::make<GroupProcessedSm>(systemName, groupName, serviceMountGroupStatus,
                                     processedSwitchSet);
}

GroupProcessedSm::GroupProcessedSm(
    String systemName, String groupName,
    const Ptr<ServiceMountGroupStatus const>& serviceMountGroupStatus,
    Ptr<ProcessedSwitchSet> processedSwitchSet)
    : systemName_(std::move(systemName)),
      groupName_(std::move(groupName)),
      processedSwitchSet_(std::move(processedSwitchSet)),
      serviceMountGroupStatus_(this) {
  serviceMountGroupStatus_.notifierIs(serviceMountGroupStatus);
  handleInitialized();
}

void GroupProcessedSm::OrmServiceMountGroupStatus::onAttribute(Orm::AttributeId attribute,
                                                               const Orm::Key&) {
  if (attribute == ServiceMountGroupStatus::Attr::processed) owner()->handleProcessed();
}

void GroupProcessedSm::handleInitialized() { handleProcessed(); }

void GroupProcessedSm::handleProcessed() {
  if (!serviceMountGroupStatus_.notifier()->processed()) return;
  INITIAL_MESSAGE(8, "void Controller::GroupProcessedSm::handleProcessed()",
                  "systemName: %s, groupName: %s", systemName_, groupName_);
  const Orm::ActivityScope scope;  // with this the machine has done its work, and is let go
  processedSwitchSet_->processedIs(systemName_, true);
}

}  // namespace Controller
