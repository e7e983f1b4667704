#include "Platform/Mount/MountSm.h"

#include <utility>

namespace Controller {

namespace {

/// Stands in where no host has said how mounts are made: each request stays outstanding.
class WaitingMountSm final : public MountSm, private Kobble::Counted<WaitingMountSm> {
 public:
  explicit WaitingMountSm(const MountRequest& request) {
    request.mountSmData->mountStateIs(MountState::requested);
  }
  void doRemount() override {}
  void doUnmount() override {}
  void doStatePreservingUnmount() override {}
  void doCleanup() override {}
  bool pendingRequest() const override { return true; }
};

class WaitingFactory final : public MountSm::Factory {
 public:
  Orm::Ptr<MountSm> mountSm(const MountRequest& request) override {
    return Orm::make<WaitingMountSm>(request);
  }
};

WaitingFactory waitingFactory;
MountSm::Factory* theFactory = &waitingFactory;

}  // namespace

MountSm::Factory* MountSm::factoryIs(Factory* factory) {
  Factory* const old = std::exchange(theFactory, factory ? factory : &waitingFactory);
  return old == &waitingFactory ? nullptr : old;
}

Orm::Ptr<MountSm> MountSm::MountSmIs(const MountRequest& request) {
  return theFactory->mountSm(request);
}

}  // namespace Controller
