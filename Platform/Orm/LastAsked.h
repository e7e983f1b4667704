#pragma once

#include <optional>

namespace Orm {

/// Stands beside a collection that many ask for one member in a row, as all entries do for the
/// switch that one event concerns: costs a compare for whoever was found last, and for whoever was
/// looked for in vain last. Never wrong about the former; of the latter it is told when members
/// come. Its asking is const, as the collection's; loop thread only.
template <class Collection>
class LastAsked {
 public:
  using Key = typename Collection::Key;

  /// What the collection's find gives.
  auto* find(const Collection& collection, const Key& key) const {
    if (auto* const found = collection.findAt(found_, key)) return found;
    if (missed_ == key) return decltype(collection.find(key)){nullptr};
    auto* const found = collection.find(key, found_);
    if (!found) missed_ = key;
    return found;
  }

  /// A member is about to come.
  void memberComes() { missed_.reset(); }

  /// Where the member stands that was found last.
  typename Collection::Hint& hint() const { return found_; }

 private:
  mutable typename Collection::Hint found_ = 0;
  mutable std::optional<Key> missed_;  // none since a member came
};

}  // namespace Orm
