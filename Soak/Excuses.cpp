#include "Soak/Excuses.h"

#include <algorithm>

#include "Fabric/GroupView.h"
#include "Fabric/ServiceStatusView.h"
#include "Fabric/ServiceView.h"
#include "Fabric/SwitchView.h"

namespace Soak {

using Controller::SystemId;
using Fabric::Block;
using Fabric::GroupView;
using Fabric::Model;
using Fabric::Object;
using Fabric::ServiceStatusView;
using Fabric::ServiceView;
using Fabric::SwitchView;
using Fabric::Value;

namespace {

/// A change of such a status decides nothing.
bool isSilent(const Value* status) {
  if (status == nullptr) return false;
  const ServiceStatusView view(status);
  return !view.version() || !view.reported();
}

}  // namespace

void Excuses::start(const Model& model) {
  lookAtServices(model);
  lookAtInactive(model);
  for (const Object::Member& known : model.block(Block::switches)) {
    lookAtUnreported(SystemId::ofName(*known.key), SwitchView(&known.value));
  }
}

void Excuses::patchComes(const Model& model, const Fabric::Patch& patch) {
  look(model, patch);
  before_.push_back(model.block(Block::services));
}

void Excuses::patchCame(const Model& model, const Fabric::Patch& patch) {
  before_.pop_back();
  look(model, patch);
}

void Excuses::look(const Model& model, const Fabric::Patch& patch) {
  bool services = false;
  for (const Fabric::Step& step : patch.steps) {
    if (step.block == Block::services) {
      services = true;
      for (const Fabric::Text& key : *step.keys) lookAtName(key, step.patch);
      if (step.patch.find("enabled") != nullptr) lookAtInactive(model);
      for (const Fabric::Text& key : *step.keys) {
        lookAtPublishFilters(model.find(Block::services, *key), step.patch);
      }
    }
    if (step.block == Block::entities && step.patch.isNull()) {
      for (const Fabric::Text& key : *step.keys) entitiesLost_.insert(*key);
    }
    if (step.block != Block::switches) continue;
    for (const Fabric::Text& key : *step.keys) lookAtSwitch(model, key, step.patch);
  }
  if (services) lookAtServices(model);
}

void Excuses::lookAtSwitch(const Model& model, const Fabric::Text& key, const Value& patch) {
  const SystemId systemId = SystemId::ofName(*key);
  const Value* const known = model.find(Block::switches, *key);
  if (known == nullptr || !SwitchView(known).connected()) undecided_.erase(systemId);
  if (patch.isNull() || known == nullptr) return;
  lookAtUnreported(systemId, SwitchView(known));
  if (patch.find("reachable") != nullptr) undecided_.insert(systemId);
  if (patch.find("mount") != nullptr) otherOutcomes_.insert(systemId);
  const Value* const statuses = patch.find("services");
  if (statuses == nullptr) return;
  if (!statuses->isObject()) {
    undecided_.insert(systemId);
    return;
  }
  for (const Object::Member& status : statuses->object()) {
    if (isSilent(SwitchView(known).services().find(*status.key))) undecided_.insert(systemId);
  }
}

/// What is negotiated and not reported counts when something else decides.
void Excuses::lookAtUnreported(const SystemId& systemId, const SwitchView& view) {
  if (!view.connected()) return;
  for (const Object::Member& status : view.services()) {
    if (!ServiceStatusView(&status.value).reported()) undecided_.insert(systemId);
  }
}

void Excuses::lookAtInactive(const Model& model) {
  for (const Object::Member& known : model.block(Block::switches)) {
    if (SwitchView(&known.value).inactive()) undecided_.insert(SystemId::ofName(*known.key));
  }
}

void Excuses::lookAtPublishFilters(const Value* service, const Value& patch) {
  const Value* const publish = patch.find("publish");
  const Value* const groups = publish == nullptr ? nullptr : publish->find("groups");
  const auto known = ServiceView(service).publish();
  if (groups == nullptr || !groups->isObject() || !known) return;
  for (const Object::Member& group : groups->object()) {
    const bool touched =
        group.value.find("systems") != nullptr || group.value.find("versions") != nullptr;
    const Value* const body = known->groups().find(*group.key);
    if (!touched || body == nullptr) continue;
    for (const Object::Member& dir : GroupView(body).dirs()) {
      directoriesWithOtherFilters_.insert(*dir.key);
    }
  }
}

void Excuses::lookAtName(const Fabric::Text& key, const Value& patch) {
  for (const std::string_view block : {"mount", "publish"}) {
    const Value* const body = patch.find(block);
    if (body == nullptr || body->find("serviceName") == nullptr) continue;
    renamed_.insert(*key);
    renamed_.insert("");
  }
}

void Excuses::lookAtServices(const Model& model) {
  std::set<std::string> published;
  for (const Object::Member& service : model.block(Block::services)) {
    const ServiceView view(&service.value);
    if (const auto mount = view.mount()) {
      lookAtLettingGo(*service.key, *mount);
      std::set<std::string_view> mounted;
      for (const Object::Member& group : mount->groups()) {
        for (const Object::Member& path : GroupView(&group.value).paths()) {
          if (!mounted.insert(*path.key).second) mountNamedTwice(*service.key, *mount, *path.key);
        }
      }
    }
    if (const auto publish = view.publish()) {
      for (const Object::Member& group : publish->groups()) {
        for (const Object::Member& path : GroupView(&group.value).paths()) {
          if (!published.insert(*path.key).second) publicationsNamedTwice_.insert(*path.key);
        }
        for (const Object::Member& path : GroupView(&group.value).dirs()) {
          if (!published.insert(*path.key).second) publicationsNamedTwice_.insert(*path.key);
        }
      }
    }
  }
}

/// Paths that another group of the service had before a patch that is being applied.
void Excuses::lookAtLettingGo(std::string_view service, const Fabric::ServiceBlockView& mount) {
  for (const Object& before : before_) {
    const auto was = ServiceView(before.find(service)).mount();
    if (!was) continue;
    for (const Object::Member& group : mount.groups()) {
      const auto hadAnother = [&](const std::string& path) {
        return std::any_of(was->groups().begin(), was->groups().end(), [&](const auto& other) {
          return *other.key != *group.key && GroupView(&other.value).paths().find(path);
        });
      };
      for (const Object::Member& path : GroupView(&group.value).paths()) {
        if (hadAnother(*path.key)) mountNamedTwice(service, mount, *path.key);
      }
    }
  }
}

void Excuses::mountNamedTwice(std::string_view service, const Fabric::ServiceBlockView& mount,
                              const std::string& path) {
  mountsNamedTwice_.insert({std::string(mount.serviceName(service)), path});
  mountsNamedTwice_.insert({std::string(service), path});
}

void Excuses::mountMeddledWith(const SystemId& systemId, bool ended) {
  otherOutcomes_.insert(systemId);
  if (ended) undecided_.insert(systemId);
}

}  // namespace Soak
