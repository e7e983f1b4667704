#pragma once

#include <string>
#include <string_view>

#include "Fabric/Value.h"

namespace Fabric {

/// Reads one YAML 1.2 document with the core schema, some megabytes a second. Throws InputError,
/// naming `file`. The text is well-formed UTF-8 without control characters.
Value readYaml(std::string_view file, std::string_view text);

}  // namespace Fabric
