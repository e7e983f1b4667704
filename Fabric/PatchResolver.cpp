#include "Fabric/PatchResolver.h"

#include <algorithm>
#include <utility>

#include "Fabric/Glob.h"
#include "Fabric/Limits.h"
#include "Fabric/Quote.h"
#include "Fabric/Shapes.h"
#include "Fabric/SystemIdText.h"

namespace Fabric {

namespace {

constexpr std::string_view kDirectoryType = "Orm::Dir";
constexpr std::string_view kNumberInRun = "{n}";
constexpr std::uint64_t kSystemIds = std::uint64_t{1} << 48;

KeyList oneKey(const Text& key) { return std::make_shared<const std::vector<Text>>(1, key); }

std::optional<Block> blockNamed(std::string_view name) {
  for (std::size_t at = 0; at < kBlockCount; ++at) {
    const auto block = static_cast<Block>(at);
    if (blockName(block) == name) {
      return block;
    }
  }
  return std::nullopt;
}

KeyList allKeys(const Object& members) {
  std::vector<Text> keys;
  for (const Object::Member& member : members) {
    keys.push_back(member.key);
  }
  return std::make_shared<const std::vector<Text>>(std::move(keys));
}

/// The name with the switch's number in its run, from 1, wherever it says {n}.
std::string numberedName(std::string_view name, std::uint64_t number) {
  std::string numbered;
  std::size_t at = 0;
  for (std::size_t next = 0; (next = name.find(kNumberInRun, at)) != std::string_view::npos;
       at = next + kNumberInRun.size()) {
    numbered += name.substr(at, next - at);
    numbered += std::to_string(number);
  }
  return numbered += name.substr(at);
}

const Value* nameToNumber(const Value& patch) {
  const Value* name = patch.find("name");
  const bool numbered =
      name != nullptr && name->isString() && name->string().find(kNumberInRun) != std::string::npos;
  return numbered ? name : nullptr;
}

}  // namespace

PatchResolver::PatchResolver(const Model& model, std::string_view file, Purpose purpose)
    : model_(model), checker_(file, purpose), purpose_(purpose) {}

Patch PatchResolver::resolve(const Value& tree) {
  if (!tree.isObject()) {
    checker_.fail(tree.mark(), (purpose_ == Purpose::start ? "the document is " : "the patch is ") +
                                   describe(tree) + ", expected an object");
  }
  for (const Object::Member& written : tree.object()) {
    checker_.field(documentShape(), written);
    const std::optional<Block> block = blockNamed(*written.key);
    if (block) {
      addBlock(*block, written);
    }
  }
  checkNames();
  return std::move(patch_);
}

void PatchResolver::addBlock(Block block, const Object::Member& written) {
  if (written.value.isNull()) {
    addRemovalOfAll(block, written);
  } else if (block == Block::switches) {
    addSwitches(written.value);
  } else if (block == Block::controller) {
    addController(written);
  } else {
    addMembers(block, checker_.check(blockShape(block), *written.key, written.value));
  }
}

void PatchResolver::addStep(Block block, KeyList keys, Value patch, Mark mark) {
  patch_.steps.push_back({block, std::move(keys), std::move(patch), mark});
  if (block == Block::switches) {
    noteNames(patch_.steps.back());
  }
}

void PatchResolver::addRemovalOfAll(Block block, const Object::Member& written) {
  const Object& there = model_.block(block);
  if (there.empty()) {
    return;
  }
  if (block != Block::controller) {
    addStep(block, allKeys(there), written.value, written.mark);
    return;
  }
  for (const Field& field : blockShape(block).fields) {
    if (field.startOnly && there.find(field.name) != nullptr) {
      checker_.fail(written.value.mark(),
                    "null removes " + quote(field.name) +
                        ", which counts at the start alone, expected only what can change");
    }
  }
  addStep(block, oneKey(makeText("")), written.value, written.mark);
}

void PatchResolver::addController(const Object::Member& written) {
  Value checked = checker_.check(blockShape(Block::controller), *written.key, written.value);
  addStep(Block::controller, oneKey(makeText("")), std::move(checked), written.mark);
}

void PatchResolver::addMembers(Block block, const Value& checked) {
  if (block == Block::entities) {
    checkEntities(checked.object());
  }
  for (const Object::Member& member : checked.object()) {
    const bool isThere = model_.find(block, *member.key) != nullptr;
    if (block == Block::services && isThere) {
      checkService(member);
    }
    if (isThere || !member.value.isNull()) {
      addStep(block, oneKey(member.key), member.value, member.mark);
    }
  }
}

void PatchResolver::checkService(const Object::Member& service) const {
  if (!service.value.isObject()) {
    return;
  }
  const Object::Member* proxy = service.value.object().member("proxy");
  if (proxy != nullptr) {
    checker_.fail(proxy->mark, "\"proxy\" of the service " + quote(*service.key) +
                                   ", which is there already, expected it only for a new one");
  }
}

void PatchResolver::addSwitches(const Value& written) {
  if (!written.isObject()) {
    checker_.check(blockShape(Block::switches), blockName(Block::switches), written);
    return;
  }
  for (const Object::Member& member : written.object()) {
    addSwitch(member);
  }
}

void PatchResolver::addSwitch(const Object::Member& written) {
  Value checked = checker_.check(*blockShape(Block::switches).member, *written.key, written.value);
  const std::optional<std::uint64_t> id = systemIdNumber(*written.key);
  if (id && model_.find(Block::switches, systemIdText(*id)) == nullptr) {
    if (!checked.isNull()) {
      addNewSwitches(*id, written, checked);
    }
    return;
  }
  KeyList keys = targets(written);
  if (checked.isObject()) {
    if (const Object::Member* count = checked.object().member("count")) {
      checker_.fail(count->mark,
                    "\"count\" of switches that are there already, expected it only "
                    "with the first id of a new run");
    }
  }
  addStep(Block::switches, std::move(keys), std::move(checked), written.mark);
}

void PatchResolver::addNewSwitches(std::uint64_t first, const Object::Member& written,
                                   const Value& checked) {
  Value body = checked;
  body.mutableObject().erase("count");
  const Value* counted = checked.find("count");
  if (counted != nullptr && counted->isNull()) {
    counted = nullptr;
  }
  const std::uint64_t count =
      counted == nullptr ? 1 : static_cast<std::uint64_t>(counted->number());
  if (kSystemIds - first < count) {
    checker_.fail(counted->mark(), "a run beyond ff:ff:ff:ff:ff:ff, expected at most " +
                                       std::to_string(kSystemIds - first) + " switches here");
  }
  if (model_.block(Block::switches).size() + newSwitches_.size() + count > kMaxSwitches) {
    checker_.fail(written.mark,
                  "too many switches, expected at most " + std::to_string(kMaxSwitches));
  }
  const Value* name = counted == nullptr ? nullptr : nameToNumber(body);
  std::vector<Text> keys;
  for (std::uint64_t at = 0; at < count; ++at) {
    Text id = makeText(systemIdText(first + at));
    if (model_.find(Block::switches, *id) != nullptr || !newSwitches_.insert(*id).second) {
      checker_.fail(
          written.mark,
          "the switch " + *id + " is there already, expected ids and runs that do not overlap");
    }
    if (name == nullptr) {
      keys.push_back(std::move(id));
      continue;
    }
    Value numbered = body;
    setNumberedName(numbered, *name, at + 1);
    addStep(Block::switches, oneKey(id), std::move(numbered), written.mark);
  }
  if (name == nullptr) {
    addStep(Block::switches, std::make_shared<const std::vector<Text>>(std::move(keys)),
            std::move(body), written.mark);
  }
}

void PatchResolver::setNumberedName(Value& body, const Value& name, std::uint64_t number) const {
  const std::string numbered = numberedName(name.string(), number);
  if (numbered.size() > kMaxNumberedNameLength) {
    checker_.fail(name.mark(), quote(numbered) + " is too long for a name with " +
                                   std::string(kNumberInRun) + ", expected at most " +
                                   std::to_string(kMaxNumberedNameLength) + " bytes");
  }
  body.mutableObject().set("name", Value(std::string_view(numbered), name.mark()));
}

KeyList PatchResolver::targets(const Object::Member& written) const {
  const std::string& key = *written.key;
  if (const std::optional<std::string> id = canonicalSystemId(key)) {
    return oneKey(model_.block(Block::switches).member(*id)->key);
  }
  if (purpose_ == Purpose::start) {
    checker_.key(Shape::Key::systemId, written.key, written.mark);
  }
  const auto named = model_.switchByName_.find(key);
  if (named != model_.switchByName_.end()) {
    return oneKey(named->second);
  }
  KeyList matching = isGlob(key) && key.size() <= kMaxTextLength ? matches(key) : nullptr;
  if (matching == nullptr || matching->empty()) {
    failNoMatch(written);
  }
  return matching;
}

KeyList PatchResolver::matches(const std::string& pattern) const {
  KeyList& known = model_.matches_[pattern];
  if (known == nullptr) {
    // Ids are kept in lower case and match in either.
    std::string idPattern = pattern;
    std::transform(idPattern.begin(), idPattern.end(), idPattern.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; });
    std::vector<Text> keys;
    for (const Object::Member& member : model_.block(Block::switches)) {
      const Value* name = member.value.find("name");
      if (globMatches(idPattern, *member.key) ||
          (name != nullptr && globMatches(pattern, name->string()))) {
        keys.push_back(member.key);
      }
    }
    known = std::make_shared<const std::vector<Text>>(std::move(keys));
  }
  return known;
}

