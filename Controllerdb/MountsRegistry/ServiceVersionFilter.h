#pragma once

#include <cstdint>

#include "Platform/Orm/CollectionOwner.h"

namespace Controller {

/// The versions of one service that a mount entry accepts.
class ServiceVersionFilter : public Orm::CollectionOwner,
                             private Kobble::Counted<ServiceVersionFilter> {
 public:
  struct Attr {
    enum : Orm::AttributeId { version };
  };
  using Versions = Orm::ValueCollection<std::uint32_t, bool>;

  explicit ServiceVersionFilter(Orm::String serviceName) : serviceName_(std::move(serviceName)) {}

  const Orm::String& serviceName() const { return serviceName_; }

  const Versions& version() const { return version_; }
  void versionIs(std::uint32_t version, bool accepted) {
    valueIs(version_, Attr::version, version, accepted);
  }
  void versionDel(std::uint32_t version) { valueDel(version_, Attr::version, version); }
  void versionDelAll() { valueDelAll(version_, Attr::version); }

 private:
  Orm::String serviceName_;
  Versions version_;
};

}  // namespace Controller
