#include "Fabric/Simulation.h"

#include <utility>

namespace Fabric {

namespace {

ControllerView controllerOf(const Model& model) {
  return ControllerView(model.block(Block::controller));
}

}  // namespace

Simulation::Simulation(const Document& document)
    : model_(document.start()),
      until_(document.until()),
      clock_(Orm::make<Orm::Clock>(std::make_unique<Orm::VirtualTime>(kProcessTimeAtStart))),
      mounts_(clock_),
      settings_(clock_, mounts_, controllerOf(model_).mountMonitor()),
      world_(controllerOf(model_)),
      carrier_(world_, mounts_),
      events_(document.events(), [this](const Event& event) { runEvent(event); }) {
  carrier_.start(model_);
}

Simulation::~Simulation() = default;

void Simulation::start() {
  Orm::assertThat(!machines_, "!machines_");
  machines_ = std::make_unique<Machines>(world_);
}

void Simulation::run() {
  if (!machines_) start();
  Orm::ActivityLoop loop(clock_);
  loop.sourceIs(mounts_);
  loop.sourceIs(events_);
  const Orm::Seconds end = Orm::secondsOf(processTick(until_));
  for (std::size_t done = 1; loop.runOne(end); ++done) {
    if (hooks_.onStep) hooks_.onStep();
    if (done % kProgressInterval == 0 && hooks_.onProgress) {
      hooks_.onProgress(time(), mounts_.mounts());
    }
  }
  loop.run(end);
}

void Simulation::runEvent(const Event& event) {
  if (event.note && hooks_.onNote) hooks_.onNote(*event.note);
  if (event.apply) {
    if (hooks_.onApply) {
      hooks_.onApply(event);
    } else {
      applyPatch(*event.apply);
    }
  }
  if (event.expect && hooks_.onExpect) hooks_.onExpect(event);
}

}  // namespace Fabric
