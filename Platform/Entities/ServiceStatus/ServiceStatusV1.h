#pragma once

#include "Platform/Entities/ServiceStatus/NegotiationPart.h"
#include "Platform/Entities/ServiceStatus/ServiceVersionStatusV1.h"
#include "Platform/Orm/String.h"

namespace Controller {

/// One service on one connection, as the switch reports it.
class ServiceStatusV1 : public NegotiationPart, private Kobble::Counted<ServiceStatusV1> {
 public:
  struct Attr {
    enum : Orm::AttributeId { enabled, versionStatus };
  };

  explicit ServiceStatusV1(Orm::String serviceName) : serviceName_(std::move(serviceName)) {}

  const Orm::String& serviceName() const { return serviceName_; }

  /// The service is enabled on the switch.
  bool enabled() const { return enabled_; }
  void enabledIs(bool enabled) { assign(enabled_, enabled, Attr::enabled); }

  /// The negotiation's result, null while there is none.
  const Orm::Ptr<ServiceVersionStatusV1 const>& versionStatus() const { return versionStatus_; }
  void versionStatusIs(Orm::Ptr<ServiceVersionStatusV1 const> status) {
    assign(versionStatus_, std::move(status), Attr::versionStatus);
  }

 private:
  Orm::String serviceName_;
  Orm::Ptr<ServiceVersionStatusV1 const> versionStatus_;
  bool enabled_ = false;
};

}  // namespace Controller
