#include "Platform/Entities/SystemId/SystemId.h"

#include "Platform/Orm/Assert.h"

namespace Controller {

std::optional<SystemId> SystemId::parse(std::string_view text) {
  const std::optional<Pomix::EthAddr> address = Pomix::EthAddr::parse(text);
  if (!address) return std::nullopt;
  return SystemId(*address);
}

SystemId SystemId::ofName(std::string_view connectionName) {
  const std::optional<SystemId> system = parse(connectionName);
  Orm::assertThat(system, "SystemId::parse( connectionName )");
  return *system;
}

Orm::String SystemId::stringValue() const {
  char text[Pomix::EthAddr::kTextSize];
  address_.write(text);
  return Orm::String(std::string_view(text, sizeof text));
}

}  // namespace Controller
