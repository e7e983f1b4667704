#pragma once

#include "Controllerdb/InitialMountSm/InitialMountSm.h"
#include "Platform/NboAttrLog/ConnectionDir.h"
#include "Platform/NboAttrLog/DemuxerManager.h"
#include "Test/Support/ControllerFixture.h"

namespace Support {

/// The small controller with the machine of the initial mounts, whose inputs the test writes
/// itself: what the mount side would say of each switch, and what the attribute log does.
///
///     service("Topology").group("default");
///     startInitialMounts();
///     connect(kLeaf1);
///     owes(kLeaf1, "Topology", "default");
///     run(kPeriod);                               // the connection period ends
///     reports(kLeaf1, "Topology", "default", MountState::mounted);
///     EXPECT_TRUE(isComplete("Topology", "default"));
class InitialMountFixture : public ControllerFixture {
 protected:
  static constexpr const char* kLeaf1 = "02:00:00:00:00:01";
  static constexpr const char* kLeaf2 = "02:00:00:00:00:02";
  static constexpr const char* kLeaf3 = "02:00:00:00:00:03";
  static constexpr const char* kPath = "topology/status";
  static constexpr Orm::Seconds kHeartbeat = 5;
  /// From the last new switch to the end of the connection period.
  static constexpr Orm::Seconds kPeriod =
      Controller::InitialMountSm::kTimeoutHeartbeatMultiple * kHeartbeat;

  InitialMountFixture();
  ~InitialMountFixture() override;

  // ---- the machines

  Controller::InitialMountSm& startInitialMounts();
  void stopInitialMounts() { initialSm_ = nullptr; }
  Controller::InitialMountSm& initialSm() const { return *initialSm_; }
  bool isPeriodComplete() const { return initialSm_->connectionPeriod()->complete(); }
  /// Null when there is none.
  Controller::ServiceInitialMountSm* serviceSm(const Orm::String& service) const;
  Controller::MountGroupInitialMountSm* groupSm(const Orm::String& service,
                                                const Orm::String& group) const;
  bool isRemaining(const char* system, const Orm::String& service, const Orm::String& group) const;

  // ---- the entities

  const Orm::Ptr<ControllerOob::Config>& oobConfig() const { return oobConfig_; }
  Controller::ServiceMountStatus& mountStatusOf(const Orm::String& service) const;
  bool isComplete(const Orm::String& service, const Orm::String& group) const {
    return mountStatusOf(service).initialMountsComplete().value(group);
  }
  /// Only the peer: what a switch is beyond that does not matter here.
  void peerComes(const char* system) const {
    peerTable().peerIs(systemId(system), address(systemId(system)));
  }
  void peerGoes(const char* system) const { peerTable().peerDel(systemId(system)); }

  // ---- what the mount side says

  /// The group's status on the switch, made when it is not there.
  Controller::ServiceMountGroupStatus& status(const char* system, const Orm::String& service,
                                              const Orm::String& group) const;
  /// The mount side has looked at the switch, and there is nothing to mount.
  void processed(const char* system, const Orm::String& service, const Orm::String& group) const {
    status(system, service, group).processedIs(true);
  }
  /// It has, and a mount is under way.
  void owes(const char* system, const Orm::String& service, const Orm::String& group) const;
  /// The group's mounts on the switch come to a state.
  void reports(const char* system, const Orm::String& service, const Orm::String& group,
               Controller::MountState state) const {
    status(system, service, group).mountStateIs(state);
  }

  // ---- the attribute log

  /// A connection that is passive and active, without a demultiplexer.
  static Orm::NboAttrLog::Connection& connection(const Orm::String& name);
  /// Such a connection with a demultiplexer, which is connected and does nothing by itself.
  static Orm::NboAttrLog::Demuxer& demuxer(const Orm::String& name);
  /// The demultiplexer reaches the round that is asked for.
  static void syncs(Orm::NboAttrLog::Demuxer& demuxer) {
    demuxer.roundIs(demuxer.mountTable()->nextRound());
  }

 private:
  Orm::Ptr<ControllerOob::Config> oobConfig_;
  Orm::Ptr<Controller::InitialMountSm> initialSm_;
};

}  // namespace Support
