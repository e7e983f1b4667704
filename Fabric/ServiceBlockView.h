#pragma once

#include <string_view>

#include "Fabric/View.h"

namespace Fabric {

/// The `mount` or the `publish` of a service.
class ServiceBlockView : public View {
 public:
  using View::View;

  std::string_view generation() const { return text("generation"); }
  /// Empty: not yet set. The default is the service's key.
  std::string_view serviceName(std::string_view key) const { return text("serviceName", key); }
  /// Its status entity exists.
  bool status() const { return boolean("status", true); }
  /// Of `publish`.
  bool ready() const { return boolean("ready", false); }
  /// Name to group, each for a GroupView.
  const Object& groups() const { return membersOf("groups"); }
};

}  // namespace Fabric
