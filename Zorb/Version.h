#pragma once

namespace Zorb {

/// As `zorb --version` prints it: the project's version, which the build hands in.
inline constexpr const char* kVersion = ZORB_VERSION;

}  // namespace Zorb
