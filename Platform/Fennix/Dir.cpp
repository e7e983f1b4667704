#include "Platform/Fennix/Dir.h"

#include "Platform/Fennix/TypeRegistry.h"

namespace Fennix {

using Orm::Entity;
using Orm::Ptr;
using Orm::String;

Dir::Dir(const Dir& parent, const String& name) : path_(parent.childPath(name)) {}

String Dir::childPath(std::string_view name) const {
  const std::string_view below = path_ == "/" ? std::string_view() : path_.view();
  return String({below, "/", name});
}

void Dir::entityIs(const String& name, const Ptr<Entity>& entity) {
  Orm::assertThat(entity, "entity");
  if (const Ptr<Entity>* present = entity_.find(name)) leaving(present->get());
  valueIs(entity_, Attr::entity, name, entity);
}

void Dir::entityDel(const String& name) {
  if (const Ptr<Entity>* present = entity_.find(name)) leaving(present->get());
  valueDel(entity_, Attr::entity, name);
}

void Dir::entityDelAll() {
  const Ptr<Dir const> self(this);
  entity_.walk([this](const String& name, const Ptr<Entity>&) { entityDel(name); });
}

void Dir::leaving(const Entity* entity) {
  if (dynamic_cast<const Dir*>(entity)) ++departures_;
}

Ptr<Entity> Dir::createEntity(const String& type, const String& name) {
  if (Ptr<Entity> present = entity(name)) return present;
  Ptr<Entity> created = TypeRegistry::create(type, *this, name);
  entityIs(name, created);
  return created;
}

Ptr<Dir> Dir::createDir(const String& name) {
  if (const Ptr<Entity> present = entity(name)) return Orm::dynamicCast<Dir>(present);
  Ptr<Dir> created = Orm::make<Dir>(*this, name);
  entityIs(name, created);
  return created;
}

Ptr<Entity> Dir::lookup(std::string_view path) const {
  Ptr<Entity> found(const_cast<Dir*>(this));
  eachComponent(path, [&found](std::string_view component) {
    const auto* dir = dynamic_cast<const Dir*>(found.get());
    found = dir ? dir->entity(String(component)) : nullptr;
    return static_cast<bool>(found);
  });
  return found;
}

}  // namespace Fennix
