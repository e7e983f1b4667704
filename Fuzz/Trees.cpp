#include "Fuzz/Trees.h"

#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>

#include "Fabric/InputError.h"
#include "Fabric/Object.h"
#include "Fabric/Reader.h"
#include "Fuzz/Property.h"

namespace Fuzz {

namespace {

constexpr std::size_t kSmall = 20'000;  // nodes

/// Takes the tree's nodes from what is left; false when there are more.
bool takeNodes(const Fabric::Value& tree, std::size_t& left) {
  if (left == 0) return false;
  --left;
  if (tree.isArray()) {
    for (const Fabric::Value& element : tree.array()) {
      if (!takeNodes(element, left)) return false;
    }
  }
  if (tree.isObject()) {
    for (const Fabric::Object::Member& member : tree.object()) {
      if (!takeNodes(member.value, left)) return false;
    }
  }
  return true;
}

}  // namespace

bool isSmall(const Fabric::Value& tree) {
  std::size_t left = kSmall;
  return takeNodes(tree, left);
}

nlohmann::json jsonOf(const Fabric::Value& tree) {
  switch (tree.kind()) {
    case Fabric::Value::Kind::null:
      return nullptr;
    case Fabric::Value::Kind::boolean:
      return tree.boolean();
    case Fabric::Value::Kind::number:
      return tree.number();
    case Fabric::Value::Kind::string:
      return tree.string();
    case Fabric::Value::Kind::array: {
      auto elements = nlohmann::json::array();
      for (const Fabric::Value& element : tree.array()) elements.push_back(jsonOf(element));
      return elements;
    }
    case Fabric::Value::Kind::object: {
      auto members = nlohmann::json::object();
      for (const Fabric::Object::Member& member : tree.object()) {
        members[*member.key] = jsonOf(member.value);
      }
      return members;
    }
  }
  return nullptr;
}

void requireRoundTrip(const Fabric::Value& tree) {
  const std::string text = Fabric::toJson(tree);
  try {
    require(Fabric::read("written.json", text) == tree, "a tree is what was written of it", text);
  } catch (const Fabric::InputError& error) {
    require(false, "what is written of a tree can be read", error.what());
  }
}

}  // namespace Fuzz
