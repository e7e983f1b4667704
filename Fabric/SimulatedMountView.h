#pragma once

#include <cstdint>
#include <string_view>

#include "Fabric/View.h"

namespace Fabric {

/// How the simulated mount machine behaves for one switch: the `mount` of a switch.
class SimulatedMountView : public View {
 public:
  enum class Outcome : std::uint8_t { mounted, failed, stalled };

  using View::View;

  /// Seconds from the turn that takes a request up to its outcome.
  double delay() const { return number("delay", 0.1); }
  /// What becomes of a request for that path.
  Outcome outcome(std::string_view remotePath) const {
    const Value* ofPath = membersOf("paths").find(remotePath);
    const std::string_view word = ofPath == nullptr ? text("outcome") : ofPath->string();
    return word == "failed"    ? Outcome::failed
           : word == "stalled" ? Outcome::stalled
                               : Outcome::mounted;
  }
};

}  // namespace Fabric