void PatchResolver::failNoMatch(const Object::Member& written) const {
  std::vector<std::string_view> names;
  for (const Object::Member& member : model_.block(Block::switches)) {
    if (const Value* name = member.value.find("name")) {
      names.push_back(name->string());
    }
  }
  const std::string_view meant = closest(*written.key, names);
  checker_.fail(written.mark,
                quote(*written.key) +
                    " matches no switch, expected an id, or a display name or shell pattern of "
                    "switches that are there" +
                    (meant.empty() ? "" : "; did you mean " + quote(meant) + "?"));
}

void PatchResolver::noteNames(const Step& step) {
  const Value* name = step.patch.find("name");
  if (name == nullptr && !step.patch.isNull()) {
    return;
  }
  Naming naming;
  if (name != nullptr && name->isString() && !name->string().empty()) {
    naming = {name->string(), name->mark()};
  }
  for (const Text& key : *step.keys) {
    if (namings_.insert_or_assign(*key, naming).second) {
      named_.push_back(key);
    }
  }
}

void PatchResolver::checkNames() const {
  std::unordered_set<std::string_view> taken;
  for (const Text& id : named_) {
    const Naming& naming = namings_.at(*id);
    if (!naming.name) {
      continue;
    }
    const auto owner = model_.switchByName_.find(*naming.name);
    const bool keptByOther = owner != model_.switchByName_.end() && *owner->second != *id &&
                             !namings_.contains(*owner->second);
    if (keptByOther || !taken.insert(*naming.name).second) {
      checker_.fail(naming.mark, "the display name " + quote(*naming.name) + " of " + *id +
                                     " is another switch's too, expected unique names");
    }
  }
}

