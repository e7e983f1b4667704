#pragma once

#include "Platform/Orm/Entity.h"
#include "Platform/Orm/String.h"

namespace Controller {

/// A service's configuration on the controller.
class ServiceConfigV1 : public Orm::Entity, private Kobble::Counted<ServiceConfigV1> {
 public:
  struct Attr {
    enum : Orm::AttributeId { enabled };
  };

  explicit ServiceConfigV1(Orm::String serviceName) : serviceName_(std::move(serviceName)) {}

  const Orm::String& serviceName() const { return serviceName_; }

  bool enabled() const { return enabled_; }
  void enabledIs(bool enabled) { assign(enabled_, enabled, Attr::enabled); }

 private:
  Orm::String serviceName_;
  bool enabled_ = false;
};

}  // namespace Controller
