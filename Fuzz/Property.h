#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

/// What fuzz targets have in common. A target is one function over bytes, which returns when
/// everything that it states about them holds; the fuzzer, or a replay of kept inputs, calls it.
namespace Fuzz {

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

/// Ends the process by abort(), with the property and what it did not hold for on standard error.
void require(bool holds, std::string_view property, std::string_view about = {});

/// A message about a text begins with "FILE:LINE:COLUMN: ", the place is one of the text, and all
/// of it can be shown to a person.
void requirePlace(std::string_view message, std::string_view file, std::string_view text);

}  // namespace Fuzz
