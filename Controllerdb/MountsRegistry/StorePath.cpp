#include "Controllerdb/MountsRegistry/StorePath.h"

namespace Controller {

StorePath::StorePath(std::string_view path) {
  Fennix::eachComponent(path, [this](std::string_view component) {
    components_.emplace_back(component);
    return true;
  });
}

Orm::Ptr<Orm::Entity> StorePath::lookup(const Fennix::Dir& root) const {
  const Orm::Entity* found = &root;
  for (const Orm::String& component : components_) {
    const auto* const dir = dynamic_cast<const Fennix::Dir*>(found);
    const Orm::Ptr<Orm::Entity>* const child = dir ? dir->entity().find(component) : nullptr;
    if (!child) return nullptr;
    found = child->get();
  }
  return const_cast<Orm::Entity*>(found);
}

}  // namespace Controller
