#include "Fabric/EntityCarrier.h"

namespace Fabric {

using Fennix::Dir;
using Orm::Ptr;
using Orm::String;

namespace {

struct Split {
  std::string_view directory;
  String name;
};

Split split(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string_view::npos) return {{}, String(path)};
  return {path.substr(0, slash), String(path.substr(slash + 1))};
}

}  // namespace

void EntityCarrier::carry(std::string_view path, const Value& before, const Value& after) {
  if (before == after) return;
  if (!before.isNull()) remove(path);
  if (!after.isNull()) add(path, after.string());
}

void EntityCarrier::add(std::string_view path, std::string_view type) {
  const auto [directory, name] = split(path);
  Ptr<Dir> dir = world_.rootDir();
  Fennix::eachComponent(directory, [&dir](std::string_view component) {
    dir = dir->createDir(String(component));
    return static_cast<bool>(dir);
  });
  if (dir) dir->createEntity(String(type), name);
}

void EntityCarrier::remove(std::string_view path) {
  const auto [directory, name] = split(path);
  const auto parent = Orm::dynamicCast<Dir>(world_.rootDir()->lookup(directory));
  if (!parent) return;
  const auto dir = parent->entityAs<Dir>(name);
  if (dir && !dir->entity().empty()) return;
  parent->entityDel(name);
}

}  // namespace Fabric
