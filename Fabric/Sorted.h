#pragma once

#include <algorithm>
#include <vector>

namespace Fabric {

/// The members of a collection in the order of what `keyOf` gives for each, for documents that
/// shall not depend on who came first. They stay where they are; the collection must not change.
template <class Range, class KeyOf>
auto sortedBy(const Range& range, KeyOf keyOf) {
  std::vector<decltype(&*range.begin())> members;
  members.reserve(range.size());
  for (const auto& member : range) members.push_back(&member);
  std::sort(members.begin(), members.end(),
            [&keyOf](const auto* a, const auto* b) { return keyOf(*a) < keyOf(*b); });
  return members;
}

/// The slots of a collection of values in the order of their keys.
template <class Range>
auto sortedByKey(const Range& range) {
  return sortedBy(
      range, [](const auto& slot) -> const auto& { return slot.key; });
}

}  // namespace Fabric
