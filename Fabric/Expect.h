#pragma once

#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Fabric/Value.h"

namespace Fabric {

/// One member that is not as expected.
struct ExpectFailure {
  /// As the expectation writes it, such as `mounts.leaf1.topology/status.state`.
  std::string path;
  /// JSON; `absent` where no member is expected or none is there.
  std::string expected;
  std::string actual;
};

/// Gives the id of a switch that is named by display name (or id); nothing when there is none.
using SwitchResolver = std::function<std::optional<std::string>(std::string_view)>;

/// Compares an expectation with a state document. It holds, and nothing is returned, when every
/// member that it names is equal: objects by their named members, arrays whole, numbers to a
/// microsecond. null expects no member, and what is inside a member that is not there is not there
/// either. An empty string, array or object also expects no more than none, for the state document
/// leaves empty members out. Keys of `mounts`, `systems` and `published.systems` go through
/// `resolve`. Costs what the expectation holds.
std::vector<ExpectFailure> failures(const Value& expect, const nlohmann::json& state,
                                    const SwitchResolver& resolve);

}  // namespace Fabric
