#pragma once

#include <string>
#include <string_view>

#include "Fabric/Value.h"

namespace Fabric {

/// A file's bytes, "-" for standard input. Throws InputError for a file that cannot be read, a
/// directory, and more than kMaxBytes, which is found before the text is read where it is known.
std::string readFile(const std::string& path);

/// Reads one YAML 1.2 (core schema) or JSON text. Throws InputError, naming `name`.
///
/// A name that ends in ".json" means JSON and nothing else; a text that begins with "{" is JSON
/// when it can be read so. Plain scalars are null, true and false, decimal, octal (0o) and
/// hexadecimal (0x) integers, decimal fractions, or else strings; quoted ones are strings; keys are
/// texts as they are written. Duplicate keys, several documents, tags other than the core schema's,
/// .inf and .nan, control characters outside of escapes, and what goes over a limit (Limits.h) are
/// errors. An alias shares what its anchor stands for.
Value read(std::string_view name, std::string_view text);

}  // namespace Fabric
