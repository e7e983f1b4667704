#pragma once

#include "Fabric/MountBlockPolicy.h"
#include "Fabric/PublishBlockPolicy.h"
#include "Fabric/ServiceBlockCarrier.h"
#include "Fabric/ServiceView.h"
#include "Fabric/Text.h"
#include "Fabric/Value.h"
#include "Fabric/World.h"

namespace Fabric {

/// Carries a service of the block `services`: its ServiceConfigV1 and its mount and publish
/// configurations with their statuses.
class ServiceCarrier {
 public:
  explicit ServiceCarrier(const World& world) : world_(world) {}

  /// `before` or `after` is null when the service appears or goes.
  void carry(const Text& key, const Value& before, const Value& after, const Value& patch);

 private:
  void remove(const Orm::String& name, bool proxy);
  void enabled(const Orm::String& name, const ServiceView& after);
  ServiceBlockCarrier<MountBlockPolicy> mounts(bool proxy) const;
  ServiceBlockCarrier<PublishBlockPolicy> publications() const;

  const World& world_;
};

}  // namespace Fabric
