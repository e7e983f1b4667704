#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "Fabric/View.h"

namespace Fabric {

/// The block `controller`.
class ControllerView : public View {
 public:
  using View::View;

  std::string_view leader() const { return text("leader"); }
  /// Seconds; nothing: there is no heartbeat configuration.
  std::optional<double> heartbeat() const {
    const Value* value = find("heartbeat");
    return value == nullptr ? std::nullopt : std::optional(value->number());
  }

  // These count at start alone.
  std::string_view registryDir() const { return text("registryDir", "/controller/mounts"); }
  std::string_view remoteRoot() const { return text("remoteRoot"); }
  /// Whole seconds; 0: no limit.
  double mountTimeout() const { return number("mountTimeout", 0); }
  /// 0: no limit.
  std::uint32_t reconnectRetries() const {
    return static_cast<std::uint32_t>(number("reconnectRetries", 0));
  }
  bool mountMonitor() const { return boolean("mountMonitor", true); }
};

}  // namespace Fabric
