#pragma once

#include <cstdint>

namespace Fabric {

/// A place in an input text: line and column, both from 1, the column counted in characters.
/// {0, 0}: no place, the value was not written by anybody.
struct Mark {
  std::uint32_t line = 0;
  std::uint32_t column = 0;

  friend bool operator==(const Mark&, const Mark&) = default;
};

}  // namespace Fabric
