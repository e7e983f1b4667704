#pragma once

#include <cstdint>

#include "Platform/Orm/CollectionOwner.h"
#include "Platform/Orm/LastAsked.h"

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
  /// Cheapest for the system that was asked for last, also when it is left out: each path of a
  /// group asks for it.
  bool includes(const Orm::String& system) const {
    const bool* const included = lastAsked_.find(includedSystem_, system);
    return included && *included;
  }
  /// Grows before a member comes, changes or goes.
  std::uint64_t changes() const { return changes_; }

  void includedSystemIs(const Orm::String& system, bool included) {
    const bool* const present = includedSystem_.find(system);
    if (present && *present == included) return;
    changing();
    valueIs(includedSystem_, Attr::includedSystem, system, included);
  }
  void includedSystemDel(const Orm::String& system) {
    if (!includedSystem_.has(system)) return;
    changing();
    valueDel(includedSystem_, Attr::includedSystem, system);
  }
  void includedSystemDelAll() {
    const Orm::Ptr<Orm::Entity const> self(this);
    includedSystem_.walk([this](const Orm::String& system, bool) { includedSystemDel(system); });
  }

 private:
  void changing() {
    ++changes_;
    lastAsked_.memberComes();
  }

  Orm::String name_;
  IncludedSystems includedSystem_;
  Orm::LastAsked<IncludedSystems> lastAsked_;
  std::uint64_t changes_ = 0;
};

}  // namespace Controller
