#pragma once

#include <span>
#include <string>
#include <string_view>

#include "Fabric/Value.h"

namespace Fabric {

/// A text for a message: in double quotes, control characters escaped, cut when it is long.
std::string quote(std::string_view text);

/// The same of a text's first character alone. The text is well-formed UTF-8 and not empty.
std::string quoteFirst(std::string_view text);

/// A value for a message: `the string "yes"`, `the number 7`, `true`, `a list`, `an object` ...
std::string describe(const Value& value);

/// "a, b or c".
std::string alternatives(std::span<const std::string_view> words);

/// The word that was probably meant, at most two slips away; empty when there is none.
std::string_view closest(std::string_view word, std::span<const std::string_view> words);

}  // namespace Fabric
