#pragma once

#include <string_view>

#include "Platform/Entities/Controllerdb/MountDesc.h"
#include "Platform/Entities/ServiceMount/MountState.h"

namespace Fabric {

/// Is told what changes in the services' statuses and in the controller database's publish status,
/// as a service on the controller would be: within the change.
class StatusObserver {
 public:
  virtual void groupState(std::string_view service, std::string_view group, std::string_view system,
                          Controller::MountState state) = 0;
  virtual void published(std::string_view system, const Controllerdb::MountDesc& mount) = 0;
  virtual void unpublished(std::string_view system, std::string_view path) = 0;
  virtual void publishReady(std::string_view service, bool ready) = 0;
  virtual void initialMountsComplete(std::string_view service, std::string_view group,
                                     bool complete) = 0;
  /// Where a path is mounted was said, or that it is no more; of use to few.
  virtual void pathPrefix(std::string_view /*service*/, std::string_view /*path*/) {}

 protected:
  ~StatusObserver() = default;
};

}  // namespace Fabric
