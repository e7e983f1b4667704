#pragma once

#include <array>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>

#include "Fabric/Checker.h"
#include "Fabric/Object.h"
#include "Fabric/Patch.h"
#include "Fabric/Value.h"

namespace Fabric {

/// The document as it is in force: its five blocks in long forms, runs of switches written out as
/// single switches. What was not written (a default) is not there: read members through the views
/// (SwitchView, ServiceView ...), which know the defaults.
///
/// A value; copies share what they have in common. A live controller and each run own one:
///
///     Patch patch = model.resolve(file, tree);            // checks everything, changes nothing
///     for (const Step& step : patch.steps) {
///       for (const Text& key : *step.keys) {
///         Value before = model.apply(step, key);          // null: it was not there
///         const Value* after = model.find(step.block, *key);   // nullptr: it is gone
///         ... carry the difference, in the order of step.patch ...
///       }
///     }
class Model {
 public:
  const Object& block(Block block) const { return blocks_[static_cast<std::size_t>(block)]; }
  /// A member of a block, nullptr when it is not there. The key is canonical.
  const Value* find(Block block, std::string_view key) const;

  /// Checks a patch as it was read (Fabric::read) and resolves its names and patterns against the
  /// switches that are there now. Throws InputError, naming `file`; changes nothing.
  /// Whatever the patch does to switches on its way, names and patterns mean those from before it;
  /// display names have to be unique after the whole of it.
  Patch resolve(std::string_view file, const Value& tree, Purpose purpose = Purpose::patch) const;

  /// The same, of a patch in a file or in a text.
  Patch loadPatch(const std::string& path) const;
  Patch parsePatch(std::string_view name, std::string_view text) const;

  /// Merges one key's share of a step. Returns what the member was before (of `controller`, the
  /// whole block), null when it was not there.
  Value apply(const Step& step, const Text& key);
  /// All of a patch at once.
  void apply(const Patch& patch);

  /// The id of the switch that a person names by id, in either case, or by display name; nothing
  /// when there is no such switch.
  std::optional<std::string> switchId(std::string_view idOrName) const;

 private:
  friend class PatchResolver;

  void switchChanged(const Text& id, const Value& before, const Value* after);
  void entityChanged(const std::string& path, bool isThere);

  std::array<Object, kBlockCount> blocks_;
  std::unordered_map<std::string, Text> switchByName_;
  /// Sorted, to find what lies below a path.
  std::set<std::string, std::less<>> entityPaths_;
  /// What patterns matched, as long as no switch comes, goes or is renamed.
  mutable std::unordered_map<std::string, KeyList> matches_;
};

}  // namespace Fabric
