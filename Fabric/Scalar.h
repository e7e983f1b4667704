#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Fabric/Mark.h"
#include "Fabric/Value.h"

namespace Fabric {

/// What a plain scalar means in the core schema of YAML 1.2: null, a boolean, a number (decimal
/// integers and fractions, 0o17, 0x1f, .inf, .nan), or the string that it is.
Value plainScalar(std::string_view text, Mark mark);

/// The value of digits with an optional sign, fraction and exponent; infinite when they mean more
/// than a double holds, 0 when they mean less.
double decimalNumber(std::string_view digits);

/// Appends the character U+`code`, which is no surrogate and at most 10FFFF.
void appendUtf8(std::uint32_t code, std::string& out);

}  // namespace Fabric
