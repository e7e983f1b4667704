#pragma once

#include "Platform/Orm/CollectionOwner.h"

namespace Controller {

/// Which systems, by the text form of their id, a group concerns; a system that is absent or
/// false is left out.
class MountFilterSystem : public Orm::CollectionOwner, private Kobble::Counted<MountFilterSystem> {
 public:
  struct Attr {
    enum : Orm::AttributeId { includedSystem };
  };
  using IncludedSystems = Orm::ValueCollection<Orm::String, bool>;

  explicit MountFilterSystem(Orm::String name) : name_(std::move(name)) {}

  const Orm::String& name() const { return name_; }

  const IncludedSystems& includedSystem() const { return includedSystem_; }
  /// Cheapest for the system that was asked for last: each path of a group asks for it.
  bool includes(const Orm::String& system) const {
    return includedSystem_.value(system, lastFound_);
  }
  void includedSystemIs(const Orm::String& system, bool included) {
    valueIs(includedSystem_, Attr::includedSystem, system, included);
  }
  void includedSystemDel(const Orm::String& system) {
    valueDel(includedSystem_, Attr::includedSystem, system);
  }
  void includedSystemDelAll() { valueDelAll(includedSystem_, Attr::includedSystem); }

 private:
  Orm::String name_;
  IncludedSystems includedSystem_;
  mutable IncludedSystems::Hint lastFound_ = 0;
};

}  // namespace Controller
