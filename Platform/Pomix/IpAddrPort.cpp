#include "Platform/Pomix/IpAddrPort.h"

#include <cstdio>
#include <cstring>

namespace Pomix {

IpAddr IpAddr::fromV4(std::uint32_t value) {
  IpAddr address;
  address.bytes_[10] = address.bytes_[11] = 0xff;
  for (std::size_t at = 16; at-- != 12; value >>= 8) {
    address.bytes_[at] = static_cast<std::uint8_t>(value);
  }
  return address;
}

IpAddr IpAddr::fromV6(const std::array<std::uint8_t, 16>& bytes) {
  IpAddr address;
  address.bytes_ = bytes;
  return address;
}

bool IpAddr::isV4() const {
  for (std::size_t at = 0; at != 10; ++at) {
    if (bytes_[at] != 0) return false;
  }
  return bytes_[10] == 0xff && bytes_[11] == 0xff;
}

std::uint32_t IpAddr::hash() const {
  std::uint64_t high = 0;
  std::uint64_t low = 0;
  std::memcpy(&high, bytes_.data(), 8);
  std::memcpy(&low, bytes_.data() + 8, 8);
  const std::uint64_t mixed =
      (high * 0xd6e8feb86659fd93ULL ^ low ^ low >> 29) * 0x9e3779b97f4a7c15ULL;
  return static_cast<std::uint32_t>(mixed >> 32);
}

void IpAddr::appendTo(std::string& out) const {
  char text[48];
  if (isV4()) {
    std::snprintf(text, sizeof text, "%d.%d.%d.%d", bytes_[12], bytes_[13], bytes_[14], bytes_[15]);
    out += text;
    return;
  }
  for (std::size_t at = 0; at != 16; at += 2) {
    std::snprintf(text, sizeof text, at == 0 ? "%x" : ":%x", bytes_[at] << 8 | bytes_[at + 1]);
    out += text;
  }
}

void IpAddrPort::appendTo(std::string& out) const {
  if (address_.isV4()) {
    address_.appendTo(out);
  } else {
    out += '[';
    address_.appendTo(out);
    out += ']';
  }
  out += ':';
  out += std::to_string(port_);
}

}  // namespace Pomix
