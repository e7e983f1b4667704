#pragma once

#include <initializer_list>
#include <string_view>
#include <utility>

#include "Fabric/Object.h"
#include "Fabric/Value.h"

namespace Soak {

/// Trees of documents, written as they look:  tree({{"switches", tree({{id, Value()}})}}).

inline Fabric::Value tree(
    std::initializer_list<std::pair<std::string_view, Fabric::Value>> members) {
  Fabric::Object object;
  for (const auto& [key, value] : members) object.set(key, value);
  return Fabric::Value(std::move(object));
}

inline Fabric::Value tree(std::string_view key, Fabric::Value value) {
  Fabric::Object object;
  object.set(key, std::move(value));
  return Fabric::Value(std::move(object));
}

inline Fabric::Value whole(std::size_t number) {
  return Fabric::Value(static_cast<double>(number));
}

}  // namespace Soak
