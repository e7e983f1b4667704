#pragma once

#include <array>
#include <cstdint>

#include "Platform/Entities/ServiceMount/MountState.h"
#include "Platform/Fennix/ChildPath.h"
#include "Platform/Orm/Entity.h"
#include "Platform/Orm/String.h"

namespace Controller {

/// How many mounts are in each state.
class MountStateCounts {
 public:
  std::uint32_t of(MountState state) const { return count_[static_cast<std::size_t>(state)]; }
  void add(MountState state) { ++count_[static_cast<std::size_t>(state)]; }
  void remove(MountState state) { --count_[static_cast<std::size_t>(state)]; }

 private:
  std::array<std::uint32_t, kMountStates> count_{};
};

/// The mount of one path from one switch, as the services see it. A member of the group's status,
/// which counts its members by state.
class MountStatus : public Orm::Entity, private Kobble::Counted<MountStatus> {
 public:
  struct Attr {
    enum : Orm::AttributeId { mountState, mountedPath };
  };

  /// `counts`: of the group that it becomes a member of.
  MountStatus(Orm::String path, MountStateCounts* counts)
      : path_(std::move(path)), counts_(counts) {
    counts_->add(mountState());
  }

  /// The remote path.
  const Orm::String& path() const { return path_; }

  MountState mountState() const { return static_cast<MountState>(ownByte_); }
  void mountStateIs(MountState state) {
    if (state == mountState()) return;
    if (counts_) {
      counts_->remove(mountState());
      counts_->add(state);
    }
    assign(ownByte_, static_cast<std::uint8_t>(state), Attr::mountState);
  }

  /// Where the switch's copy stands in the state store; empty until it was mounted once.
  const Fennix::ChildPath& mountedPath() const { return mountedPath_; }
  void mountedPathIs(Fennix::ChildPath path) {
    assign(mountedPath_, std::move(path), Attr::mountedPath);
  }

 private:
  friend class ServiceMountGroupStatus;

  void leaveGroup() {
    counts_->remove(mountState());
    counts_ = nullptr;
  }

  Orm::String path_;
  Fennix::ChildPath mountedPath_;
  MountStateCounts* counts_;  // null once it has left the group
};

static_assert(sizeof(MountStatus) == 56);

}  // namespace Controller
