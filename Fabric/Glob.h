#pragma once

#include <string_view>

namespace Fabric {

/// Whether the text has one of the characters that make it a shell pattern: * ? [
bool isGlob(std::string_view text);

/// Whether a shell pattern matches the whole text: * stands for any characters, ? for one,
/// [a-c] and [!a-c] for one of a set or not of it, a backslash takes the special meaning from the
/// next. A [ without its ] stands for itself. No other meaning for any character, "/" and a dot in
/// front too. Costs the product of both sizes at most.
bool globMatches(std::string_view pattern, std::string_view text);

}  // namespace Fabric
