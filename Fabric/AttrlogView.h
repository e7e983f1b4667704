#pragma once

#include <optional>

#include "Fabric/View.h"

namespace Fabric {

/// A member of the block `attrlog`: one connection of the attribute-log output.
class AttrlogView : public View {
 public:
  using View::View;

  bool passive() const { return boolean("passive", true); }
  bool active() const { return boolean("active", true); }
  bool demuxer() const { return boolean("demuxer", true); }
  bool connected() const { return boolean("connected", true); }
  /// Seconds from a new round asked for to that round reached, 0: within the call; nothing: never.
  std::optional<double> sync() const {
    const Value* value = find("sync");
    if (value != nullptr && value->isString()) {
      return std::nullopt;
    }
    return number("sync", 0);
  }
};

}  // namespace Fabric
