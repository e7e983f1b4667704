#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <unordered_set>

#include "Fabric/Object.h"
#include "Fabric/Value.h"

namespace Fabric {

/// Checks what can be known of an `expect` before a run: that it is an object whose members a state
/// document can have. Returns it. Throws InputError.
Value checkedExpectation(std::string_view file, const Value& written);

/// Checks that each key that stands for a switch is an id or one of `names`, so that an absence
/// that is expected of a misspelt name does not hold for nothing. Throws InputError.
void checkSwitchKeys(std::string_view file, const Value& expect,
                     const std::unordered_set<std::string>& names);

/// Where in a state document a value stands, as far as it matters which keys are switches.
enum class StatePlace : std::uint8_t {
  root,
  mountStatuses,  ///< `mountStatus`
  mountStatus,    ///< one service's
  published,
  bySwitch,  ///< an object with a member for each switch
  other,
};

/// The place of a member.
StatePlace placeBelow(StatePlace place, std::string_view key);

}  // namespace Fabric
