#pragma once

#include "Fabric/Object.h"
#include "Fabric/Value.h"

namespace Fabric {

/// JSON merge patch (RFC 7396): objects merge, null removes, anything else replaces. A member that
/// stays keeps its place, a new one comes last, in the patch's order. An object of the patch that
/// `replaces()` first removes what it lacks. Both sides are trees in their long forms.
/// What is new shares its tree with the patch. Costs what the patch holds, and one copy of each
/// level that the target shares with other trees.
void merge(Value& target, const Value& patch);
void merge(Object& target, const Object& patch);

}  // namespace Fabric
