#pragma once

#include <optional>

#include "Fabric/ServiceBlockView.h"
#include "Fabric/View.h"

namespace Fabric {

/// A member of the block `services`.
class ServiceView : public View {
 public:
  using View::View;

  /// Nothing: the service has no ServiceConfigV1 at all.
  std::optional<bool> enabled() const {
    const Value* value = find("enabled");
    if (value != nullptr && value->isString()) {
      return std::nullopt;
    }
    return boolean("enabled", true);
  }
  /// Its mount configuration lives in the proxy directories.
  bool proxy() const { return boolean("proxy", false); }
  /// Nothing: no such configuration.
  std::optional<ServiceBlockView> mount() const { return configuration("mount"); }
  std::optional<ServiceBlockView> publish() const { return configuration("publish"); }

 private:
  std::optional<ServiceBlockView> configuration(std::string_view name) const {
    const Value* value = find(name);
    return value == nullptr ? std::nullopt : std::optional(ServiceBlockView(value));
  }
};

}  // namespace Fabric
