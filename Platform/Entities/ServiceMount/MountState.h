#pragma once

#include <cstdint>
#include <string>

namespace Controller {

/// How far a mount is, in one byte, as the mount machines report it.
enum class MountState : std::uint8_t {
  unmounted = 0,
  requested = 1,
  mounting = 2,
  failed = 3,
  mounted = 4,
};

inline constexpr std::size_t kMountStates = 5;

/// The enumerator's name.
const char* name(MountState state);
void appendTo(std::string& out, MountState state);

}  // namespace Controller
