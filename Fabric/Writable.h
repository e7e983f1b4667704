#pragma once

#include "Platform/Orm/Ptr.h"

namespace Fabric {

/// An entity that others may only read, for the one who made it and put it where it is.
template <class T>
Orm::Ptr<T> writable(const Orm::Ptr<T const>& entity) {
  return Orm::Ptr<T>(const_cast<T*>(entity.get()));
}

}  // namespace Fabric
