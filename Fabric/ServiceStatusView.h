#pragma once

#include <cstdint>
#include <optional>

#include "Fabric/View.h"

namespace Fabric {

/// One service of a switch's `services`.
class ServiceStatusView : public View {
 public:
  using View::View;

  bool enabled() const { return boolean("enabled", true); }
  bool reported() const { return boolean("reported", true); }
  bool negotiated() const { return boolean("negotiated", true); }
  /// Nothing: there is no version status.
  std::optional<std::uint32_t> version() const {
    const Value* value = find("version");
    return value == nullptr ? std::nullopt
                            : std::optional(static_cast<std::uint32_t>(value->number()));
  }
};

}  // namespace Fabric
