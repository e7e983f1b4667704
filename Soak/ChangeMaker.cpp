#include "Soak/ChangeMaker.h"

#include <array>

#include "Fabric/GroupView.h"
#include "Fabric/ServiceView.h"
#include "Soak/Tree.h"

namespace Soak {

using Fabric::Block;
using Fabric::GroupView;
using Fabric::ServiceView;

namespace {

/// The n-th member's key, the empty text of an empty object. O(n).
std::string keyAt(const Fabric::Object& object, std::size_t n) {
  for (const Fabric::Object::Member& member : object) {
    if (n-- == 0) return *member.key;
  }
  return {};
}

constexpr std::size_t kMostSwitches = 400;
constexpr std::string_view kDirType = "Orm::Dir";

}  // namespace

std::vector<Fabric::Value> ChangeMaker::patches(Change change) {
  std::vector<Value> made = changes(change);
  const bool connects =
      change == Change::connection || change == Change::flap || change == Change::switchSet;
  if (!gone_.empty() && connects && !made.empty()) made.insert(made.begin(), directoriesBack());
  return made;
}

std::vector<Fabric::Value> ChangeMaker::patches(Change change, std::string_view service) {
  about_ = service;
  std::vector<Value> made = patches(change);
  about_.clear();
  return made;
}

std::vector<Fabric::Value> ChangeMaker::changes(Change change) {
  const auto one = [](Value patch) {
    return patch.isNull() ? std::vector<Value>() : std::vector<Value>{std::move(patch)};
  };
  const auto ofSwitches = [&](std::string_view member, Value value) {
    const std::string key = someSwitches();
    return key.empty() ? Value() : tree("switches", tree(key, tree(member, std::move(value))));
  };
  switch (change) {
    case Change::connection:
      return one(ofSwitches("connected", Value(random_.coin())));
    case Change::flap:
      return flap();
    case Change::switchSet:
      return one(switchSet());
    case Change::inactive:
      return one(ofSwitches("inactive", Value(random_.coin())));
    case Change::reachable:
      return one(ofSwitches("reachable", Value(random_.coin())));
    case Change::version:
      return one(version());
    case Change::enabled: {
      const std::string name = someService();
      if (name.empty()) return {};
      return one(
          tree("services", tree(name, tree("enabled", random_.chance(4) ? Value("absent")
                                                                        : Value(random_.coin())))));
    }
    case Change::service:
      return one(service());
    case Change::group:
      return one(group());
    case Change::path:
      return one(path());
    case Change::systemFilter:
      return one(systemFilter());
    case Change::versionFilter:
      return one(versionFilter());
    case Change::preserve: {
      const auto chosen = someGroup("mount");
      if (!chosen) return {};
      return one(patchOfGroup(*chosen, "mount", tree("preserve", Value(random_.coin()))));
    }
    case Change::generation:
      return one(block("generation", Value(random_.pick(names_.generations))));
    case Change::leader:
      return one(tree("controller", tree("leader", Value(random_.pick(names_.generations)))));
    case Change::serviceName:
      return one(block("serviceName", random_.coin() ? Value() : Value("")));
    case Change::status:
      return one(block("status", Value(random_.coin())));
    case Change::publication:
      return one(publication());
    case Change::directory:
      return one(directory());
    case Change::ready:
      return one(readiness());
    case Change::entity:
      return one(entity());
    case Change::attrlog:
      return one(attrlog());
    case Change::heartbeat:
      return one(tree("controller", tree("heartbeat", someHeartbeat())));
    case Change::behaviour:
      return one(behaviour());
    case Change::reportState:
    case Change::loseOutcome:
    case Change::vanish:
      return {};
  }
  return {};
}

std::optional<Fault> ChangeMaker::fault(Change change) {
  if (names_.mounts.empty()) return std::nullopt;
  Fault fault;
  switch (change) {
    case Change::reportState:
      fault.kind = Fault::Kind::state;
      break;
    case Change::loseOutcome:
      fault.kind = Fault::Kind::lose;
      break;
    case Change::vanish:
      fault.kind = Fault::Kind::vanish;
      break;
    default:
      return std::nullopt;
  }
  const auto systemId = Controller::SystemId::parse(someSwitch());
  if (!systemId) return std::nullopt;
  fault.systemId = *systemId;
  fault.path = random_.pick(names_.mounts).path;
  fault.state = static_cast<Controller::MountState>(random_.below(Controller::kMountStates));
  return fault;
}

Fault::Notice ChangeMaker::noticeOfService() {
  using Notice = Fault::Notice;
  static constexpr std::array kNotices = {
      Notice::mountEntry,   Notice::publishEntry,          Notice::groupState, Notice::published,
      Notice::publishReady, Notice::initialMountsComplete, Notice::pathPrefix};
  return random_.chance(4) ? random_.pick(kNotices) : Notice::any;
}

Fault::Notice ChangeMaker::noticeOfSwitch() {
  using Notice = Fault::Notice;
  static constexpr std::array kNotices = {Notice::peer, Notice::groupState, Notice::published,
                                          Notice::any};
  return random_.pick(kNotices);
}

// ---- switches

std::string ChangeMaker::someSwitch() {
  const Object& switches = model_.block(Block::switches);
  return switches.empty() ? std::string() : keyAt(switches, random_.below(switches.size()));
}

std::string ChangeMaker::someSwitches() {
  if (random_.chance(8) && !model_.block(Block::switches).empty()) return "*";
  return someSwitch();
}

/// Mostly an id that is there.
std::string ChangeMaker::someId() {
  const std::string known = random_.chance(6) ? std::string() : someSwitch();
  return known.empty() ? freshId() : known;
}

std::string ChangeMaker::freshId() {
  static constexpr char kDigits[] = "0123456789abcdef";
  const std::size_t number = random_.below(16);
  return std::string("02:00:00:00:ff:0") + kDigits[number];
}

std::vector<Fabric::Value> ChangeMaker::flap() {
  const std::string key = someSwitches();
  if (key.empty()) return {};
  std::vector<Value> patches;
  bool connected = random_.coin();
  for (std::size_t left = random_.from(2, 4); left != 0; --left) {
    patches.push_back(tree("switches", tree(key, tree("connected", Value(connected)))));
    connected = !connected;
  }
  return patches;
}

Fabric::Value ChangeMaker::switchSet() {
  const Object& switches = model_.block(Block::switches);
  if (!switches.empty() && random_.coin()) return tree("switches", tree(someSwitch(), Value()));
  const std::string id = freshId();
  if (switches.size() >= kMostSwitches || switches.find(id)) return {};
  return tree("switches", tree(id, newSwitch("")));
}

Fabric::Value ChangeMaker::newSwitch(std::string_view name) {
  Object object;
  if (!name.empty()) object.set("name", Value(name));
  if (!random_.chance(4)) object.set("connected", Value(true));
  if (random_.chance(8)) object.set("inactive", Value(true));
  if (random_.chance(12)) object.set("reachable", Value(false));
  object.set("services", someStatuses());
  if (random_.chance(3)) object.set("mount", someBehaviour());
  return Value(std::move(object));
}

Fabric::Value ChangeMaker::someStatuses() {
  Object statuses;
  for (const std::string& service : names_.services) {
    if (!random_.chance(4)) statuses.set(service, someStatus());
  }
  return Value(std::move(statuses));
}

Fabric::Value ChangeMaker::someStatus() {
  if (!random_.chance(4)) return whole(random_.from(1, 3));
  Object status;
  status.set("enabled", Value(!random_.chance(4)));
  if (!random_.chance(4)) {
    status.set("reported", Value(!random_.chance(4)));
    status.set("negotiated", Value(!random_.chance(4)));
    status.set("version", whole(random_.below(4)));
  }
  return Value(std::move(status));
}

Fabric::Value ChangeMaker::version() {
  const std::string key = someSwitches();
  if (key.empty() || names_.services.empty()) return {};
  const std::string& service = random_.pick(names_.services);
  Value status = random_.chance(5) ? Value() : someStatus();
  return tree("switches", tree(key, tree("services", tree(service, std::move(status)))));
}

Fabric::Value ChangeMaker::someBehaviour() {
  static constexpr std::array<double, 7> kDelays = {0, 0.05, 0.1, 0.1, 1, 20, 250};
  static constexpr std::array<const char*, 5> kOutcomes = {"mounted", "mounted", "mounted",
                                                           "failed", "stalled"};
  Object behaviour;
  behaviour.set("delay", Value(random_.pick(kDelays)));
  behaviour.set("outcome", Value(random_.pick(kOutcomes)));
  if (random_.chance(3) && !names_.mounts.empty()) {
    // One after the other: compilers differ in the order of arguments.
    const std::string& path = random_.pick(names_.mounts).path;
    behaviour.set("paths", tree(path, Value(random_.pick(kOutcomes))));
  }
  return Value(std::move(behaviour));
}

Fabric::Value ChangeMaker::behaviour() {
  const std::string key = someSwitches();
  if (key.empty()) return {};
  return tree("switches", tree(key, tree("mount", random_.chance(5) ? Value() : someBehaviour())));
}

// ---- services

std::string ChangeMaker::someService() {
  if (!about_.empty()) return about_;
  const Object& services = model_.block(Block::services);
  return services.empty() ? std::string() : keyAt(services, random_.below(services.size()));
}

std::string ChangeMaker::someBlockNameOf(const Value& service) {
  const bool mount = service.find("mount") != nullptr;
  const bool publish = service.find("publish") != nullptr;
  if (mount && publish) return std::string(someBlockName());
  return mount ? "mount" : publish ? "publish" : "";
}

std::optional<ChangeMaker::Group> ChangeMaker::someGroup(std::string_view blockName) {
  std::vector<Group> groups;
  for (const Object::Member& service : model_.block(Block::services)) {
    if (!about_.empty() && *service.key != about_) continue;
    const ServiceView view(&service.value);
    const auto block = blockName == "mount" ? view.mount() : view.publish();
    if (!block) continue;
    for (const Object::Member& group : block->groups()) {
      groups.push_back({*service.key, *group.key, &group.value});
    }
  }
  if (groups.empty()) return std::nullopt;
  return random_.pick(groups);
}

Fabric::Value ChangeMaker::patchOfGroup(const Group& group, std::string_view blockName,
                                        Value patch) {
  return tree(
      "services",
      tree(group.service, tree(blockName, tree("groups", tree(group.name, std::move(patch))))));
}

Fabric::Value ChangeMaker::service() {
  if (names_.services.empty()) return {};
  const std::string& name = random_.pick(names_.services);
  const Value* const known = model_.find(Block::services, name);
  if (known != nullptr && random_.chance(4)) return tree("services", tree(name, Value()));
  const bool proxy = name.ends_with("-Proxy");
  const std::string_view block = proxy ? "mount" : someBlockName();
  if (known != nullptr && known->find(block) != nullptr) {
    return tree("services", tree(name, tree(block, Value())));
  }
  Object body;
  if (known == nullptr && proxy) body.set("proxy", Value(true));
  body.set(block, block == "mount" ? newMountBlock(name) : newPublishBlock(name));
  return tree("services", tree(name, Value(std::move(body))));
}

Fabric::Value ChangeMaker::group() {
  const std::string name = someService();
  if (name.empty()) return {};
  const Value& service = *model_.find(Block::services, name);
  const std::string block = someBlockNameOf(service);
  if (block.empty()) return {};
  const std::string& group = random_.pick(names_.groups);
  const Value* const groups = service.find(block)->find("groups");
  const bool known = groups != nullptr && groups->find(group) != nullptr;
  Value body = known ? Value() : block == "mount" ? newMountGroup(group) : newPublishGroup(group);
  return patchOfGroup({name, group, nullptr}, block, std::move(body));
}

Fabric::Value ChangeMaker::block(std::string_view member, const Value& patch) {
  const std::string name = someService();
  if (name.empty()) return {};
  const std::string block = someBlockNameOf(*model_.find(Block::services, name));
  if (block.empty()) return {};
  return tree("services", tree(name, tree(block, tree(member, patch))));
}

/// One of the group's paths goes, or all do.
Fabric::Value ChangeMaker::lessOf(const Group& group, std::string_view blockName,
                                  const Object& paths) {
  if (random_.coin()) return patchOfGroup(group, blockName, tree("paths", Value()));
  const std::string gone = keyAt(paths, random_.below(paths.size()));
  return patchOfGroup(group, blockName, tree("paths", tree(gone, Value())));
}

Fabric::Value ChangeMaker::path() {
  const auto chosen = someGroup("mount");
  if (!chosen || names_.mounts.empty()) return {};
  const Object& there = GroupView(chosen->value).paths();
  if (!there.empty() && random_.chance(about_.empty() ? 12 : 2)) {
    return lessOf(*chosen, "mount", there);
  }
  const std::size_t at = random_.below(names_.mounts.size());
  const Names::Path& path = names_.mounts[at];
  const bool known = there.find(path.path) != nullptr;
  if (!known && !mayName(chosen->name, at)) return {};
  return patchOfGroup(*chosen, "mount",
                      tree("paths", tree(path.path, known ? Value() : newPath(path))));
}

Fabric::Value ChangeMaker::systemFilter() {
  const std::string_view blockName = someBlockName();
  const auto chosen = someGroup(blockName);
  if (!chosen) return {};
  Value filter = random_.chance(4) ? Value() : someSystems();
  if (filter.isObject() && random_.chance(3)) filter.mutableObject().set(someId(), Value());
  return patchOfGroup(*chosen, blockName, tree("systems", std::move(filter)));
}

Fabric::Value ChangeMaker::versionFilter() {
  const std::string_view blockName = someBlockName();
  const auto chosen = someGroup(blockName);
  if (!chosen) return {};
  Value filter = random_.chance(4) ? Value() : someVersions();
  if (filter.isObject() && random_.chance(3)) {
    filter.mutableObject().set(std::to_string(random_.below(4)), Value());
  }
  return patchOfGroup(*chosen, blockName, tree("versions", std::move(filter)));
}

Fabric::Value ChangeMaker::publication() {
  const auto chosen = someGroup("publish");
  if (!chosen || names_.publications.empty()) return {};
  const Object& there = GroupView(chosen->value).paths();
  if (!there.empty() && random_.chance(about_.empty() ? 12 : 2)) {
    return lessOf(*chosen, "publish", there);
  }
  const std::size_t at = random_.below(names_.publications.size());
  const Names::Path& path = names_.publications[at];
  const bool known = there.find(path.path) != nullptr;
  if (!known && !mayName(chosen->name, at)) return {};
  return patchOfGroup(*chosen, "publish",
                      tree("paths", tree(path.path, known ? Value() : newPublication(path))));
}

Fabric::Value ChangeMaker::directory() {
  const auto chosen = someGroup("publish");
  if (!chosen || names_.directories.empty()) return {};
  const Names::Path& path = random_.pick(names_.directories);
  const bool known = GroupView(chosen->value).dirs().find(path.path) != nullptr;
  Value body = !known           ? newDirectory(path)
               : random_.coin() ? tree("ready", Value(random_.coin()))
                                : Value();
  return patchOfGroup(*chosen, "publish", tree("dirs", tree(path.path, std::move(body))));
}

Fabric::Value ChangeMaker::readiness() {
  const std::string name = someService();
  if (name.empty() || model_.find(Block::services, name)->find("publish") == nullptr) return {};
  return tree("services", tree(name, tree("publish", tree("ready", Value(random_.coin())))));
}

// ---- the rest

Fabric::Value ChangeMaker::entity() {
  if (names_.publications.empty()) return {};
  const Names::Path& path = random_.pick(names_.publications);
  if (aside_.chance(4)) return directoriesStand() ? directoryGone() : directoriesBack();
  const bool known = model_.find(Block::entities, path.path) != nullptr;
  // A document may leave the type of what it publishes out.
  const std::string_view type = path.type.empty() ? std::string_view("Soak::Entity") : path.type;
  return tree("entities", tree(path.path, known ? Value() : Value(type)));
}

/// One patch, so that nobody connects in between.
Fabric::Value ChangeMaker::directoryGone() {
  if (names_.directories.empty()) return {};
  const std::string& path = aside_.pick(names_.directories).path;
  const Object& entities = model_.block(Block::entities);
  const Value* const known = entities.find(path);
  const bool holds = std::any_of(entities.begin(), entities.end(), [&path](const auto& entity) {
    return entity.key->starts_with(path + '/');
  });
  if (known == nullptr || holds || known->string() != kDirType) return {};
  gone_.push_back(path);
  Object patch;
  if (!model_.block(Block::switches).empty()) {
    patch.set("switches", tree("*", tree("connected", Value(false))));
  }
  patch.set("entities", tree(path, Value()));
  return Value(std::move(patch));
}

Fabric::Value ChangeMaker::directoriesBack() {
  Object entities;
  for (const std::string& path : gone_) entities.set(path, Value(kDirType));
  gone_.clear();
  return tree("entities", Value(std::move(entities)));
}

Fabric::Value ChangeMaker::newDirectories() {
  Object entities;
  const bool there = !aside_.chance(8);
  for (const Names::Path& path : names_.directories) {
    if (there) entities.set(path.path, Value(kDirType));
    if (!there) gone_.push_back(path.path);
  }
  return Value(std::move(entities));
}

Fabric::Value ChangeMaker::someHeartbeat() {
  static constexpr std::array<double, 4> kHeartbeats = {0.5, 1, 2, 5};
  return random_.chance(5) ? Value() : Value(random_.pick(kHeartbeats));
}

Fabric::Value ChangeMaker::someAttrlog() {
  static constexpr std::array<double, 3> kSyncs = {0, 0.5, 3.5};
  Object connection;
  connection.set("passive", Value(!random_.chance(4)));
  connection.set("active", Value(!random_.chance(4)));
  connection.set("demuxer", Value(!random_.chance(4)));
  connection.set("connected", Value(!random_.chance(4)));
  connection.set("sync", random_.chance(4) ? Value("never") : Value(random_.pick(kSyncs)));
  return Value(std::move(connection));
}

Fabric::Value ChangeMaker::attrlog() {
  if (names_.attrlogs.empty()) return {};
  const std::string& name = random_.pick(names_.attrlogs);
  const bool known = model_.find(Block::attrlog, name) != nullptr;
  return tree("attrlog", tree(name, known && random_.coin() ? Value() : someAttrlog()));
}

}  // namespace Soak
