#pragma once

#include <cstddef>
#include <string_view>

namespace Fabric {

/// Finds runaway nesting of [ and { in a YAML text, before a parser that reads ahead to the end of
/// such a nest is given the text. Returns the offset of the first bracket beyond kMaxDepth of a
/// nest that is many times deeper than that, npos when there is none.
///
/// It looks at brackets, quotes and comments alone, and may take a bracket inside of a block
/// scalar for a real one; a nest has to be so deep that this does not matter. What is too deep but
/// less so, the TreeBuilder finds.
std::size_t findRunawayNesting(std::string_view text);

}  // namespace Fabric
