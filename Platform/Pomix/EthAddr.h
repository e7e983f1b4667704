#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Orm/Inline.h"

namespace Pomix {

/// A 6-byte Ethernet address. Its text form is six two-digit hexadecimal groups with ":" between
/// them, written in lower case and read in either.
class EthAddr {
 public:
  static constexpr std::size_t kTextSize = 17;

  constexpr EthAddr() = default;
  /// The address whose bytes are the lowest six of `value`, the first byte the most significant.
  static constexpr EthAddr fromValue(std::uint64_t value) {
    EthAddr address;
    for (std::size_t at = 6; at-- != 0; value >>= 8) {
      address.bytes_[at] = static_cast<std::uint8_t>(value);
    }
    return address;
  }
  /// Nothing unless the whole text is an address.
  static std::optional<EthAddr> parse(std::string_view text);

  constexpr std::uint64_t value() const { return std::uint64_t{head()} << 16 | tail(); }
  constexpr std::uint32_t hash() const {
    const std::uint64_t mixed = (value() ^ value() >> 23) * 0x9e3779b97f4a7c15ULL;
    return static_cast<std::uint32_t>(mixed >> 32);
  }
  /// Writes the text form's kTextSize characters, without a NUL.
  void write(char* to) const;
  void appendTo(std::string& out) const;

  // Two compares; left to itself the compiler makes a call of them.
  ORM_ALWAYS_INLINE friend constexpr bool operator==(const EthAddr& a, const EthAddr& b) {
    return a.head() == b.head() && a.tail() == b.tail();
  }
  friend constexpr std::strong_ordering operator<=>(const EthAddr& a, const EthAddr& b) {
    return a.value() <=> b.value();
  }

 private:
  // Four bytes and two, each loaded at once: everything that is kept per switch is found by them.
  constexpr std::uint32_t head() const {
    return std::uint32_t{bytes_[0]} << 24 | std::uint32_t{bytes_[1]} << 16 |
           std::uint32_t{bytes_[2]} << 8 | std::uint32_t{bytes_[3]};
  }
  constexpr std::uint32_t tail() const {
    return std::uint32_t{bytes_[4]} << 8 | std::uint32_t{bytes_[5]};
  }

  std::array<std::uint8_t, 6> bytes_{};
};

static_assert(sizeof(EthAddr) == 6);

}  // namespace Pomix
