#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "Fabric/Carrier.h"
#include "Fabric/Document.h"
#include "Fabric/DocumentTime.h"
#include "Fabric/EventSource.h"
#include "Fabric/Machines.h"
#include "Fabric/MountSimulation.h"
#include "Fabric/ProcessSettings.h"
#include "Fabric/World.h"
#include "Platform/Orm/ActivityLoop.h"
#include "Platform/Orm/Clock.h"

namespace Fabric {

/// One run of a document in virtual time: a controller process whose switches are simulated.
///
///     Simulation simulation(document);      // the world is there, nobody watches it yet
///     ... attach what watches the entities and the mounts ...
///     simulation.run();                     // top machines, then events, turns and timers
///     ... read the state ...
///
/// Sets the process's clock, factory of mount machines and toggles as long as it exists, so that
/// there is one at a time; what was in force before comes back with its end. Nothing that it made
/// is alive afterwards. Loop thread only.
class Simulation {
 public:
  /// Called during a run; each may be empty.
  struct Hooks {
    std::function<void(const std::string& text)> onNote = {};
    /// An event's expectation is to be looked at: all that comes before it has been done.
    std::function<void(const Event& event)> onExpect = {};
    /// Sees to an event's patch, by applyPatch() now or later, instead of the run.
    std::function<void(const Event& event)> onApply = {};
    /// After each piece of work: an event, a turn, a timer.
    std::function<void()> onStep = {};
    /// Once every kProgressInterval pieces of work: the time, and how many mounts there are.
    std::function<void(Orm::Seconds time, std::size_t mounts)> onProgress = {};
  };
  static constexpr std::size_t kProgressInterval = 1 << 14;

  /// Builds the world as the document says it is at the start. The document has to stay.
  explicit Simulation(const Document& document);
  explicit Simulation(Document&&) = delete;
  ~Simulation();
  Simulation(const Simulation&) = delete;
  Simulation& operator=(const Simulation&) = delete;

  void hooksIs(Hooks hooks) { hooks_ = std::move(hooks); }
  /// Where the run ends, inclusive, instead of where the document says: seconds of the documents.
  void untilIs(Orm::Seconds until) { until_ = until; }

  /// Makes the top machines. Called once; run() calls it when nobody has.
  void start();
  /// Does everything that is due up to the end. Once.
  void run();

  /// Merges a patch of the document and carries it; also within a notification.
  void applyPatch(const Patch& patch) { carrier_.apply(model_, patch); }

  /// Seconds of the documents.
  Orm::Seconds time() const { return documentTime(clock_->now()); }
  Orm::Seconds until() const { return until_; }
  /// The document as the events so far left it.
  const Model& model() const { return model_; }
  const World& world() const { return world_; }
  MountSimulation& mounts() { return mounts_; }
  const MountSimulation& mounts() const { return mounts_; }
  /// Null before start().
  const Machines* machines() const { return machines_.get(); }
  /// The simulated attribute log.
  const AttrlogCarrier& attrlog() const { return carrier_.attrlog(); }
  const Orm::Ptr<Orm::Clock>& clock() const { return clock_; }

 private:
  void runEvent(const Event& event);

  Model model_;
  Orm::Seconds until_;
  Hooks hooks_;
  Orm::Ptr<Orm::Clock> clock_;
  MountSimulation mounts_;
  ProcessSettings settings_;
  World world_;
  Carrier carrier_;
  EventSource events_;
  std::unique_ptr<Machines> machines_;
};

}  // namespace Fabric
