#pragma once

#include "Fabric/Object.h"
#include "Fabric/Value.h"
#include "Platform/Orm/String.h"

namespace Fabric {

/// Goes through what a patch says of the members of an object, in the patch's order: remove(name)
/// for those that it sets to null, put(name, patch) for all others. A patch that is null
/// itself is removeAll().
template <class RemoveAll, class Remove, class Put>
void carryMembers(const Value& patch, RemoveAll&& removeAll, Remove&& remove, Put&& put) {
  if (patch.isNull()) return removeAll();
  for (const Object::Member& member : patch.object()) {
    const Orm::String name(*member.key);
    if (member.value.isNull()) {
      remove(name);
    } else {
      put(name, member.value);
    }
  }
}

}  // namespace Fabric
