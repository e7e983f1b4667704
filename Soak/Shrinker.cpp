#include "Soak/Shrinker.h"

#include <algorithm>
#include <vector>

#include "Fabric/Object.h"

namespace Soak {

using Fabric::Object;
using Fabric::Value;

namespace {

/// A place in a tree: keys from its root.
using Path = std::vector<std::string>;

/// All members below a value, those above before those below.
void collect(const Value& value, Path& path, std::vector<Path>& paths) {
  if (!value.isObject()) return;
  for (const Object::Member& member : value.object()) {
    path.push_back(*member.key);
    paths.push_back(path);
    collect(member.value, path, paths);
    path.pop_back();
  }
}

/// False when the member is not there.
bool erase(Value& value, const Path& path, std::size_t depth = 0) {
  if (!value.isObject()) return false;
  Object& object = value.mutableObject();
  if (depth + 1 == path.size()) return object.erase(path[depth]);
  Value* const below = object.find(path[depth]);
  return below != nullptr && erase(*below, path, depth + 1);
}

}  // namespace

bool Shrinker::stillFails(const Script& script) {
  ++tries_;
  return fails_(script.text());
}

Script Shrinker::shrunk(Script script) {
  bool smaller = true;
  while (smaller) {
    smaller = shrinkEvents(script);
    smaller = shrinkMembers(script) || smaller;
  }
  return script;
}

/// Leaves out runs of events, long ones first.
bool Shrinker::shrinkEvents(Script& script) {
  bool smaller = false;
  for (std::size_t size = std::max<std::size_t>(script.events.size() / 2, 1); size != 0;
       size /= 2) {
    for (std::size_t at = 0; at < script.events.size();) {
      Script candidate = script;
      const auto first = candidate.events.begin() + static_cast<std::ptrdiff_t>(at);
      const std::size_t count = std::min(size, script.events.size() - at);
      candidate.events.erase(first, first + static_cast<std::ptrdiff_t>(count));
      if (stillFails(candidate)) {
        script = std::move(candidate);
        smaller = true;
      } else {
        at += count;
      }
    }
  }
  return smaller;
}

/// Leaves out one member after the other, of the start and of the events' patches.
bool Shrinker::shrinkMembers(Script& script) {
  bool smaller = false;
  for (std::size_t at = 0; at <= script.events.size(); ++at) {
    const auto tree = [at](Script& of) -> Value& { return at == 0 ? of.start : of.events[at - 1]; };
    Path path;
    std::vector<Path> paths;
    collect(tree(script), path, paths);
    for (const Path& place : paths) {
      Script candidate = script;
      if (!erase(tree(candidate), place) || !stillFails(candidate)) continue;
      script = std::move(candidate);
      smaller = true;
    }
  }
  return smaller;
}

}  // namespace Soak
