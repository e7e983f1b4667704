#pragma once

#include <string_view>

#include "Fabric/SimulatedMountView.h"
#include "Fabric/View.h"

namespace Fabric {

/// A member of the block `switches`.
class SwitchView : public View {
 public:
  using View::View;

  /// Empty: no display name.
  std::string_view name() const { return text("name"); }
  bool connected() const { return boolean("connected", false); }
  bool reachable() const { return boolean("reachable", true); }
  bool inactive() const { return boolean("inactive", false); }
  /// Name to service status, each for a ServiceStatusView.
  const Object& services() const { return membersOf("services"); }
  SimulatedMountView mount() const { return SimulatedMountView(find("mount")); }
};

}  // namespace Fabric
