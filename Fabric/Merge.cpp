#include "Fabric/Merge.h"

#include <algorithm>
#include <vector>

namespace Fabric {

namespace {

void eraseWhatPatchLacks(Object& target, const Object& patch) {
  std::vector<Text> lacking;
  for (const Object::Member& member : target) {
    if (patch.find(*member.key) == nullptr) {
      lacking.push_back(member.key);
    }
  }
  for (const Text& key : lacking) {
    target.erase(*key);
  }
}

/// Whether the value, merged into nothing, gives itself, so that it can be shared.
bool isWhole(const Value& patch) {
  if (!patch.isObject()) {
    return !patch.isNull();
  }
  const Object& object = patch.object();
  return !object.replaces() &&
         std::all_of(object.begin(), object.end(),
                     [](const Object::Member& member) { return isWhole(member.value); });
}

}  // namespace

void merge(Object& target, const Object& patch) {
  if (patch.replaces()) {
    eraseWhatPatchLacks(target, patch);
  }
  for (const Object::Member& member : patch) {
    if (member.value.isNull()) {
      target.erase(*member.key);
      continue;
    }
    Value* there = target.find(*member.key);
    if (there == nullptr) {
      there = &target.set(member.key, member.mark, Value());
    }
    merge(*there, member.value);
  }
}

void merge(Value& target, const Value& patch) {
  if (!patch.isObject() || (!target.isObject() && isWhole(patch))) {
    target = patch;
    return;
  }
  if (!target.isObject()) {
    target = Value(Object(), patch.mark());
  }
  merge(target.mutableObject(), patch.object());
}

}  // namespace Fabric
