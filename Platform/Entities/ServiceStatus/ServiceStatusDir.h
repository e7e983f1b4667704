#pragma once

#include "Platform/Entities/ServiceStatus/NegotiationPart.h"
#include "Platform/Entities/ServiceStatus/ServiceStatusV1.h"

namespace Controller {

/// The services of one connection, by name.
class ServiceStatusDir : public NegotiationPart, private Kobble::Counted<ServiceStatusDir> {
 public:
  struct Attr {
    enum : Orm::AttributeId { service };
  };
  using Services = Orm::Collection<Orm::Ptr<ServiceStatusV1>, &ServiceStatusV1::serviceName>;

  const Services& service() const { return service_; }
  /// Cheapest for the service that was asked for last, as each of its entries does.
  ServiceStatusV1* service(const Orm::String& name) const {
    return service_.find(name, lastFound_);
  }

  Orm::Ptr<ServiceStatusV1> serviceIs(const Orm::String& name) {
    if (ServiceStatusV1* present = service_.find(name)) return present;
    return memberIs(service_, Attr::service, Orm::make<ServiceStatusV1>(name));
  }
  /// Puts in a status that was built before, so that it is seen complete. Its key must be absent.
  void serviceIs(Orm::Ptr<ServiceStatusV1> status) {
    memberIs(service_, Attr::service, std::move(status));
  }
  void serviceDel(const Orm::String& name) { memberDel(service_, Attr::service, name); }
  void serviceDelAll() { memberDelAll(service_, Attr::service); }

 private:
  Services service_;
  mutable Services::Hint lastFound_ = 0;
};

}  // namespace Controller
