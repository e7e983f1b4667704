#include "Fabric/MountSimulation.h"

#include <algorithm>
#include <utility>

#include "Fabric/SimulatedMountView.h"
#include "Platform/Orm/Assert.h"

namespace Fabric {

using Controller::MountRequest;
using Controller::MountState;
using Controller::SystemId;
using Orm::Due;
using Orm::Ptr;

MountSimulation::MountSimulation(Ptr<Orm::Clock> clock) : clock_(std::move(clock)) {}

MountSimulation::~MountSimulation() {
  turns_.clear();
  outcomes_.clear();
  Orm::assertThat(mounts_ == 0, "mounts_ == 0");
}

Ptr<Controller::MountSm> MountSimulation::mountSm(const MountRequest& request) {
  const std::uint32_t index = switchIndex(request.systemId);
  Switch& ofMount = switches_[index];
  if (ofMount.name.empty()) ofMount.name = request.mountName;
  Orm::assertThat(ofMount.name == request.mountName, "ofMount.name == request.mountName");
  const auto machine = Orm::make<SimulatedMountSm>(request, entryOf(request), index);
  machine->begin();
  return machine;
}

void MountSimulation::behaviourIs(const SystemId& systemId, Value mount) {
  Switch& behaviour = switches_[switchIndex(systemId)];
  behaviour.delay = Orm::tickOf(SimulatedMountView(&mount).delay());
  behaviour.mount = std::move(mount);
}

std::uint32_t MountSimulation::switchIndex(const SystemId& systemId) {
  if (const std::uint32_t* known = switchIndex_.find(systemId)) return *known;
  const auto index = static_cast<std::uint32_t>(switches_.size());
  switches_.push_back({{}, Value(), Orm::tickOf(SimulatedMountView(nullptr).delay())});
  switchIndex_.set(systemId, index);
  return index;
}

Ptr<SimulatedMountEntry> MountSimulation::entryOf(const MountRequest& request) {
  const auto [begin, end] = entries_.equal_range(request.remotePath.hash());
  const auto known = std::find_if(
      begin, end, [&request](const auto& member) { return member.second->matches(request); });
  if (known != end) return known->second;
  Ptr<SimulatedMountEntry> entry(new SimulatedMountEntry(request, *this));
  entries_.emplace(request.remotePath.hash(), entry.get());
  return entry;
}

void MountSimulation::entryGone(const SimulatedMountEntry& entry) {
  const auto [begin, end] = entries_.equal_range(entry.remotePath().hash());
  entries_.erase(
      std::find_if(begin, end, [&entry](const auto& member) { return member.second == &entry; }));
}

void MountSimulation::observerIs(MountObserver& observer) { observers_.push_back(&observer); }

void MountSimulation::observerDel(MountObserver& observer) { std::erase(observers_, &observer); }

void MountSimulation::tellRequest(const SimulatedMountSm& machine, MountRequestKind kind) {
  for (MountObserver* observer : observers_) {
    observer->mountRequest(machine.systemId(), machine.entry().remotePath(), kind);
  }
}

void MountSimulation::tellState(const SimulatedMountSm& machine, MountState state) {
  for (MountObserver* observer : observers_) {
    observer->mountState(machine.systemId(), machine.entry().remotePath(), state);
  }
}

void MountSimulation::scheduleTurn(SimulatedMountSm& machine, Orm::Tick delay) {
  const std::uint64_t sequence = Orm::Clock::nextSequence();
  machine.workNumber_ = static_cast<std::uint32_t>(sequence);
  turns_.push_back({sequence, &machine, delay});
}

void MountSimulation::scheduleOutcome(SimulatedMountSm& machine, Orm::Tick tick) {
  const std::uint64_t sequence = Orm::Clock::nextSequence();
  machine.workNumber_ = static_cast<std::uint32_t>(sequence);
  outcomes_[tick].push_back({sequence, &machine});
}

template <class Piece>
bool MountSimulation::isCancelled(const Piece& piece) {
  using Step = SimulatedMountSm::Step;
  const Step step = piece.machine->step_;
  return step == Step::none || step == Step::stalled ||
         piece.machine->workNumber_ != static_cast<std::uint32_t>(piece.sequence);
}

void MountSimulation::dropCancelled() {
  while (!turns_.empty() && isCancelled(turns_.front())) turns_.pop_front();
  while (!outcomes_.empty()) {
    std::deque<Work>& first = outcomes_.begin()->second;
    while (!first.empty() && isCancelled(first.front())) first.pop_front();
    if (!first.empty()) return;
    outcomes_.erase(outcomes_.begin());
  }
}

Due MountSimulation::dueTurn() const {
  if (turns_.empty()) return {};
  const Turn& turn = turns_.front();
  return {turn.machine->requestedAt(), Orm::kOrdinaryRank, turn.sequence};
}

Due MountSimulation::dueOutcome() const {
  if (outcomes_.empty()) return {};
  const auto& [tick, first] = *outcomes_.begin();
  return {tick, Orm::kOrdinaryRank, first.front().sequence};
}

Due MountSimulation::nextDue() {
  dropCancelled();
  const Due turn = dueTurn();
  const Due outcome = dueOutcome();
  return outcome.before(turn) ? outcome : turn;
}

void MountSimulation::runNext() {
  dropCancelled();
  if (dueOutcome().before(dueTurn())) {
    runOutcome();
  } else if (!turns_.empty()) {
    runTurn();
  }
}

// A piece is taken out before it is done: doing it may let the machine go, and schedule more.

void MountSimulation::runTurn() {
  const Turn turn = std::move(turns_.front());
  turns_.pop_front();
  turn.machine->runStep(turn.delay);
}

void MountSimulation::runOutcome() {
  const auto first = outcomes_.begin();
  const Work work = std::move(first->second.front());
  first->second.pop_front();
  if (first->second.empty()) outcomes_.erase(first);
  work.machine->runStep(0);
}

}  // namespace Fabric
