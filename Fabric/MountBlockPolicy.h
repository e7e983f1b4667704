#pragma once

#include "Fabric/ServiceBlockView.h"
#include "Fabric/Text.h"
#include "Fabric/Value.h"
#include "Platform/Entities/ServiceMount/ServiceMountConfig.h"
#include "Platform/Entities/ServiceMount/ServiceMountStatus.h"

namespace Fabric {

/// How the `mount` of a service is carried, for the ServiceBlockCarrier.
struct MountBlockPolicy {
  using Config = Controller::ServiceMountConfig;
  using Status = Controller::ServiceMountStatus;

  static Orm::Ptr<Config> build(const Orm::String& service, const ServiceBlockView& after);
  /// Carries one member of a configuration that is there; null puts its default back.
  static void change(Config& config, const Orm::String& service, const ServiceBlockView& after,
                     const Text& member, const Value& patch);
};

}  // namespace Fabric
