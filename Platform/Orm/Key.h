#pragma once

#include <cstdint>

#include "Platform/Orm/Assert.h"

namespace Orm {

/// Names an attribute among those of one entity type.
using AttributeId = std::uint32_t;

namespace detail {
template <class T>
inline constexpr char typeTag = 0;
}

/// The key of the collection member that changed, as a reactor is told it; empty for a scalar
/// attribute. Refers to the key and is valid during the notification only.
class Key {
 public:
  constexpr Key() = default;
  template <class T>
  explicit Key(const T& key) : value_(&key), type_(&detail::typeTag<T>) {}

  template <class T>
  bool is() const {
    return type_ == &detail::typeTag<T>;
  }
  /// The key itself; it must be a T.
  template <class T>
  const T& as() const {
    assertThat(is<T>(), "is<T>()");
    return *static_cast<const T*>(value_);
  }

 private:
  const void* value_ = nullptr;
  const void* type_ = nullptr;
};

/// The key of a change that has none.
inline constexpr Key kNoKey;

}  // namespace Orm
