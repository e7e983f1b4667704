#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

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
  std::uint32_t hash() const;
  /// Writes the text form's kTextSize characters, without a NUL.
  void write(char* to) const;
  void appendTo(std::string& out) const;

  friend constexpr auto operator<=>(const EthAddr&, const EthAddr&) = default;

 private:
  std::array<std::uint8_t, 6> bytes_{};
};

static_assert(sizeof(EthAddr) == 6);

}  // namespace Pomix
