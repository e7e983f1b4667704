#pragma once

#include <cstdint>
#include <vector>

#include "Platform/Mount/MountSm.h"
#include "Platform/Orm/Collection.h"

namespace Bench {

class PromptMountSm;

/// Makes mount machines that carry nothing out, and is the far side of them: `advance` moves what
/// a switch was asked for one step on, `settle` does what it was asked to give up.
///
/// As cheap as a mount machine can be: 32 bytes a mount, no timer, no entity in the state store.
/// A switch's machines form a list in the order in which they were made; one that has been let go
/// leaves it when the list is walked the next time. Loop thread only; outlives all its machines.
class PromptMounts final : public Controller::MountSm::Factory {
 public:
  PromptMounts();
  ~PromptMounts();
  PromptMounts(const PromptMounts&) = delete;
  PromptMounts& operator=(const PromptMounts&) = delete;

  /// Makes room for another switch and tells its number.
  std::uint32_t switchIs(const Controller::SystemId& systemId);

  Orm::Ptr<Controller::MountSm> mountSm(const Controller::MountRequest& request) override;

  /// Moves every mount of the switch one step on: from requested to mounting, then to mounted.
  void advance(std::uint32_t sw);
  /// Tells the end of every mount that was asked to unmount since the last call.
  void settle();
  /// Gives up what the list of the switch keeps of machines that have been let go.
  void sweep(std::uint32_t sw);

 private:
  friend class PromptMountSm;

  struct List {
    Orm::Ptr<PromptMountSm> first;
    PromptMountSm* last = nullptr;
  };
  /// Calls visit(machine) for each machine of the switch that is still wanted.
  template <class Visit>
  void walk(std::uint32_t sw, Visit&& visit);

  std::vector<List> lists_;
  Orm::ValueCollection<Controller::SystemId, std::uint32_t> numberOf_;
  Controller::SystemId lastId_;
  std::uint32_t lastNumber_ = 0;
  std::vector<Orm::Ptr<PromptMountSm>> unmounting_;
};

/// One mount of the PromptMounts, of which there is one.
class PromptMountSm final : public Controller::MountSm, private Kobble::Counted<PromptMountSm> {
 public:
  explicit PromptMountSm(const Controller::MountRequest& request);

  void doRemount() override;
  void doUnmount() override;
  void doStatePreservingUnmount() override { doUnmount(); }
  void doCleanup() override { step_ = Step::gone; }
  bool pendingRequest() const override { return step_ == Step::mount || step_ == Step::unmount; }

 private:
  friend class PromptMounts;
  enum class Step : std::uint8_t { mount, done, unmount, gone };

  void advance();

  Step step_ = Step::mount;  // lies in the base's padding
  Orm::Ptr<Controller::MountSmData> record_;
  Orm::Ptr<PromptMountSm> next_;
};

}  // namespace Bench
