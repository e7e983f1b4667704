#include "Soak/ChangeMaker.h"
#include "Soak/Tree.h"

// What comes new into a document.

namespace Soak {

Fabric::Value ChangeMaker::newMountBlock(std::string_view service) {
  Object block;
  if (!random_.chance(5)) block.set("generation", Value(names_.generations.front()));
  if (random_.chance(8)) block.set("serviceName", random_.coin() ? Value("") : Value(service));
  if (random_.chance(10)) block.set("status", Value(false));
  Object groups;
  for (const std::string& group : names_.groups) {
    if (groups.empty() || random_.chance(3)) groups.set(group, newMountGroup(group));
  }
  block.set("groups", Value(std::move(groups)));
  return Value(std::move(block));
}

Fabric::Value ChangeMaker::newPublishBlock(std::string_view service) {
  Object block;
  if (!random_.chance(5)) block.set("generation", Value(names_.generations.front()));
  if (random_.chance(8)) block.set("serviceName", random_.coin() ? Value("") : Value(service));
  if (random_.chance(10)) block.set("status", Value(false));
  if (random_.coin()) block.set("ready", Value(true));
  Object groups;
  for (const std::string& group : names_.groups) {
    if (groups.empty() || random_.chance(3)) groups.set(group, newPublishGroup(group));
  }
  block.set("groups", Value(std::move(groups)));
  return Value(std::move(block));
}

/// Every other path is mostly of a group's own: in two groups of a service, which of them has it
/// depends on what came first, and less can be said of it.
bool ChangeMaker::mayName(std::string_view group, std::size_t path) {
  const bool first = group == names_.groups.front();
  return (path % 2 == 0) == first ? !random_.chance(3) : random_.chance(10);
}

Fabric::Value ChangeMaker::newMountGroup(std::string_view name) {
  Object group;
  if (random_.chance(4)) group.set("preserve", Value(true));
  if (random_.chance(3)) group.set("systems", someSystems());
  if (random_.chance(3)) group.set("versions", someVersions());
  Object paths;
  for (std::size_t at = 0; at != names_.mounts.size(); ++at) {
    if (mayName(name, at)) paths.set(names_.mounts[at].path, newPath(names_.mounts[at]));
  }
  group.set("paths", Value(std::move(paths)));
  return Value(std::move(group));
}

Fabric::Value ChangeMaker::newPublishGroup(std::string_view name) {
  Object group;
  if (random_.chance(3)) group.set("systems", someSystems());
  if (random_.chance(3)) group.set("versions", someVersions());
  Object paths;
  for (std::size_t at = 0; at != names_.publications.size(); ++at) {
    const Names::Path& path = names_.publications[at];
    if (mayName(name, at)) paths.set(path.path, newPublication(path));
  }
  group.set("paths", Value(std::move(paths)));
  Object dirs;
  for (std::size_t at = 0; at != names_.directories.size(); ++at) {
    const Names::Path& path = names_.directories[at];
    if (mayName(name, at)) dirs.set(path.path, newDirectory(path));
  }
  group.set("dirs", Value(std::move(dirs)));
  return Value(std::move(group));
}

Fabric::Value ChangeMaker::newPath(const Names::Path& path) {
  Object object;
  object.set("type", Value(path.type));
  object.set("flags", Value(path.more));
  object.set("target", Value(path.target));
  return Value(std::move(object));
}

Fabric::Value ChangeMaker::newPublication(const Names::Path& path) {
  return tree({{"remote", Value(path.more)}, {"type", Value(path.type)}});
}

Fabric::Value ChangeMaker::newDirectory(const Names::Path& path) {
  return tree({{"remote", Value(path.more)},
               {"type", Value(path.type)},
               {"ready", Value(!random_.chance(3))}});
}

Fabric::Value ChangeMaker::someSystems() {
  const bool list = random_.coin();
  Value::Array ids;
  Object members;
  for (std::size_t left = random_.below(4); left != 0; --left) {
    const std::string id = someId();
    if (members.find(id)) continue;
    ids.emplace_back(id);
    members.set(id, Value(!random_.chance(5)));
  }
  return list ? Value(std::move(ids)) : Value(std::move(members));
}

Fabric::Value ChangeMaker::someVersions() {
  const bool list = random_.coin();
  Value::Array versions;
  Object members;
  for (std::size_t version = 0; version != 4; ++version) {
    if (!random_.chance(3)) continue;
    versions.push_back(whole(version));
    members.set(std::to_string(version), Value(!random_.chance(5)));
  }
  return list ? Value(std::move(versions)) : Value(std::move(members));
}

}  // namespace Soak
