#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "Fabric/Mark.h"

namespace Fabric {

/// Bad input: what() is "FILE:LINE:COLUMN: what is wrong, and what was expected". Whoever reads
/// input for a person prints it to standard error and ends with exit status 2.
class InputError : public std::runtime_error {
 public:
  InputError(std::string_view file, Mark mark, std::string_view text);

  const std::string& file() const { return file_; }
  Mark mark() const { return mark_; }
  /// The message without the place.
  const std::string& text() const { return text_; }

 private:
  std::string file_;
  Mark mark_;
  std::string text_;
};

}  // namespace Fabric
