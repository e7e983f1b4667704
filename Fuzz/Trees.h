#pragma once

#include <nlohmann/json_fwd.hpp>

#include "Fabric/Value.h"

namespace Fuzz {

/// Whether a tree is so small that writing it out, aliases too, costs little.
bool isSmall(const Fabric::Value& tree);

/// The same tree for the other JSON library, by which this project's own work is judged. A number
/// is a double there too; the order of members and the places are lost.
nlohmann::json jsonOf(const Fabric::Value& tree);

/// What is written can be read again, and is the same.
void requireRoundTrip(const Fabric::Value& tree);

}  // namespace Fuzz
