#pragma once

#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Fabric/Model.h"
#include "Fabric/ServiceBlockView.h"
#include "Fabric/SwitchView.h"
#include "Platform/Entities/SystemId/SystemId.h"

namespace Soak {

/// What depends on how a state came about and not on the inputs alone, and is therefore not
/// compared with them. Each of these is what the machines are meant to do:
///
/// - **a switch is undecided** since something changed that nothing watches (whether it is
///   reachable), that nothing is decided on (a version status that is gone, or is not reported), or
///   since a mount of it ended by itself, or a service was disabled while it was both connected and
///   inactive, which takes its mounts away; until the switch comes back;
/// - **a path that two groups of a service named** at one time: the first has it, and the last to
///   let go of it takes it from the other; until the run's end. A group that is just letting go of
///   it still has it for whoever is told of that;
/// - **a local path that was named twice**, by any groups or services: the same;
/// - **a local path whose entity went**: a switch that comes meanwhile is not published to, and it
///   is nobody's task to look again when the entity is back;
/// - **a published directory whose group changed a filter**: it keeps the one that it came with;
/// - **a service that was renamed**: its mounters and entries keep the name that they came with;
/// - **a switch whose mounts went otherwise** than its `mount` says now.
///
/// Fed by whoever applies patches and does faults.
class Excuses {
 public:
  /// The start of a run.
  void start(const Fabric::Model& model);
  /// Before and after a patch is applied; calls of nested patches may come between.
  void patchComes(const Fabric::Model& model, const Fabric::Patch& patch);
  void patchCame(const Fabric::Model& model, const Fabric::Patch& patch);
  /// A patch was applied while another one was being carried.
  void nested() { nested_ = true; }
  /// A mount of the switch was meddled with.
  void mountMeddledWith(const Controller::SystemId& systemId, bool ended);

  bool isUndecided(const Controller::SystemId& systemId) const {
    return undecided_.contains(systemId);
  }
  bool hasOtherOutcomes(const Controller::SystemId& systemId) const {
    return otherOutcomes_.contains(systemId);
  }
  bool isNamedTwice(std::string_view service, std::string_view path) const {
    return mountsNamedTwice_.contains({std::string(service), std::string(path)});
  }
  bool hasPublishedTwice() const { return !publicationsNamedTwice_.empty(); }
  bool isPublishedTwice(std::string_view path) const {
    return publicationsNamedTwice_.contains(std::string(path));
  }
  bool hasLostEntity(std::string_view path) const {
    return entitiesLost_.contains(std::string(path));
  }
  bool hasOtherFilters(std::string_view directory) const {
    return directoriesWithOtherFilters_.contains(std::string(directory));
  }
  bool isRenamed(std::string_view service) const { return renamed_.contains(std::string(service)); }
  /// A state that no comparison with another controller makes sense of.
  bool isIncomparable() const { return nested_ || !renamed_.empty(); }

 private:
  void look(const Fabric::Model& model, const Fabric::Patch& patch);
  void lookAtSwitch(const Fabric::Model& model, const Fabric::Text& key,
                    const Fabric::Value& patch);
  void lookAtServices(const Fabric::Model& model);
  void lookAtUnreported(const Controller::SystemId& systemId, const Fabric::SwitchView& view);
  void lookAtInactive(const Fabric::Model& model);
  void lookAtPublishFilters(const Fabric::Value* service, const Fabric::Value& patch);
  void lookAtName(const Fabric::Text& key, const Fabric::Value& patch);

  void lookAtLettingGo(std::string_view service, const Fabric::ServiceBlockView& mount);
  void mountNamedTwice(std::string_view service, const Fabric::ServiceBlockView& mount,
                       const std::string& path);

  /// The services as they were before each patch that is being applied, the innermost last.
  std::vector<Fabric::Object> before_;
  std::set<Controller::SystemId> undecided_;
  std::set<Controller::SystemId> otherOutcomes_;
  std::set<std::pair<std::string, std::string>> mountsNamedTwice_;
  std::set<std::string> publicationsNamedTwice_;
  std::set<std::string> entitiesLost_;
  std::set<std::string> directoriesWithOtherFilters_;
  std::set<std::string> renamed_;
  bool nested_ = false;
};

}  // namespace Soak
