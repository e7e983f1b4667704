#include "Fabric/Model.h"

#include <utility>

#include "Fabric/Merge.h"
#include "Fabric/PatchResolver.h"
#include "Fabric/Reader.h"
#include "Fabric/SystemIdText.h"

namespace Fabric {

namespace {

/// The display name of a switch, empty when it has none.
std::string_view displayName(const Value* member) {
  const Value* name = member == nullptr ? nullptr : member->find("name");
  return name == nullptr ? std::string_view() : std::string_view(name->string());
}

}  // namespace

const Value* Model::find(Block block, std::string_view key) const {
  return this->block(block).find(key);
}

Patch Model::resolve(std::string_view file, const Value& tree, Purpose purpose) const {
  return PatchResolver(*this, file, purpose).resolve(tree);
}

Patch Model::loadPatch(const std::string& path) const { return parsePatch(path, readFile(path)); }

Patch Model::parsePatch(std::string_view name, std::string_view text) const {
  return resolve(name, read(name, text));
}

Value Model::apply(const Step& step, const Text& key) {
  Object& members = blocks_[static_cast<std::size_t>(step.block)];
  if (step.block == Block::controller) {
    Value before(members);
    if (step.patch.isNull()) {
      members = Object();
    } else {
      merge(members, step.patch.object());
    }
    return before;
  }
  Value* there = members.find(*key);
  Value before = there == nullptr ? Value() : *there;
  if (step.patch.isNull()) {
    members.erase(*key);
    there = nullptr;
  } else {
    if (there == nullptr) {
      there = &members.set(key, step.mark, Value());
    }
    merge(*there, step.patch);
  }
  if (step.block == Block::switches) {
    switchChanged(key, before, there);
  } else if (step.block == Block::entities) {
    entityChanged(*key, there != nullptr);
  }
  return before;
}

void Model::apply(const Patch& patch) {
  for (const Step& step : patch.steps) {
    for (const Text& key : *step.keys) {
      apply(step, key);
    }
  }
}

void Model::switchChanged(const Text& id, const Value& before, const Value* after) {
  const std::string_view nameBefore = displayName(&before);
  const std::string_view nameAfter = displayName(after);
  if (!before.isNull() && after != nullptr && nameBefore == nameAfter) {
    return;
  }
  matches_.clear();
  // In the middle of a patch two switches may have one name: the later owner keeps it.
  const auto owned = switchByName_.find(std::string(nameBefore));
  if (owned != switchByName_.end() && *owned->second == *id) {
    switchByName_.erase(owned);
  }
  if (!nameAfter.empty()) {
    switchByName_[std::string(nameAfter)] = id;
  }
}

void Model::entityChanged(const std::string& path, bool isThere) {
  if (isThere) {
    entityPaths_.insert(path);
  } else {
    entityPaths_.erase(path);
  }
}

std::optional<std::string> Model::switchId(std::string_view idOrName) const {
  if (const std::optional<std::string> id = canonicalSystemId(idOrName)) {
    return find(Block::switches, *id) != nullptr ? id : std::nullopt;
  }
  const auto named = switchByName_.find(std::string(idOrName));
  return named == switchByName_.end() ? std::nullopt : std::optional(*named->second);
}

}  // namespace Fabric
