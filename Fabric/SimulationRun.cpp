#include "Fabric/SimulationRun.h"

#include <algorithm>

#include "Fabric/ReportBuilder.h"

namespace Fabric {

SimulationRun::SimulationRun(const Document& document, std::ostream& errors)
    : document_(document),
      errors_(errors),
      simulation_(document),
      log_(simulation_.clock()),
      assertions_(std::make_unique<AssertionReport>(*simulation_.clock(), nullptr, errors)) {}

SimulationRun::~SimulationRun() {
  // Taking the machines down is no part of the run.
  assertions_.reset();
  if (!events_) return;
  log_.observerIs(nullptr);
  simulation_.mounts().observerDel(*events_);
}

void SimulationRun::eventsIs(std::ostream& out) {
  events_ = std::make_unique<EventStream>(out, simulation_.clock());
  assertions_.reset();
  assertions_ = std::make_unique<AssertionReport>(*simulation_.clock(), events_.get(), errors_);
  log_.observerIs(events_.get());
  simulation_.mounts().observerIs(*events_);
  const World& world = simulation_.world();
  watches_ = std::make_unique<Watches>(world, *events_);
}

void SimulationRun::run() {
  Simulation::Hooks hooks = hooks_;
  hooks.onNote = [this](const std::string& text) {
    if (events_) events_->note(text);
    if (hooks_.onNote) hooks_.onNote(text);
  };
  hooks.onExpect = [this](const Event& event) { check(event); };
  simulation_.hooksIs(std::move(hooks));
  simulation_.start();
  if (events_) {
    events_->connectionPeriodIs(simulation_.machines()->initialMountSm()->connectionPeriod());
  }
  simulation_.run();
  if (events_) events_->flush();
}

void SimulationRun::check(const Event& event) {
  const SwitchResolver resolve = [this](std::string_view name) {
    return simulation_.model().switchId(name);
  };
  expectations_.push_back({simulation_.time(), event.mark,
                           state().failures(*event.expect, resolve, simulation_.time())});
}

void SimulationRun::writeState(JsonSink& sink) const { state().write(sink, simulation_.time()); }

Report SimulationRun::report() const {
  Report report;
  report.document = document_.name();
  report.time = simulation_.time();
  report.log = log_.messages();
  report.expectations = expectations_;
  report.expectationsNotReached =
      static_cast<std::size_t>(
          std::count_if(document_.events().begin(), document_.events().end(),
                        [](const Event& event) { return event.expect.has_value(); })) -
      expectations_.size();
  if (simulation_.machines()) {
    ReportBuilder(simulation_.world(), *simulation_.machines()).build(report);
  }
  return report;
}

}  // namespace Fabric
