#pragma once

#include <charconv>
#include <cstdint>
#include <string_view>

#include "Fabric/View.h"

namespace Fabric {

/// A mount group or a publish group.
class GroupView : public View {
 public:
  using View::View;

  /// Of a mount group.
  bool preserve() const { return boolean("preserve", false); }
  /// Filters: members to booleans, ids in lower case or versions in decimal; null: no filter.
  const Object* systems() const { return filter("systems"); }
  const Object* versions() const { return filter("versions"); }
  /// Path to what it is, each for a PathView.
  const Object& paths() const { return membersOf("paths"); }
  /// Of a publish group.
  const Object& dirs() const { return membersOf("dirs"); }

  /// The version that a key of `versions` means.
  static std::uint32_t versionOf(std::string_view key) {
    std::uint32_t version = 0;
    std::from_chars(key.data(), key.data() + key.size(), version);
    return version;
  }

 private:
  const Object* filter(std::string_view name) const {
    const Value* value = find(name);
    return value == nullptr ? nullptr : &value->object();
  }
};

}  // namespace Fabric
