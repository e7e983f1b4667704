#pragma once

#include <cstddef>
#include <string_view>

#include "Fabric/Mark.h"

namespace Fabric {

/// Turns byte offsets of a text into places for people: lines end with LF, columns count
/// characters of UTF-8. Asked in ascending order, all questions together cost the text once; a step
/// back costs the line that it ends in. The text must outlive the locator.
class TextLocator {
 public:
  explicit TextLocator(std::string_view text) : text_(text) {}

  /// An offset beyond the end means the end.
  Mark at(std::size_t offset);

 private:
  void stepBackTo(std::size_t offset);

  std::string_view text_;
  std::size_t offset_ = 0;
  Mark mark_{1, 1};
};

/// Finds what no reader should see: the offset of the first byte that is not part of well-formed
/// UTF-8 or is a control character other than tab, LF and CR; npos when there is none.
std::size_t findUnreadable(std::string_view text);

}  // namespace Fabric
