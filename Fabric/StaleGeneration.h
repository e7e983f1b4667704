#pragma once

#include <string>

namespace Fabric {

/// Why a configuration of the generation does not count under the leader, whose generation is
/// another; each may be empty.
inline std::string staleGeneration(const std::string& generation, const std::string& leader) {
  if (leader.empty()) return "no leader is known";
  return (generation.empty() ? "written under no generation" : "written under " + generation) +
         ", the leader's is " + leader;
}

}  // namespace Fabric
