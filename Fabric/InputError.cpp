#include "Fabric/InputError.h"

namespace Fabric {

InputError::InputError(std::string_view file, Mark mark, std::string_view text)
    : std::runtime_error(std::string(file) + ":" + std::to_string(mark.line) + ":" +
                         std::to_string(mark.column) + ": " + std::string(text)),
      file_(file),
      mark_(mark),
      text_(text) {}

}  // namespace Fabric
