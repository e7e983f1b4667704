#pragma once

#include <cstdint>

#include "Platform/Orm/CollectionOwner.h"

namespace Controller {

/// Which versions of the service on a connection a group concerns; a version that is absent or
/// false is left out.
class MountFilterServiceVersion : public Orm::CollectionOwner,
                                  private Kobble::Counted<MountFilterServiceVersion> {
 public:
  struct Attr {
    enum : Orm::AttributeId { includedServiceVersion };
  };
  using IncludedVersions = Orm::ValueCollection<std::uint32_t, bool>;

  explicit MountFilterServiceVersion(Orm::String name) : name_(std::move(name)) {}

  const Orm::String& name() const { return name_; }

  const IncludedVersions& includedServiceVersion() const { return includedServiceVersion_; }
  bool includes(std::uint32_t version) const { return includedServiceVersion_.value(version); }
  void includedServiceVersionIs(std::uint32_t version, bool included) {
    valueIs(includedServiceVersion_, Attr::includedServiceVersion, version, included);
  }
  void includedServiceVersionDel(std::uint32_t version) {
    valueDel(includedServiceVersion_, Attr::includedServiceVersion, version);
  }
  void includedServiceVersionDelAll() {
    valueDelAll(includedServiceVersion_, Attr::includedServiceVersion);
  }

 private:
  Orm::String name_;
  IncludedVersions includedServiceVersion_;
};

}  // namespace Controller
