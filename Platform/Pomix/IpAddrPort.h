#pragma once

#include <array>
#include <bit>
#include <compare>
#include <cstdint>
#include <string>

namespace Pomix {

/// An IP address: version 6, or version 4 in its mapped form (::ffff:a.b.c.d). The text form of a
/// version 4 address is dotted decimal, of any other the full eight groups of hexadecimal digits.
class IpAddr {
 public:
  constexpr IpAddr() = default;
  /// A version 4 address, the first byte the most significant.
  static IpAddr fromV4(std::uint32_t value);
  static IpAddr fromV6(const std::array<std::uint8_t, 16>& bytes);

  bool isV4() const;
  const std::array<std::uint8_t, 16>& bytes() const { return bytes_; }
  std::uint32_t hash() const;
  void appendTo(std::string& out) const;

  friend constexpr bool operator==(const IpAddr& a, const IpAddr& b) {
    const auto left = std::bit_cast<Words>(a.bytes_);
    const auto right = std::bit_cast<Words>(b.bytes_);
    return left[0] == right[0] && left[1] == right[1];
  }
  friend constexpr auto operator<=>(const IpAddr&, const IpAddr&) = default;

 private:
  /// The bytes as they are compared for equality: without a call.
  using Words = std::array<std::uint64_t, 2>;

  std::array<std::uint8_t, 16> bytes_{};
};

/// Where a client's connection comes from: the key of its status. Text form "ADDRESS:PORT", the
/// address of a version 6 one in brackets.
class IpAddrPort {
 public:
  constexpr IpAddrPort() = default;
  constexpr IpAddrPort(const IpAddr& address, std::uint16_t port)
      : address_(address), port_(port) {}

  const IpAddr& address() const { return address_; }
  std::uint16_t port() const { return port_; }
  std::uint32_t hash() const { return address_.hash() ^ port_ * 0x9e3779b1U; }
  void appendTo(std::string& out) const;

  friend constexpr auto operator<=>(const IpAddrPort&, const IpAddrPort&) = default;

 private:
  IpAddr address_;
  std::uint16_t port_ = 0;
};

}  // namespace Pomix
