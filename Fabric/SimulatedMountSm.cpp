#include "Fabric/SimulatedMountSm.h"

#include <utility>

#include "Fabric/MountSimulation.h"

namespace Fabric {

using Controller::MountState;

SimulatedMountSm::SimulatedMountSm(const Controller::MountRequest& request,
                                   Orm::Ptr<SimulatedMountEntry> entry, std::uint32_t switchIndex)
    : switchIndex_(switchIndex), mountSmData_(request.mountSmData), entry_(std::move(entry)) {
  ++simulation().mounts_;
}

SimulatedMountSm::~SimulatedMountSm() { --simulation().mounts_; }

const Controller::SystemId& SimulatedMountSm::systemId() const { return mountSmData_->systemId(); }

const Orm::String& SimulatedMountSm::mountName() const {
  return simulation().switchAt(switchIndex_).name;
}

Orm::String SimulatedMountSm::mountPath() const {
  return entry_->mountDir()->childPath(mountName().view());
}

void SimulatedMountSm::begin() {
  request(MountRequestKind::mount, Step::startMount);
  stateIs(MountState::requested);
}

void SimulatedMountSm::doRemount() { request(MountRequestKind::remount, Step::startMount); }

void SimulatedMountSm::doUnmount() { request(MountRequestKind::unmount, Step::unmount); }

void SimulatedMountSm::doStatePreservingUnmount() {
  request(MountRequestKind::preservingUnmount, Step::preservingUnmount);
}

void SimulatedMountSm::doCleanup() {
  simulation().tellRequest(*this, MountRequestKind::cleanup);
  step_ = Step::none;
}

std::optional<MountRequestKind> SimulatedMountSm::pending() const {
  switch (step_) {
    case Step::none:
      return std::nullopt;
    case Step::startMount:
    case Step::finishMount:
    case Step::stalled:
      return MountRequestKind::mount;
    case Step::unmount:
      return MountRequestKind::unmount;
    case Step::preservingUnmount:
      return MountRequestKind::preservingUnmount;
  }
  return std::nullopt;
}

void SimulatedMountSm::loseOutcome() {
  if (pending() == MountRequestKind::mount) step_ = Step::stalled;
}

void SimulatedMountSm::request(MountRequestKind kind, Step step) {
  simulation().tellRequest(*this, kind);
  const MountSimulation::Switch& behaviour = simulation().switchAt(switchIndex_);
  outcome_ = SimulatedMountView(&behaviour.mount).outcome(entry_->remotePath());
  step_ = step;
  requestedAt_ = simulation().now();
  simulation().scheduleTurn(*this, behaviour.delay);
}

void SimulatedMountSm::runStep(Orm::Tick delay) {
  switch (step_) {
    case Step::startMount:
      return startMount(delay);
    case Step::finishMount:
      return finishMount();
    case Step::unmount:
    case Step::preservingUnmount:
      return finishUnmount();
    case Step::none:
    case Step::stalled:
      return;
  }
}

void SimulatedMountSm::startMount(Orm::Tick delay) {
  const std::uint32_t number = workNumber_;
  stateIs(MountState::mounting);
  // Whoever was told may have asked for something else.
  if (step_ != Step::startMount || workNumber_ != number) return;
  if (outcome_ == Outcome::stalled) {
    step_ = Step::stalled;
    return;
  }
  step_ = Step::finishMount;
  simulation().scheduleOutcome(*this, simulation().now() + delay);
}

void SimulatedMountSm::finishMount() {
  step_ = Step::none;
  if (outcome_ == Outcome::failed) return stateIs(MountState::failed);
  entry_->mountDir()->createEntity(entry_->type(), mountName());
  stateIs(MountState::mounted);
}

void SimulatedMountSm::finishUnmount() {
  if (step_ == Step::unmount) entry_->mountDir()->entityDel(mountName());
  step_ = Step::none;
  stateIs(MountState::unmounted);
}

void SimulatedMountSm::stateIs(MountState state) {
  if (mountSmData_->mountState() == state) return;
  simulation().tellState(*this, state);
  mountSmData_->mountStateIs(state);
}

}  // namespace Fabric
