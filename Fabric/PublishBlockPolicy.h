#pragma once

#include "Fabric/ServiceBlockView.h"
#include "Fabric/Text.h"
#include "Fabric/Value.h"
#include "Platform/Entities/ServicePublish/ServicePublishConfig.h"
#include "Platform/Entities/ServicePublish/ServicePublishStatus.h"

namespace Fabric {

/// How the `publish` of a service is carried, for the ServiceBlockCarrier.
struct PublishBlockPolicy {
  using Config = Controller::ServicePublishConfig;
  using Status = Controller::ServicePublishStatus;

  static Orm::Ptr<Config> build(const Orm::String& service, const ServiceBlockView& after);
  /// Carries one member of a configuration that is there; null puts its default back.
  static void change(Config& config, const Orm::String& service, const ServiceBlockView& after,
                     const Text& member, const Value& patch);
};

}  // namespace Fabric
