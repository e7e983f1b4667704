#pragma once

namespace Zorb {

/// As `zorb --version` prints it; the project's version in CMakeLists.txt.
inline constexpr const char* kVersion = "0.1.0";

}  // namespace Zorb
