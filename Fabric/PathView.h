#pragma once

#include <string_view>

#include "Fabric/View.h"

namespace Fabric {

/// A path of a mount group, or a path or directory of a publish group.
class PathView : public View {
 public:
  using View::View;

  std::string_view type() const { return text("type"); }

  // Of a mount path.
  std::string_view flags() const { return text("flags"); }
  /// Empty: below the registry's directory.
  std::string_view target() const { return text("target"); }

  /// Of a published path or directory.
  std::string_view remote() const { return text("remote"); }
  /// Of a published directory.
  bool ready() const { return boolean("ready", false); }
};

}  // namespace Fabric
