#pragma once

#include "Platform/Entities/ServiceConfig/ServiceConfigV1.h"
#include "Platform/Orm/CollectionOwner.h"

namespace Controller {

/// The services of the controller, by name.
class ServiceConfigDir : public Orm::CollectionOwner, private Kobble::Counted<ServiceConfigDir> {
 public:
  struct Attr {
    enum : Orm::AttributeId { service };
  };
  using Services = Orm::Collection<Orm::Ptr<ServiceConfigV1>, &ServiceConfigV1::serviceName>;

  const Services& service() const { return service_; }
  ServiceConfigV1* service(const Orm::String& name) const { return service_.find(name); }

  Orm::Ptr<ServiceConfigV1> serviceIs(const Orm::String& name) {
    if (ServiceConfigV1* present = service_.find(name)) return present;
    return memberIs(service_, Attr::service, Orm::make<ServiceConfigV1>(name));
  }
  /// Puts in a configuration that was built before, so that it is seen complete. Its key must be
  /// absent.
  void serviceIs(Orm::Ptr<ServiceConfigV1> config) {
    memberIs(service_, Attr::service, std::move(config));
  }
  void serviceDel(const Orm::String& name) { memberDel(service_, Attr::service, name); }
  void serviceDelAll() { memberDelAll(service_, Attr::service); }

 private:
  Services service_;
};

}  // namespace Controller
