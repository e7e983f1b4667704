#pragma once

#include <cstdint>

#include "Platform/Entities/ServiceMount/MountStatus.h"
#include "Platform/Orm/CollectionOwner.h"

namespace Controller {

/// The mounts of one mount group from one switch.
///
/// Counts its members by state, so that the group's own state follows from a change of one mount
/// without a look at the others.
class ServiceMountGroupStatus : public Orm::CollectionOwner,
                                private Kobble::Counted<ServiceMountGroupStatus> {
 public:
  struct Attr {
    enum : Orm::AttributeId { mountStatus, mountState, processed, left };
  };
  using MountStatuses = Orm::Collection<Orm::Ptr<MountStatus>, &MountStatus::path>;

  explicit ServiceMountGroupStatus(Orm::String groupName) : groupName_(std::move(groupName)) {}
  ~ServiceMountGroupStatus() override;

  const Orm::String& groupName() const { return groupName_; }

  /// By remote path.
  const MountStatuses& mountStatus() const { return mountStatus_; }
  MountStatus* mountStatus(const Orm::String& path) const { return mountStatus_.find(path); }
  Orm::Ptr<MountStatus> mountStatusIs(const Orm::String& path) {
    if (MountStatus* present = mountStatus_.find(path)) return present;
    return newMountStatus(path, 1);
  }
  /// The same for who has looked for it, and knows how many paths the group will have; a path that
  /// is present stops the process.
  Orm::Ptr<MountStatus> newMountStatus(const Orm::String& path, std::uint32_t paths) {
    mountStatus_.reserve(paths);
    return memberIs(mountStatus_, Attr::mountStatus, Orm::make<MountStatus>(path, &counts_));
  }
  void mountStatusDel(const Orm::String& path);
  /// The same for who keeps a hint of where the path stands.
  void mountStatusDel(const Orm::String& path, MountStatuses::Hint& hint);
  void mountStatusDelAll();
  /// How many of the paths are in `state`. O(1).
  std::uint32_t mountStatusCount(MountState state) const { return counts_.of(state); }

  /// The group's own state on the switch.
  MountState mountState() const { return mountState_; }
  void mountStateIs(MountState state) { assign(mountState_, state, Attr::mountState); }

  /// The mount side has looked at the switch for this group at least once.
  bool processed() const { return processed_; }
  void processedIs(bool processed) { assign(processed_, processed, Attr::processed); }

 private:
  friend class SystemStatus;

  /// It is no longer a member of its system status. Who follows the group and not just this status
  /// looks there from now on.
  void leaveSystem() const { notify(Attr::left); }

  Orm::String groupName_;
  MountStatuses mountStatus_;
  MountStateCounts counts_;
  MountState mountState_ = MountState::unmounted;
  bool processed_ = false;
};

}  // namespace Controller
