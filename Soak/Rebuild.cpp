#include "Soak/Rebuild.h"

#include <iostream>
#include <sstream>
#include <vector>

#include "Fabric/ControllerView.h"
#include "Fabric/GroupView.h"
#include "Fabric/JsonText.h"
#include "Fabric/Reader.h"
#include "Fabric/ServiceView.h"
#include "Fabric/SimulationRun.h"
#include "Soak/Broken.h"

namespace Soak {

using Controller::SystemId;
using Fabric::Block;
using Fabric::Model;
using Fabric::Object;
using Fabric::Value;

namespace {

constexpr double kSettled = 700;

std::string rebuiltState(const Model& model) {
  const Fabric::Document document = Fabric::Document::of("rebuilt", model, kSettled);
  Fabric::SimulationRun run(document, std::cerr);
  run.run();
  std::ostringstream out;
  {
    Fabric::JsonText json(out, Fabric::JsonText::Layout::oneLine);
    run.writeState(json);
  }
  return out.str();
}

/// Compares the parts of two state documents, each where it stands.
class Comparison {
 public:
  Comparison(const Value& lived, const Value& rebuilt, const Model& model, const Excuses& excuses,
             const std::set<std::string>& untold)
      : lived_(lived), rebuilt_(rebuilt), model_(model), excuses_(excuses), untold_(untold) {}

  void compare() {
    both("registry", [this](const Value* lived, const Value* rebuilt) {
      members(lived, rebuilt, "mountEntries", [this](const auto&... one) { mountEntry(one...); });
      members(lived, rebuilt, "publishEntries",
              [this](const auto&... one) { publication(one...); });
      members(lived, rebuilt, "publishReady", [this](const auto&... one) { same(one...); });
    });
    both("mounts", [this](const Value* lived, const Value* rebuilt) {
      eachMember(lived, rebuilt, [this](const auto&... one) { mountsOf(one...); });
    });
    both("mountStatus", [this](const Value* lived, const Value* rebuilt) {
      eachMember(lived, rebuilt, [this](const auto&... one) { mountStatus(one...); });
    });
    both("publishStatus", [this](const Value* lived, const Value* rebuilt) {
      eachMember(lived, rebuilt, [this](const auto&... one) { publishStatus(one...); });
    });
    both("published", [this](const Value* lived, const Value* rebuilt) {
      members(lived, rebuilt, "ready", [this](const auto&... one) { readiness(one...); });
      members(lived, rebuilt, "systems", [this](const auto&... one) { published(one...); });
    });
  }

 private:
  // ---- walking

  template <class Each>
  void both(std::string_view key, Each&& each) {
    path_.emplace_back(key);
    each(lived_.find(key), rebuilt_.find(key));
    path_.pop_back();
  }
  static const Value* member(const Value* of, std::string_view key) {
    return of == nullptr ? nullptr : of->find(key);
  }
  template <class Each>
  void members(const Value* lived, const Value* rebuilt, std::string_view key, Each&& each) {
    path_.emplace_back(key);
    eachMember(member(lived, key), member(rebuilt, key), each);
    path_.pop_back();
  }
  /// Calls each(key, lived, rebuilt) for the keys of both; null: not there.
  template <class Each>
  void eachMember(const Value* lived, const Value* rebuilt, Each&& each) {
    const auto one = [&](const std::string& key) {
      path_.push_back(key);
      each(key, member(lived, key), member(rebuilt, key));
      path_.pop_back();
    };
    if (lived) {
      for (const Object::Member& known : lived->object()) one(*known.key);
    }
    if (!rebuilt) return;
    for (const Object::Member& known : rebuilt->object()) {
      if (!member(lived, *known.key)) one(*known.key);
    }
  }

  void same(const std::string&, const Value* lived, const Value* rebuilt) const {
    if (lived && rebuilt && *lived == *rebuilt) return;
    if (!lived && !rebuilt) return;
    std::string where;
    for (const std::string& step : path_) where += "." + step;
    throw Broken("a rebuilt controller comes to the same " + part(),
                 ": " + where.substr(1) + " is " + (rebuilt ? toJson(*rebuilt) : "absent") +
                     ", and was " + (lived ? toJson(*lived) : "absent"));
  }

  /// What a difference is one of: the first and the last key that is the same for all.
  std::string part() const {
    return path_.size() < 3 ? path_.front() : path_.front() + " " + path_[path_.size() - 2];
  }

  // ---- the parts

  void mountEntry(const std::string& path, const Value* lived, const Value* rebuilt) {
    // An entry without mounters stays; its target was told by whoever came first.
    members(lived, rebuilt, "mounters",
            [&](const std::string& service, const Value* was, const Value* is) {
              if (!excuses_.isNamedTwice(service, path)) same(service, was, is);
            });
  }

  void publication(const std::string& path, const Value* lived, const Value* rebuilt) {
    if (!excuses_.isPublishedTwice(path)) same(path, lived, rebuilt);
  }

  bool isUndecided(const std::string& system) const {
    return excuses_.isUndecided(SystemId::ofName(system));
  }

