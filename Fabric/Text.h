#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace Fabric {

/// An immutable text that trees share: copying a tree, or naming the same key in a thousand
/// objects, copies no characters. Never null, but for the keys of members that were erased.
using Text = std::shared_ptr<const std::string>;

inline Text makeText(std::string_view text) { return std::make_shared<const std::string>(text); }

}  // namespace Fabric
