#pragma once

#include <cstdint>
#include <optional>

#include "Fabric/MountObserver.h"
#include "Fabric/SimulatedMountEntry.h"
#include "Fabric/SimulatedMountView.h"
#include "Platform/Mount/MountSm.h"
#include "Platform/Orm/TimeSource.h"

namespace Fabric {

/// A mount machine without a switch: it reports what the switch's settings say, when they say it.
///
/// Creation sets the record to `requested` and asks for a mount, as doRemount does: in the next
/// turn of the loop the state becomes `mounting`, and after the switch's delay `mounted` or
/// `failed`, or never anything when the mount stalls. An unmount makes it `unmounted` in the next
/// turn. Delay and outcome are those in force when the request is made; a new request cancels what
/// is left of the one before. Before `mounted` is told an entity of the mount's type stands at the
/// mount path; an unmount removes it before it is told, unless it preserves the state. doCleanup
/// ends what is under way and leaves record and entity as they are.
///
/// Made by the MountSimulation, which schedules its work and outlives it; owned by the mount
/// entry's machine. There is one for each mount, so it holds only what differs from mount to mount.
class SimulatedMountSm final : public Controller::MountSm,
                               private Kobble::Counted<SimulatedMountSm> {
 public:
  SimulatedMountSm(const Controller::MountRequest& request, Orm::Ptr<SimulatedMountEntry> entry,
                   std::uint32_t switchIndex);
  ~SimulatedMountSm() override;

  void doRemount() override;
  void doUnmount() override;
  void doStatePreservingUnmount() override;
  void doCleanup() override;
  bool pendingRequest() const override { return step_ != Step::none; }

  /// What is pending; nothing when nothing is. A mount or a remount is a mount here.
  std::optional<MountRequestKind> pending() const;
  /// The outcome of a mount that is under way gets lost: it stays under way until the next request.
  void loseOutcome();

  // ---- for reports and the state document

  const SimulatedMountEntry& entry() const { return *entry_; }
  const Controller::SystemId& systemId() const;
  /// Where the switch's copy stands. Allocates.
  Orm::String mountPath() const;
  std::uint32_t retries() const { return entry_->retries(); }
  std::int32_t timeout() const { return entry_->timeout(); }
  /// When the request that is pending, or was the last one, was made: ticks of the process clock.
  Orm::Tick requestedAt() const { return requestedAt_; }

 private:
  friend class MountSimulation;
  using Outcome = SimulatedMountView::Outcome;

  /// What is still to come of the request.
  enum class Step : std::uint8_t {
    none,
    startMount,
    finishMount,
    stalled,
    unmount,
    preservingUnmount,
  };

  /// What creation does, once the machine can be held.
  void begin();
  void request(MountRequestKind kind, Step step);
  /// Does the piece of work that is due; `delay` is that of the request.
  void runStep(Orm::Tick delay);
  void startMount(Orm::Tick delay);
  void finishMount();
  void finishUnmount();
  void stateIs(Controller::MountState state);
  MountSimulation& simulation() const { return entry_->simulation(); }
  const Orm::String& mountName() const;

  // These two lie in the base's padding.
  Step step_ = Step::none;
  Outcome outcome_ = Outcome::mounted;
  std::uint32_t switchIndex_;
  /// Which scheduled piece of work is the present one; any other was cancelled.
  std::uint32_t workNumber_ = 0;
  Orm::Ptr<Controller::MountSmData> mountSmData_;
  Orm::Ptr<SimulatedMountEntry> entry_;
  Orm::Tick requestedAt_ = 0;
};

static_assert(sizeof(SimulatedMountSm) == 48);

}  // namespace Fabric
