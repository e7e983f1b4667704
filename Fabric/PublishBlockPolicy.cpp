#include "Fabric/PublishBlockPolicy.h"

#include "Fabric/CarryMembers.h"
#include "Fabric/FilterCarrier.h"
#include "Fabric/GroupView.h"
#include "Fabric/Object.h"
#include "Fabric/PathView.h"

namespace Fabric {

using Controller::PublishConfig;
using Controller::PublishDir;
using Controller::ServicePublishConfig;
using Controller::ServicePublishGroupConfig;
using Orm::Ptr;
using Orm::String;

namespace {

// What paths and directories are made of does not change: one that is made of something else is
// removed first.

void putPath(ServicePublishGroupConfig& group, const String& path, const PathView& view) {
  const String remote(view.remote());
  const String type(view.type());
  if (const Ptr<PublishConfig> present = group.publishConfig(path)) {
    if (present->remotePath() == remote && present->type() == type) return;
    group.publishConfigDel(path);
  }
  group.publishConfigIs(path, remote, type);
}

void putDir(ServicePublishGroupConfig& group, const String& path, const PathView& view) {
  const String remote(view.remote());
  const String type(view.type());
  if (const Ptr<PublishDir> present = group.publishDir(path)) {
    if (present->remotePath() == remote && present->type() == type) {
      return present->readyToPublishIs(view.ready());
    }
    group.publishDirDel(path);
  }
  const auto dir = Orm::make<PublishDir>(path, type, remote);
  dir->readyToPublishIs(view.ready());
  group.publishDirIs(dir);
}

void carryPaths(ServicePublishGroupConfig& group, const GroupView& after, const Value& patch) {
  carryMembers(
      patch, [&] { group.publishConfigDelAll(); },
      [&](const String& path) { group.publishConfigDel(path); },
      [&](const String& path, const Value&) {
        putPath(group, path, PathView(after.paths().find(path.view())));
      });
}

void carryDirs(ServicePublishGroupConfig& group, const GroupView& after, const Value& patch) {
  carryMembers(
      patch, [&] { group.publishDirDelAll(); },
      [&](const String& path) { group.publishDirDel(path); },
      [&](const String& path, const Value&) {
        putDir(group, path, PathView(after.dirs().find(path.view())));
      });
}

/// Paths and directories, in the order in which the patch has them.
void carryPublications(ServicePublishGroupConfig& group, const GroupView& after,
                       const Object::Member& member) {
  if (*member.key == "paths") {
    carryPaths(group, after, member.value);
  } else if (*member.key == "dirs") {
    carryDirs(group, after, member.value);
  }
}

void addGroup(ServicePublishConfig& config, const String& name, const Value& after) {
  const GroupView view(&after);
  const auto group = Orm::make<ServicePublishGroupConfig>(name);
  setFilters(*group, view);
  config.publishGroupConfigIs(group);
  for (const Object::Member& member : after.object()) carryPublications(*group, view, member);
}

void changeGroup(ServicePublishGroupConfig& group, const GroupView& after, const Value& patch) {
  for (const Object::Member& member : patch.object()) {
    if (*member.key == "systems") {
      carrySystems(group, after, member.value);
    } else if (*member.key == "versions") {
      carryVersions(group, after, member.value);
    } else {
      carryPublications(group, after, member);
    }
  }
}

void carryGroups(ServicePublishConfig& config, const ServiceBlockView& after, const Value& patch) {
  carryMembers(
      patch, [&] { config.publishGroupConfigDelAll(); },
      [&](const String& name) { config.publishGroupConfigDel(name); },
      [&](const String& name, const Value& groupPatch) {
        const Value& group = *after.groups().find(name.view());
        if (const Ptr<ServicePublishGroupConfig> present = config.publishGroupConfig(name)) {
          changeGroup(*present, GroupView(&group), groupPatch);
        } else {
          addGroup(config, name, group);
        }
      });
}

}  // namespace

Ptr<ServicePublishConfig> PublishBlockPolicy::build(const String& service,
                                                    const ServiceBlockView& after) {
  auto config = Orm::make<ServicePublishConfig>();
  config->genIdIs(String(after.generation()));
  config->serviceNameIs(String(after.serviceName(service)));
  for (const Object::Member& group : after.groups()) {
    addGroup(*config, String(*group.key), group.value);
  }
  config->publishReadyIs(after.ready());
  return config;
}

void PublishBlockPolicy::change(ServicePublishConfig& config, const String& service,
                                const ServiceBlockView& after, const Text& member,
                                const Value& patch) {
  if (*member == "generation") {
    config.genIdIs(String(after.generation()));
  } else if (*member == "serviceName") {
    config.serviceNameIs(String(after.serviceName(service)));
  } else if (*member == "ready") {
    config.publishReadyIs(after.ready());
  } else if (*member == "groups") {
    carryGroups(config, after, patch);
  }
}

}  // namespace Fabric