  void mountsOf(const std::string& system, const Value* lived, const Value* rebuilt) {
    if (isUndecided(system)) return;
    eachMember(lived, rebuilt, [&](const std::string& path, const Value* was, const Value* is) {
      if (isMeddled(path)) return;
      const bool other = excuses_.hasOtherOutcomes(SystemId::ofName(system));
      if (!other || !was || !is) return same(path, was, is);
      same(path, was->find("mountPath"), is->find("mountPath"));
    });
  }

  void mountStatus(const std::string& service, const Value* lived, const Value* rebuilt) {
    members(lived, rebuilt, "mountedPathPrefix",
            [&](const std::string& path, const Value* was, const Value* is) {
              if (!excuses_.isNamedTwice(service, path)) same(path, was, is);
            });
    members(lived, rebuilt, "systems",
            [&](const std::string& system, const Value* was, const Value* is) {
              if (isUndecided(system)) return;
              eachMember(was, is, [&](const std::string&, const Value* before, const Value* now) {
                if (!before) return;
                members(
                    before, now, "paths",
                    [&](const std::string& path, const Value* one, const Value* other) {
                      if (excuses_.isNamedTwice(service, path) || isMeddled(path)) return;
                      if (systemFilters(path) > 1) return;
                      if (isUnderWay(lived_, system, path) || isUnderWay(rebuilt_, system, path))
                        return;
                      if (untold_.contains(service + ' ' + system + ' ' + path)) return;
                      if (excuses_.hasOtherOutcomes(SystemId::ofName(system))) return;
                      same(path, one, other);
                    });
              });
            });
  }

  void publishStatus(const std::string& service, const Value* lived, const Value* rebuilt) {
    if (!isOpen(service)) return;
    eachMember(lived, rebuilt, [&](const std::string& group, const Value* was, const Value* is) {
      same(group, was ? was->find("state") : nullptr, is ? is->find("state") : nullptr);
      // Those of paths that went while the gate was closed stay behind.
      members(is, is, "paths", [&](const std::string& path, const Value*, const Value* now) {
        same(path, member(member(was, "paths"), path), now);
      });
    });
  }

  /// Readiness waits for entities that are not there, and stays when they go.
  void readiness(const std::string& service, const Value* lived, const Value* rebuilt) {
    if (excuses_.hasPublishedTwice()) return;
    const Value* const entries = member(rebuilt_.find("registry"), "publishEntries");
    if (entries != nullptr) {
      for (const Object::Member& entry : entries->object()) {
        const Value* const owner = entry.value.find("service");
        if (owner->string() == service && model_.find(Block::entities, *entry.key) == nullptr) {
          return;
        }
      }
    }
    same(service, lived, rebuilt);
  }

  /// The service publishes: its generation is the leader's.
  bool isOpen(const std::string& service) const {
    const std::string_view leader =
        Fabric::ControllerView(model_.block(Block::controller)).leader();
    const auto publish = Fabric::ServiceView(model_.find(Block::services, service)).publish();
    return !leader.empty() && publish && publish->generation() == leader;
  }

  void published(const std::string& system, const Value* lived, const Value* rebuilt) {
    if (isUndecided(system)) return;
    members(lived, rebuilt, "mounts",
            [&](const std::string& path, const Value* was, const Value* is) {
              const std::string parent = path.substr(0, path.rfind('/'));
              if (excuses_.isPublishedTwice(path) || excuses_.isPublishedTwice(parent)) return;
              if (excuses_.hasLostEntity(path) || excuses_.hasOtherFilters(parent)) return;
              if (model_.find(Block::entities, path) == nullptr &&
                  model_.find(Block::entities, parent) == nullptr) {
                return;
              }
              same(path, was, is);
            });
  }

  /// A mount that never ended: mounters are told of it when its state changes.
  static bool isUnderWay(const Value& state, const std::string& system, const std::string& path) {
    const Value* const mount = member(member(state.find("mounts"), system), path);
    const Value* const name = member(mount, "state");
    return name != nullptr && (name->string() == "mounting" || name->string() == "requested");
  }

  /// How many services filter the systems that they want the path from.
  std::size_t systemFilters(const std::string& path) const {
    std::size_t count = 0;
    for (const Object::Member& service : model_.block(Block::services)) {
      const auto mount = Fabric::ServiceView(&service.value).mount();
      if (!mount) continue;
      for (const Object::Member& group : mount->groups()) {
        const Fabric::GroupView view(&group.value);
        if (view.systems() && view.paths().find(path)) ++count;
      }
    }
    return count;
  }

  /// Which of several mounters has the path decides who is admitted.
  bool isMeddled(const std::string& path) const {
    for (const Object::Member& service : model_.block(Block::services)) {
      if (excuses_.isNamedTwice(*service.key, path)) return true;
    }
    return false;
  }

  const Value& lived_;
  const Value& rebuilt_;
  const Model& model_;
  const Excuses& excuses_;
  const std::set<std::string>& untold_;
  std::vector<std::string> path_;
};

}  // namespace

void compareWithRebuilt(const std::string& lived, const Model& model, const Excuses& excuses,
                        const std::set<std::string>& untold) {
  const std::string rebuilt = rebuiltState(model);
  Comparison(Fabric::read("lived.json", lived), Fabric::read("rebuilt.json", rebuilt), model,
             excuses, untold)
      .compare();
}

}  // namespace Soak