void PatchResolver::checkEntities(const Object& changed) const {
  for (const Object::Member& entity : changed) {
    if (!entity.value.isNull()) {
      checkEntity(entity, changed);
    }
  }
}

const Value* PatchResolver::entityAfter(std::string_view path, const Object& changed) const {
  const Value* value = changed.find(path);
  if (value == nullptr) {
    value = model_.find(Block::entities, path);
  }
  return value == nullptr || value->isNull() ? nullptr : value;
}

void PatchResolver::checkEntity(const Object::Member& entity, const Object& changed) const {
  const std::string& path = *entity.key;
  const auto failBelow = [&](std::string_view above, std::string_view below) {
    checker_.fail(entity.mark, "the entity " + quote(above) + " has " + quote(below) +
                                   " below it, expected an Orm::Dir there");
  };
  for (std::size_t at = path.rfind('/'); at != 0; at = path.rfind('/', at - 1)) {
    const std::string_view above = std::string_view(path).substr(0, at);
    const Value* type = entityAfter(above, changed);
    if (type != nullptr && type->string() != kDirectoryType) {
      failBelow(above, path);
    }
  }
  if (entity.value.string() == kDirectoryType) {
    return;
  }
  const std::string below = path + "/";
  for (auto at = model_.entityPaths_.lower_bound(below);
       at != model_.entityPaths_.end() && at->starts_with(below); ++at) {
    if (entityAfter(*at, changed) != nullptr) {
      failBelow(path, *at);
    }
  }
}

}  // namespace Fabric
