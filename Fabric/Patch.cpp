#include "Fabric/Patch.h"

#include <array>

namespace Fabric {

std::string_view blockName(Block block) {
  constexpr std::array<std::string_view, kBlockCount> kNames = {"controller", "entities", "attrlog",
                                                                "services", "switches"};
  return kNames[static_cast<std::size_t>(block)];
}

}  // namespace Fabric
