#include "Fabric/MountBlockPolicy.h"

#include "Fabric/CarryMembers.h"
#include "Fabric/FilterCarrier.h"
#include "Fabric/GroupView.h"
#include "Fabric/Object.h"
#include "Fabric/PathView.h"

namespace Fabric {

using Controller::MountConfig;
using Controller::ServiceMountConfig;
using Controller::ServiceMountGroupConfig;
using Orm::Ptr;
using Orm::String;

namespace {

/// Puts a path in. What a path is made of cannot change, so that one that is made of something else
/// is removed first.
void putPath(ServiceMountGroupConfig& group, const String& path, const PathView& view) {
  const String type(view.type());
  const String flags(view.flags());
  const String target(view.target());
  if (const Ptr<MountConfig> present = group.mountConfig(path)) {
    if (present->ormcType() == type && present->mountFlags() == flags &&
        present->targetPath() == target) {
      return;
    }
    group.mountConfigDel(path);
  }
  group.mountConfigIs(path, type, flags, target);
}

void carryPaths(ServiceMountGroupConfig& group, const GroupView& after, const Value& patch) {
  carryMembers(
      patch, [&] { group.mountConfigDelAll(); },
      [&](const String& path) { group.mountConfigDel(path); },
      [&](const String& path, const Value&) {
        putPath(group, path, PathView(after.paths().find(path.view())));
      });
}

void addGroup(ServiceMountConfig& config, const String& name, const GroupView& view) {
  const auto group = Orm::make<ServiceMountGroupConfig>(name);
  group->preserveIs(view.preserve());
  setFilters(*group, view);
  config.mountGroupConfigIs(group);
  for (const Object::Member& path : view.paths()) {
    putPath(*group, String(*path.key), PathView(&path.value));
  }
}

void changeGroup(ServiceMountGroupConfig& group, const GroupView& after, const Value& patch) {
  for (const Object::Member& member : patch.object()) {
    if (*member.key == "preserve") {
      group.preserveIs(after.preserve());
    } else if (*member.key == "systems") {
      carrySystems(group, after, member.value);
    } else if (*member.key == "versions") {
      carryVersions(group, after, member.value);
    } else if (*member.key == "paths") {
      carryPaths(group, after, member.value);
    }
  }
}

void carryGroups(ServiceMountConfig& config, const ServiceBlockView& after, const Value& patch) {
  carryMembers(
      patch, [&] { config.mountGroupConfigDelAll(); },
      [&](const String& name) { config.mountGroupConfigDel(name); },
      [&](const String& name, const Value& groupPatch) {
        const GroupView view(after.groups().find(name.view()));
        if (const Ptr<ServiceMountGroupConfig> present = config.mountGroupConfig(name)) {
          changeGroup(*present, view, groupPatch);
        } else {
          addGroup(config, name, view);
        }
      });
}

}  // namespace

Ptr<ServiceMountConfig> MountBlockPolicy::build(const String& service,
                                                const ServiceBlockView& after) {
  auto config = Orm::make<ServiceMountConfig>();
  config->genIdIs(String(after.generation()));
  config->serviceNameIs(String(after.serviceName(service)));
  for (const Object::Member& group : after.groups()) {
    addGroup(*config, String(*group.key), GroupView(&group.value));
  }
  return config;
}

void MountBlockPolicy::change(ServiceMountConfig& config, const String& service,
                              const ServiceBlockView& after, const Text& member,
                              const Value& patch) {
  if (*member == "generation") {
    config.genIdIs(String(after.generation()));
  } else if (*member == "serviceName") {
    config.serviceNameIs(String(after.serviceName(service)));
  } else if (*member == "groups") {
    carryGroups(config, after, patch);
  }
}

}  // namespace Fabric
