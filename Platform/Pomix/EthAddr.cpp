#include "Platform/Pomix/EthAddr.h"

namespace Pomix {

namespace {

int digitOf(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

std::optional<EthAddr> EthAddr::parse(std::string_view text) {
  if (text.size() != kTextSize) return std::nullopt;
  EthAddr address;
  for (std::size_t group = 0; group != 6; ++group) {
    const int high = digitOf(text[group * 3]);
    const int low = digitOf(text[group * 3 + 1]);
    if (high < 0 || low < 0 || (group != 5 && text[group * 3 + 2] != ':')) return std::nullopt;
    address.bytes_[group] = static_cast<std::uint8_t>(high << 4 | low);
  }
  return address;
}

void EthAddr::write(char* to) const {
  static constexpr char kDigits[] = "0123456789abcdef";
  for (std::size_t group = 0; group != 6; ++group) {
    if (group != 0) *to++ = ':';
    *to++ = kDigits[bytes_[group] >> 4];
    *to++ = kDigits[bytes_[group] & 0xf];
  }
}

void EthAddr::appendTo(std::string& out) const {
  char text[kTextSize];
  write(text);
  out.append(text, kTextSize);
}

}  // namespace Pomix
