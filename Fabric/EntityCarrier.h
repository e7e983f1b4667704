#pragma once

#include <string_view>

#include "Fabric/Value.h"
#include "Fabric/World.h"

namespace Fabric {

/// Carries the block `entities`: the local entities of the state store.
///
/// An entity whose type changes is removed and added again. A directory that is not empty stays:
/// what is in it, of this block or of the mounts, needs one. What stands there already, a mount or
/// one of its directories, is taken as it is; below what is no directory nothing is made.
class EntityCarrier {
 public:
  explicit EntityCarrier(const World& world) : world_(world) {}

  /// The type before and after; null when the entity comes or goes.
  void carry(std::string_view path, const Value& before, const Value& after);

 private:
  void add(std::string_view path, std::string_view type);
  void remove(std::string_view path);

  const World& world_;
};

}  // namespace Fabric
