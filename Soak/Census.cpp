#include "Soak/Census.h"

#include <algorithm>

#include "Controllerdb/MountsRegistry/ProxyServiceName.h"
#include "Fabric/ControllerView.h"
#include "Fabric/GroupView.h"
#include "Fabric/PathView.h"
#include "Fabric/ServiceView.h"
#include "Fabric/SwitchView.h"
#include "Platform/Fennix/Dir.h"

namespace Soak {

using Controller::MountState;
using Controller::ServiceMountStatus;
using Fabric::Block;
using Fabric::Object;
using Orm::Ptr;
using Orm::String;

namespace {

bool isNumber(std::string_view text) {
  return !text.empty() &&
         (text == "inf" || text.find_first_not_of("0123456789.e+-") == std::string_view::npos);
}

bool isState(std::string_view text) {
  for (std::size_t state = 0; state < Controller::kMountStates; ++state) {
    if (text == Controller::name(static_cast<MountState>(state))) return true;
  }
  return false;
}

}  // namespace

bool Census::has(Kind kind, std::string_view text) const {
  switch (kind) {
    case Kind::number:
      return isNumber(text);
    case Kind::flag:
      return text == "true" || text == "false";
    case Kind::state:
      return isState(text);
    default:
      return names_[static_cast<std::size_t>(kind)].contains(text);
  }
}

void Census::add(Kind kind, std::string_view name) {
  Names& names = names_[static_cast<std::size_t>(kind)];
  if (!names.contains(name)) names.emplace(name);
}

void Census::addService(std::string_view name) {
  add(Kind::service, name);
  add(Kind::service, Controller::realServiceName(String(name)).view());
}

void Census::addTarget(std::string_view path) {
  std::string canonical;
  Fennix::eachComponent(path, [&](std::string_view component) {
    add(Kind::component, component);
    canonical.append("/").append(component);
    return true;
  });
  add(Kind::target, path);
  add(Kind::target, canonical);
}

void Census::begin() {
  for (Names& names : names_) names.clear();
  look();
}

void Census::look() {
  add(Kind::generation, "");
  add(Kind::service, "");
  add(Kind::remote, "");
  // What a filter that is not there is called.
  add(Kind::group, "None");
  lookAtSwitches();
  lookAtServices();
  lookAtMounts();
  lookAtStatuses(*simulation_.world().mountStatusDir());
  lookAtStatuses(*simulation_.world().proxyMountStatusDir());
  lookAtPublications();
}

// ---- the document

void Census::lookAtSwitches() {
  const Fabric::Model& model = simulation_.model();
  for (const Object::Member& known : model.block(Block::switches)) {
    const Fabric::SwitchView view(&known.value);
    add(Kind::systemId, *known.key);
    add(Kind::display, view.name().empty() ? std::string_view(*known.key) : view.name());
    for (const Object::Member& service : view.services()) add(Kind::service, *service.key);
  }
  add(Kind::generation, Fabric::ControllerView(model.block(Block::controller)).leader());
  for (const Object::Member& one : model.block(Block::attrlog)) add(Kind::connection, *one.key);
}

void Census::lookAtServices() {
  for (const Object::Member& service : simulation_.model().block(Block::services)) {
    const Fabric::ServiceView view(&service.value);
    addService(*service.key);
    if (const auto mount = view.mount()) {
      lookAtBlock(*service.key, *mount);
      for (const Object::Member& group : mount->groups()) lookAtMountPaths(group.value);
    }
    if (const auto publish = view.publish()) {
      lookAtBlock(*service.key, *publish);
      for (const Object::Member& group : publish->groups()) lookAtPublishedPaths(group.value);
    }
  }
}

void Census::lookAtBlock(std::string_view key, const Fabric::ServiceBlockView& block) {
  addService(block.serviceName(key));
  add(Kind::generation, block.generation());
  for (const Object::Member& group : block.groups()) {
    add(Kind::group, *group.key);
    const Object* const systems = Fabric::GroupView(&group.value).systems();
    if (systems == nullptr) continue;
    for (const Object::Member& system : *systems) add(Kind::systemId, *system.key);
  }
}

void Census::lookAtMountPaths(const Fabric::Value& group) {
  const std::string_view registryDir =
      simulation_.world().mountsRegistry()->registryDirPath().view();
  for (const Object::Member& path : Fabric::GroupView(&group).paths()) {
    const Fabric::PathView view(&path.value);
    add(Kind::path, *path.key);
    add(Kind::type, view.type());
    addTarget(view.target().empty() ? std::string(registryDir) + '/' + *path.key
                                    : std::string(view.target()));
  }
}

void Census::lookAtPublishedPaths(const Fabric::Value& group) {
  const Fabric::GroupView view(&group);
  for (const Object* const paths : {&view.paths(), &view.dirs()}) {
    for (const Object::Member& path : *paths) {
      add(Kind::local, *path.key);
      add(Kind::type, Fabric::PathView(&path.value).type());
      add(Kind::remote, Fabric::PathView(&path.value).remote());
    }
  }
}

// ---- what is there

void Census::lookAtMounts() {
  for (const auto& entry : simulation_.world().mountsRegistry()->mountEntry()) {
    add(Kind::path, entry->name().view());
    add(Kind::type, entry->ormType().view());
    addTarget(entry->targetPath().view());
    for (const Ptr<Controller::Mounter>& mounter : entry->mounter()) {
      addService(mounter->serviceName().view());
      add(Kind::group, mounter->groupName().view());
      // A mounter of a service that was renamed stays, and so does its group.
      const auto& filter = mounter->mountGroupConfig()->systemFilter();
      if (!filter) continue;
      for (const auto& system : filter->includedSystem()) add(Kind::systemId, system.key.view());
    }
  }
  for (const Ptr<Controller::Peer>& peer : simulation_.world().peerTable()->peer()) {
    add(Kind::systemId, peer->name().view());
  }
  if (!simulation_.machines()) return;
  for (const auto& machine : simulation_.machines()->mountsRegistrySm()->mountsRegistryEntrySm()) {
    add(Kind::path, machine->entryName().view());
    for (const auto& record : machine->mountSmDataSm()) {
      const String system = record->systemId().stringValue();
      add(Kind::systemId, system.view());
      // Out-of-band management has forgotten its name.
      add(Kind::display, system.view());
    }
  }
}

void Census::lookAtStatuses(const Fennix::Dir& statuses) {
  for (const auto& slot : statuses.entity()) {
    const auto status = Orm::dynamicCast<ServiceMountStatus>(slot.value);
    if (!status) continue;
    addService(status->serviceName().view());
    for (const Ptr<Controller::SystemStatus>& system : status->systemStatus()) {
      add(Kind::systemId, system->name().view());
      for (const auto& group : system->serviceMountGroupStatus()) {
        add(Kind::group, group->groupName().view());
      }
    }
  }
}

void Census::lookAtPublications() {
  for (const auto& entry : simulation_.world().mountsRegistry()->publishEntry()) {
    add(Kind::local, entry->name().view());
    addService(entry->serviceName().view());
    add(Kind::remote, entry->remotePath().view());
    add(Kind::type, entry->type().view());
  }
  for (const auto& system : simulation_.world().publishStatus()->system()) {
    add(Kind::systemId, system->systemId().stringValue().view());
  }
}

}  // namespace Soak
