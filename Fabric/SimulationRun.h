#pragma once

#include <iosfwd>
#include <memory>
#include <vector>

#include "Fabric/AssertionReport.h"
#include "Fabric/Document.h"
#include "Fabric/EventStream.h"
#include "Fabric/LogCapture.h"
#include "Fabric/MountStatusWatch.h"
#include "Fabric/PublishStatusWatch.h"
#include "Fabric/Report.h"
#include "Fabric/Simulation.h"
#include "Fabric/StateDocument.h"
#include "Fabric/World.h"

namespace Fabric {

/// One run of a document with everything that comes out of it: the state document at any time, the
/// event stream when somebody wants it, what became of the expectations, and the report.
///
///     SimulationRun run(document, std::cerr);
///     run.eventsIs(out);           // or not
///     run.run();
///     ... run.state(), run.expectations(), run.report() ...
///
/// There is one at a time (see Simulation). The document must stay. Loop thread only.
class SimulationRun {
 public:
  /// Builds the world. An assertion that fails before the end of this is told on `errors`.
  SimulationRun(const Document& document, std::ostream& errors);
  ~SimulationRun();
  SimulationRun(const SimulationRun&) = delete;
  SimulationRun& operator=(const SimulationRun&) = delete;

  /// Writes the event stream to `out`, which must stay. Before run().
  void eventsIs(std::ostream& out);
  /// See Simulation; onExpect is taken, onNote is called after the event stream has the note.
  void hooksIs(Simulation::Hooks hooks) { hooks_ = std::move(hooks); }

  /// Does everything up to the end; what a hook throws comes out, and the run is then over.
  void run();

  Simulation& simulation() { return simulation_; }
  const Simulation& simulation() const { return simulation_; }
  const EventStream* events() const { return events_.get(); }

  /// The state as it is now.
  void writeState(JsonSink& sink) const;
  /// Of those that were reached, in their order.
  const std::vector<Report::Expectation>& expectations() const { return expectations_; }
  /// The state as a person wants to see it. The machines trace what they are asked for it.
  Report report() const;

 private:
  struct Watches {
    Watches(const World& world, EventStream& events)
        : mounts(world.mountStatusDir(), events),
          proxyMounts(world.proxyMountStatusDir(), events),
          publications(world.publishStatus(), events) {}

    MountStatusWatch mounts;
    MountStatusWatch proxyMounts;
    PublishStatusWatch publications;
  };

  StateDocument state() const { return {simulation_.world(), simulation_.machines(), log_}; }
  void check(const Event& event);

  const Document& document_;
  std::ostream& errors_;
  Simulation simulation_;
  LogCapture log_;
  std::unique_ptr<EventStream> events_;
  std::unique_ptr<Watches> watches_;
  std::unique_ptr<AssertionReport> assertions_;
  Simulation::Hooks hooks_;
  std::vector<Report::Expectation> expectations_;
};

}  // namespace Fabric
