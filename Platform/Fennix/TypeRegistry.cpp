#include "Platform/Fennix/TypeRegistry.h"

#include <functional>
#include <map>
#include <string>

#include "Platform/Fennix/Node.h"

namespace Fennix::TypeRegistry {

namespace {

Orm::Ptr<Orm::Entity> createDir(const Dir& parent, const Orm::String& name) {
  return Orm::make<Dir>(parent, name);
}

std::map<std::string, Factory, std::less<>>& factories() {
  static std::map<std::string, Factory, std::less<>> theFactories{{Dir::kTypeName, createDir}};
  return theFactories;
}

}  // namespace

void typeIs(const char* typeName, Factory factory) {
  factories().insert_or_assign(typeName, factory);
}

Orm::Ptr<Orm::Entity> create(const Orm::String& typeName, const Dir& parent,
                             const Orm::String& name) {
  const auto found = factories().find(typeName.view());
  if (found != factories().end()) return found->second(parent, name);
  return Orm::make<Node>(typeName);
}

}  // namespace Fennix::TypeRegistry
