#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "Fabric/Checker.h"
#include "Fabric/Model.h"
#include "Fabric/Object.h"
#include "Fabric/Patch.h"
#include "Fabric/Value.h"

namespace Fabric {

/// Checks one text against a model and makes the steps of it: what Model::resolve does. A start is
/// resolved against an empty model. Names and patterns mean the switches that the model has before
/// the patch, whatever the patch does to them on its way. Used once.
class PatchResolver {
 public:
  PatchResolver(const Model& model, std::string_view file, Purpose purpose);

  Patch resolve(const Value& tree);

 private:
  /// The display name that a switch has after the patch; nothing when it has none or is gone.
  struct Naming {
    std::optional<std::string> name;
    Mark mark;
  };

  void addBlock(Block block, const Object::Member& written);
  void addRemovalOfAll(Block block, const Object::Member& written);
  void addController(const Object::Member& written);
  void addMembers(Block block, const Value& checked);
  void checkService(const Object::Member& service) const;

  void addSwitches(const Value& written);
  void addSwitch(const Object::Member& written);
  void addNewSwitches(std::uint64_t first, const Object::Member& written, const Value& checked);
  void setNumberedName(Value& body, const Value& name, std::uint64_t number) const;
  KeyList targets(const Object::Member& written) const;
  KeyList matches(const std::string& pattern) const;
  [[noreturn]] void failNoMatch(const Object::Member& written) const;
  void addStep(Block block, KeyList keys, Value patch, Mark mark);

  void noteNames(const Step& step);
  void checkNames() const;
  void checkEntities(const Object& changed) const;
  void checkEntity(const Object::Member& entity, const Object& changed) const;
  const Value* entityAfter(std::string_view path, const Object& changed) const;

  const Model& model_;
  Checker checker_;
  Purpose purpose_;
  Patch patch_;
  std::unordered_set<std::string> newSwitches_;
  std::vector<Text> named_;
  std::unordered_map<std::string_view, Naming> namings_;
};

}  // namespace Fabric
