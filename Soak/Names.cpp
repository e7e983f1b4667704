#include "Soak/Names.h"

#include <algorithm>

#include "Fabric/ControllerView.h"
#include "Fabric/GroupView.h"
#include "Fabric/PathView.h"
#include "Fabric/ServiceView.h"

namespace Soak {

using Fabric::Block;
using Fabric::GroupView;
using Fabric::Model;
using Fabric::Object;
using Fabric::PathView;
using Fabric::ServiceBlockView;
using Fabric::ServiceView;

namespace {

void add(std::vector<std::string>& names, std::string_view name) {
  if (std::find(names.begin(), names.end(), name) == names.end()) names.emplace_back(name);
}

void add(std::vector<Names::Path>& paths, std::string_view path, const PathView& view,
         std::string_view more) {
  const auto same = [path](const Names::Path& known) { return known.path == path; };
  if (std::none_of(paths.begin(), paths.end(), same)) {
    paths.push_back({std::string(path), std::string(view.type()), std::string(more),
                     std::string(view.target())});
  }
}

void addMounts(Names& names, const ServiceBlockView& block) {
  add(names.generations, block.generation());
  for (const Object::Member& group : block.groups()) {
    add(names.groups, *group.key);
    for (const Object::Member& path : GroupView(&group.value).paths()) {
      const PathView view(&path.value);
      add(names.mounts, *path.key, view, view.flags());
    }
  }
}

void addPublications(Names& names, const ServiceBlockView& block) {
  add(names.generations, block.generation());
  for (const Object::Member& group : block.groups()) {
    add(names.groups, *group.key);
    for (const Object::Member& path : GroupView(&group.value).paths()) {
      const PathView view(&path.value);
      add(names.publications, *path.key, view, view.remote());
    }
    for (const Object::Member& dir : GroupView(&group.value).dirs()) {
      const PathView view(&dir.value);
      add(names.directories, *dir.key, view, view.remote());
    }
  }
}

}  // namespace

Names Names::ofRandomFabrics() {
  return {.services = {"Topology", "Bgp", "Acl", "Bgp-Proxy"},
          .groups = {"default", "more"},
          .generations = {"gen-1", "gen-2", ""},
          .attrlogs = {"standby", "archive"},
          .mounts = {{"topology/status", "Topology::Status", "r", ""},
                     {"bgp", "Bgp::Peers", "", ""},
                     {"bgp/deep/list", "Bgp::List", "r", ""},
                     {"acl/hits", "Acl::Hits", "", "/mirror/acl"},
                     {"acl/rules", "Acl::Rules", "", ""}},
          .publications = {{"/pub/topology", "Topology::Config", "topology/config", ""},
                           {"/pub/bgp", "Bgp::Config", "bgp/config", ""},
                           {"/pub/deep/acl", "Acl::Config", "acl/config", ""}},
          .directories = {{"/each/topology", "Topology::Mine", "topology/mine", ""},
                          {"/each/bgp", "Bgp::Mine", "bgp/mine", ""}}};
}

Names Names::of(const Model& model) {
  Names names;
  add(names.generations, Fabric::ControllerView(model.block(Block::controller)).leader());
  for (const Object::Member& service : model.block(Block::services)) {
    add(names.services, *service.key);
    const ServiceView view(&service.value);
    if (const auto mount = view.mount()) addMounts(names, *mount);
    if (const auto publish = view.publish()) addPublications(names, *publish);
  }
  for (const Object::Member& connection : model.block(Block::attrlog)) {
    add(names.attrlogs, *connection.key);
  }
  add(names.services, "Soak");
  add(names.groups, "soak");
  add(names.generations, "soak");
  add(names.generations, "");
  add(names.attrlogs, "soak");
  add(names.mounts, "soak/status", PathView(nullptr), "");
  add(names.publications, "/soak/config", PathView(nullptr), "soak/config");
  return names;
}

}  // namespace Soak
