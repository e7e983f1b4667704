#include "Fabric/JsonTree.h"

#include <cmath>
#include <utility>

#include "Fabric/Limits.h"
#include "Fabric/Object.h"
#include "Fabric/SystemIdText.h"

namespace Fabric {

JsonTree::JsonTree(const Value& expect, const SwitchResolver& resolve)
    : expect_(expect), resolve_(resolve) {}

bool JsonTree::key(std::string_view key) {
  const Open& open = open_.back();
  const bool wanted = open.wanted == nullptr || open.wanted->find(key) != nullptr ||
                      open.wantedSwitches.contains(std::string(key));
  if (wanted) key_ = key;
  return wanted;
}

/// What is expected of the member that begins; null: it is wanted whole.
const Value* JsonTree::expectationOf(std::string_view key) const {
  if (open_.empty()) return &expect_;
  const Open& outer = open_.back();
  // A switch may be named in several ways, so all of it is built.
  if (outer.wanted == nullptr || outer.place == StatePlace::bySwitch) return nullptr;
  return outer.wanted->find(key);
}

void JsonTree::ask(Open& open, const Value* expect) const {
  open.wanted = expect != nullptr && expect->isObject() ? &expect->object() : nullptr;
  if (open.wanted == nullptr || open.place != StatePlace::bySwitch) return;
  for (const Object::Member& member : *open.wanted) {
    const auto id = canonicalSystemId(*member.key);
    if (const auto named = id ? id : resolve_(*member.key)) open.wantedSwitches.insert(*named);
  }
}

void JsonTree::begin(nlohmann::json empty, WhenEmpty whenEmpty) {
  const StatePlace place = open_.empty() ? StatePlace::root : placeBelow(open_.back().place, key_);
  const Value* const expect = expectationOf(key_);
  const bool keep = open_.empty() || whenEmpty == WhenEmpty::keep;
  open_.push_back({std::move(empty), std::exchange(key_, {}), keep, place, nullptr, {}});
  ask(open_.back(), expect);
}

void JsonTree::beginObject(WhenEmpty whenEmpty) { begin(nlohmann::json::object(), whenEmpty); }

void JsonTree::beginArray(WhenEmpty whenEmpty) { begin(nlohmann::json::array(), whenEmpty); }

void JsonTree::seconds(Orm::Seconds value) {
  // A whole number is shown without a fraction, as it stands in the document.
  if (std::floor(value) == value && std::abs(value) <= kMaxSeconds) {
    add(static_cast<std::int64_t>(value));
  } else {
    add(value);
  }
}

void JsonTree::end() {
  Open closed = std::move(open_.back());
  open_.pop_back();
  if (closed.value.empty() && !closed.keep) return;
  key_ = std::move(closed.key);
  add(std::move(closed.value));
}

void JsonTree::add(nlohmann::json value) {
  if (open_.empty()) {
    root_ = std::move(value);
  } else if (open_.back().value.is_array()) {
    open_.back().value.push_back(std::move(value));
  } else {
    open_.back().value[key_] = std::move(value);
  }
}

}  // namespace Fabric
