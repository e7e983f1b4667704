#pragma once

#include "Controllerdb/InitialMountSm/ConnectionPeriod.h"
#include "Controllerdb/InitialMountSm/InitialSwitchSet.h"
#include "Controllerdb/InitialMountSm/ServiceInitialMountSm.h"
#include "Platform/Entities/ControllerOob/Config.h"
#include "Platform/Entities/ControllerOob/Status.h"
#include "Platform/Fennix/Dir.h"
#include "Platform/Orm/Clock.h"

namespace Controller {

/// The root of the initial-mount tracking, one of the three machines that a controller process
/// makes.
///
/// It decides when the switches that were going to connect have connected (the connection period
/// ends three heartbeats after the last switch that was new), and keeps one ServiceInitialMountSm
/// per service that has both a mount configuration and a mount status.
///
/// The controller process owns it and keeps its inputs longer than it. Loop thread only. A peer
/// that comes costs O(1).
class InitialMountSm : public Orm::Sm, private Kobble::Counted<InitialMountSm> {
 public:
  /// Heartbeats without a new switch that end the connection period.
  static constexpr double kTimeoutHeartbeatMultiple = 3.0;

  /// Reacts to the members of the mount configuration and mount status directories.
  class OrmServiceDir final : public Orm::ReactorOn<Fennix::Dir, InitialMountSm> {
   public:
    explicit OrmServiceDir(InitialMountSm* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
  };

  /// Reacts to the peers.
  class OrmPeerTable final : public Orm::ReactorOn<PeerTable, InitialMountSm> {
   public:
    explicit OrmPeerTable(InitialMountSm* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;

   private:
    void onNotifier() override { owner()->handlePeer(); }
  };

  /// The end of the connection period.
  class OrmConnectionClock final : public Orm::ClockReactor<InitialMountSm> {
   public:
    explicit OrmConnectionClock(InitialMountSm* owner) : ClockReactor(owner) {}

   private:
    void onClock() override { owner()->handleConnectionTimeout(); }
  };

  InitialMountSm(Orm::Ptr<Fennix::Dir const> mountConfigDir, Orm::Ptr<Fennix::Dir> mountStatusDir,
                 Orm::Ptr<ControllerOob::Config const> oobConfig,
                 Orm::Ptr<ControllerOob::Status const> oobStatus,
                 Orm::Ptr<Controllerdb::Status const> controllerdbStatus);
  ~InitialMountSm() override;

  void hasNotificationActiveIs(bool active) override;

  void handleInitialized();
  void handleServiceMount(const Orm::String& serviceName);
  void handleServiceMount();
  void handlePeer(const SystemId& systemId);
  void handlePeer();
  void handleConnectionTimeout();

  Orm::Ptr<Heartbeat::Config const> heartbeatConfig() const;
  /// 0 without a heartbeat configuration.
  Orm::Seconds heartbeatInterval() const;

  // ---- what it owns

  const Orm::Ptr<ConnectionPeriod>& connectionPeriod() const { return connectionPeriod_; }
  const Orm::Ptr<ConnectionPeriod>& connectionPeriodIs();
  void connectionPeriodDel() { connectionPeriod_ = nullptr; }

  const Orm::Ptr<InitialSwitchSet>& initialSwitchSet() const { return initialSwitchSet_; }
  const Orm::Ptr<InitialSwitchSet>& initialSwitchSetIs();
  void initialSwitchSetDel() { initialSwitchSet_ = nullptr; }

  /// The deadline of the connection period.
  const OrmConnectionClock& connectionClock() const { return connectionClock_; }
  void connectionClockIs(const Orm::Ptr<Orm::Clock>& clock) { connectionClock_.notifierIs(clock); }
  void connectionClockDel() { connectionClock_.notifierIs(nullptr); }

  void peerTableIs(const Orm::Ptr<PeerTable>& table) { peerTable_.notifierIs(table); }
  void peerTableDel() { peerTable_.notifierIs(nullptr); }

  using ServiceInitialMountSms =
      Orm::Collection<Orm::Ptr<ServiceInitialMountSm>, &ServiceInitialMountSm::key>;
  const ServiceInitialMountSms& serviceInitialMountSm() const { return serviceInitialMountSm_; }
  /// Null when the service was taken away, or is being made by a caller, while it is made.
  Orm::Ptr<ServiceInitialMountSm> serviceInitialMountSmIs(
      const Orm::String& name, const Orm::Ptr<ServiceMountConfig const>& config,
      const Orm::Ptr<ServiceMountStatus>& status,
      const Orm::Ptr<ConnectionPeriod const>& connectionPeriod,
      const Orm::Ptr<ControllerOob::Status const>& oobStatus,
      const Orm::Ptr<Controllerdb::Status const>& controllerdbStatus);
  /// Cleans the machine up and lets it go.
  void serviceInitialMountSmDel(const Orm::String& name);

 private:
  Orm::Ptr<Fennix::Dir const> mountConfigDir_;
  Orm::Ptr<Fennix::Dir> mountStatusDir_;
  Orm::Ptr<ControllerOob::Config const> oobConfig_;
  Orm::Ptr<ControllerOob::Status const> oobStatus_;
  Orm::Ptr<Controllerdb::Status const> controllerdbStatus_;

  OrmServiceDir ormMountConfigDir_;
  OrmServiceDir ormMountStatusDir_;
  OrmPeerTable peerTable_;
  OrmConnectionClock connectionClock_;
  Orm::Ptr<ConnectionPeriod> connectionPeriod_;
  Orm::Ptr<InitialSwitchSet> initialSwitchSet_;
  ServiceInitialMountSms serviceInitialMountSm_;
  bool initialized_ = false;
};

/// Makes the machine and lets it deal with everything that is present. For the controller process.
Orm::Ptr<InitialMountSm> initialMountSmFactory(
    const Orm::Ptr<Fennix::Dir const>& mountConfigDir, const Orm::Ptr<Fennix::Dir>& mountStatusDir,
    const Orm::Ptr<ControllerOob::Config const>& oobConfig,
    const Orm::Ptr<ControllerOob::Status const>& oobStatus,
    const Orm::Ptr<Controllerdb::Status const>& controllerdbStatus);

}  // namespace Controller
