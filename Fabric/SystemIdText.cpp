#include "Fabric/SystemIdText.h"

#include "Platform/Pomix/EthAddr.h"

namespace Fabric {

std::optional<std::uint64_t> systemIdNumber(std::string_view text) {
  const std::optional<Pomix::EthAddr> address = Pomix::EthAddr::parse(text);
  return address ? std::optional(address->value()) : std::nullopt;
}

std::string systemIdText(std::uint64_t number) {
  std::string text;
  Pomix::EthAddr::fromValue(number).appendTo(text);
  return text;
}

std::optional<std::string> canonicalSystemId(std::string_view text) {
  const std::optional<std::uint64_t> number = systemIdNumber(text);
  return number ? std::optional(systemIdText(*number)) : std::nullopt;
}

}  // namespace Fabric
