#pragma once

#include <cstdint>

#include "Controllerdb/InitialMountSm/ConnectionPeriod.h"
#include "Controllerdb/InitialMountSm/InitialSwitchSet.h"
#include "Controllerdb/InitialMountSm/ProcessedSwitchSet.h"
#include "Controllerdb/InitialMountSm/SystemProcessedSm.h"
#include "Platform/Entities/ControllerOob/Status.h"
#include "Platform/Entities/ServiceMount/ServiceMountStatus.h"
#include "Platform/Orm/Clock.h"
#include "Platform/Orm/Collection.h"
#include "Platform/Orm/Reactor.h"
#include "Platform/Orm/Sm.h"

namespace Controller {

/// Decides for one mount group whether the mounts that were owed are done.
///
/// Its way: wait for the connection period to end; take a snapshot of the peers; wait until as
/// many switches have been processed as the snapshot has; remember the switches of the snapshot
/// whose mounts are outstanding and wait for each of them, for the mount window at the most; ask
/// the passive attribute logs for a new round and wait for it, for the flush timeout at the most;
/// report the group complete in the service's mount status.
///
/// A child of ServiceInitialMountSm, which calls doCleanup before it lets the machine go; that may
/// happen while one of the machine's own handlers is on the stack. A new machine starts from the
/// beginning. Loop thread only. A switch that is processed costs O(1); the snapshot and the
/// outstanding switches cost the switches once.
class MountGroupInitialMountSm : public Orm::Sm, private Kobble::Counted<MountGroupInitialMountSm> {
 public:
  /// How long outstanding switches are waited for.
  static constexpr Orm::Seconds kMountWindow = 240.0;
  /// How long the attribute log's flush is waited for, and how often it is looked at.
  static constexpr Orm::Seconds kAttrlogFlushTimeout = 120.0;
  static constexpr Orm::Seconds kAttrlogFlushWaitPeriod = 1.0;
  static_assert(kAttrlogFlushWaitPeriod > 0 && kAttrlogFlushWaitPeriod < kAttrlogFlushTimeout);

  /// Reacts to the end of the connection period.
  class OrmConnectionPeriod final
      : public Orm::ReactorOn<ConnectionPeriod, MountGroupInitialMountSm> {
   public:
    explicit OrmConnectionPeriod(MountGroupInitialMountSm* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
  };

  /// Reacts to the switches of which the service has a status.
  class OrmServiceMountStatus final
      : public Orm::ReactorOn<ServiceMountStatus, MountGroupInitialMountSm> {
   public:
    explicit OrmServiceMountStatus(MountGroupInitialMountSm* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
  };

  /// Reacts to switches that are processed.
  class OrmProcessedSwitchSet final
      : public Orm::ReactorOn<ProcessedSwitchSet, MountGroupInitialMountSm> {
   public:
    explicit OrmProcessedSwitchSet(MountGroupInitialMountSm* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
  };

  /// The mount window.
  class OrmMountClock final : public Orm::ClockReactor<MountGroupInitialMountSm> {
   public:
    explicit OrmMountClock(MountGroupInitialMountSm* owner) : ClockReactor(owner) {}

   private:
    void onClock() override { owner()->handleMountTimeout(); }
  };

  /// The poll of the attribute log's flush.
  class OrmAttrlogFlushTimer final : public Orm::ClockReactor<MountGroupInitialMountSm> {
   public:
    explicit OrmAttrlogFlushTimer(MountGroupInitialMountSm* owner) : ClockReactor(owner) {}

   private:
    void onClock() override { owner()->handleAttrlogFlushTimer(); }
  };

  /// A switch whose mounts for the group are outstanding: reacts to the state of the group on it.
  /// Watches the group's status and, while the switch has none, the switch's.
  class OrmRemainingSwitch final : public Orm::Reactor,
                                   private Kobble::Counted<OrmRemainingSwitch> {
   public:
    OrmRemainingSwitch(MountGroupInitialMountSm* owner, Orm::Ptr<SystemStatus const> systemStatus);

    const Orm::String& systemName() const { return systemStatus_->name(); }
    const SystemStatus& systemStatus() const { return *systemStatus_; }
    /// Null while the switch has none.
    const ServiceMountGroupStatus* serviceMountGroupStatus() const {
      if (watched() == systemStatus_.get()) return nullptr;
      return static_cast<const ServiceMountGroupStatus*>(watched());
    }

    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
    void handleMountState();
    /// Watches what is to be watched now.
    void handleServiceMountGroupStatus();

   private:
    MountGroupInitialMountSm& owner() const {
      return *static_cast<MountGroupInitialMountSm*>(rawOwner());
    }

    Orm::Ptr<SystemStatus const> systemStatus_;
  };
  static_assert(sizeof(OrmRemainingSwitch) == 40);

  /// Reacts to the states of all other groups on a remaining switch. Nothing follows from them but
  /// a trace: there is one only where that was on when the switch was found to be remaining, since
  /// a service's groups would each watch all of them.
  class OrmOtherGroups final : public Orm::ReactorOn<SystemStatus, MountGroupInitialMountSm>,
                               private Kobble::Counted<OrmOtherGroups> {
   public:
    /// Reacts to the state of one group on the switch.
    class OrmServiceMountGroupStatus final
        : public Orm::ReactorOn<ServiceMountGroupStatus, OrmOtherGroups>,
          private Kobble::Counted<OrmServiceMountGroupStatus> {
     public:
      explicit OrmServiceMountGroupStatus(OrmOtherGroups* owner) : ReactorOn(owner) {}
      const Orm::String& groupName() const { return notifier()->groupName(); }
      void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
    };

    explicit OrmOtherGroups(MountGroupInitialMountSm* owner) : ReactorOn(owner) {}

    const Orm::String& systemName() const { return notifier()->name(); }

    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
    void handleMountState(const Orm::String& groupName);
    void notificationActiveIs(bool active);

   private:
    void onNotifier() override;
    void handleServiceMountGroupStatus(const Orm::String& groupName);

    Orm::Collection<Orm::Owned<OrmServiceMountGroupStatus>, &OrmServiceMountGroupStatus::groupName>
        groups_;
  };

  MountGroupInitialMountSm(Orm::String name, Orm::Ptr<ServiceMountStatus> serviceMountStatus,
                           Orm::Ptr<ControllerOob::Status const> oobStatus,
                           const Orm::Ptr<ConnectionPeriod const>& connectionPeriod);

  /// The mount group's name.
  const Orm::String& name() const { return name_; }

  /// Deals with what is present. Once, by the parent, which holds the
  /// machine by then, so that whoever is told of what it does may take it away again.
  void start();

  void hasNotificationActiveIs(bool active) override;

  // ---- reactions

  void handleInitialized();
  void handleConnectionPeriodComplete();
  void handleSystemStatus(const Orm::String& systemName);
  void handleSystemStatus();
  void handleMountState(const Orm::String& systemName, const Orm::String& groupName);
  void handleMountState();
  void handleMountTimeout();
  void handleProcessed(const Orm::String& systemName);
  void handleProcessed();
  void handleInitialMountsComplete();
  void handleAttrlogFlushTimer();

  // ---- steps

  void doPopulateRemainingSwitch();
  void doPopulateRemainingSwitch(const SystemId& systemId);
  void checkSwitchMountsPending();
  void localInitialMountsCompleteIs(bool complete);
  /// Withdraws the report of completion. Harmless when repeated.
  void doCleanup();

  // ---- where it stands; for reports

  Orm::Ptr<PeerTable> peerTable() const { return oobStatus_ ? oobStatus_->peerTable() : nullptr; }
  const Orm::Ptr<InitialSwitchSet const>& mountGroupInitialSwitchSet() const {
    return mountGroupInitialSwitchSet_;
  }
  const Orm::Ptr<ProcessedSwitchSet>& processedSwitchSetInternal() const {
    return processedSwitchSetInternal_;
  }
  bool localInitialMountsComplete() const { return localInitialMountsComplete_; }
  const Orm::Ptr<ServiceMountStatus>& serviceMountStatus() const { return serviceMountStatus_; }
  const OrmMountClock& mountClock() const { return mountClock_; }
  const OrmAttrlogFlushTimer& attrlogFlushTimer() const { return attrlogFlushTimer_; }
  Orm::Seconds attrlogFlushRemainingTime() const { return attrlogFlushRemainingTime_; }
  /// When the group was reported complete; kNever before.
  Orm::Seconds completeAt() const { return completeAt_; }

  // ---- children and nested reactors

  using RemainingSwitches =
      Orm::Collection<Orm::Owned<OrmRemainingSwitch>, &OrmRemainingSwitch::systemName>;
  const RemainingSwitches& remainingSwitch() const { return remainingSwitch_; }
  void remainingSwitchIs(const Orm::Ptr<SystemStatus const>& systemStatus);
  void remainingSwitchDel(const Orm::String& systemName);
  void remainingSwitchDelAll();

  using SystemProcessedSms =
      Orm::Collection<Orm::Ptr<SystemProcessedSm>, &SystemProcessedSm::systemName>;
  /// A machine that has put its switch into the set can do nothing more, and goes. That of a switch
  /// which comes back, and is in the set already, stays.
  const SystemProcessedSms& systemProcessedSm() const { return systemProcessedSm_; }
  Orm::Ptr<SystemProcessedSm> systemProcessedSmIs(
      const Orm::String& systemName, const Orm::String& groupName,
      const Orm::Ptr<SystemStatus const>& systemStatus,
      const Orm::Ptr<ProcessedSwitchSet>& processedSwitchSet);
  void systemProcessedSmDel(const Orm::String& systemName) { systemProcessedSm_.take(systemName); }
  void systemProcessedSmDelAll() { systemProcessedSm_.clear(); }

  const Orm::Ptr<InitialSwitchSet const>& mountGroupInitialSwitchSetIs();
  const Orm::Ptr<ProcessedSwitchSet>& processedSwitchSetInternalIs();
  void processedSwitchSetIs(const Orm::Ptr<ProcessedSwitchSet>& set) {
    processedSwitchSet_.notifierIs(set);
  }
  void processedSwitchSetDel() { processedSwitchSet_.notifierIs(nullptr); }
  void mountClockIs(const Orm::Ptr<Orm::Clock>& clock) { mountClock_.notifierIs(clock); }
  void mountClockDel() { mountClock_.notifierIs(nullptr); }
  void attrlogFlushTimerIs(const Orm::Ptr<Orm::Clock>& clock) {
    attrlogFlushTimer_.notifierIs(clock);
  }
  void attrlogFlushTimerDel() { attrlogFlushTimer_.notifierIs(nullptr); }

 private:
  Orm::Ptr<InitialSwitchSet const> snapshot() const;
  void flushLocalPassiveEntityLogs();
  bool isLocalPassiveCurrentRoundSyncComplete();

  Orm::String name_;
  Orm::Ptr<ServiceMountStatus> serviceMountStatus_;
  Orm::Ptr<ControllerOob::Status const> oobStatus_;

  OrmConnectionPeriod connectionPeriod_;
  OrmServiceMountStatus ormServiceMountStatus_;
  OrmProcessedSwitchSet processedSwitchSet_;
  OrmMountClock mountClock_;
  OrmAttrlogFlushTimer attrlogFlushTimer_;

  Orm::Ptr<InitialSwitchSet const> mountGroupInitialSwitchSet_;
  Orm::Ptr<ProcessedSwitchSet> processedSwitchSetInternal_;
  SystemProcessedSms systemProcessedSm_;
  RemainingSwitches remainingSwitch_;
  RemainingSwitches::Hint lastRemaining_ = 0;
  Orm::Collection<Orm::Owned<OrmOtherGroups>, &OrmOtherGroups::systemName> otherGroups_;
  Orm::Seconds attrlogFlushRemainingTime_ = 0;
  Orm::Seconds completeAt_ = Orm::kNever;
  bool localInitialMountsComplete_ = false;
  bool initialized_ = false;
};

Orm::Ptr<MountGroupInitialMountSm> mountGroupInitialMountSmFactory(
    const Orm::String& name, const Orm::Ptr<ServiceMountStatus>& serviceMountStatus,
    const Orm::Ptr<ControllerOob::Status const>& oobStatus,
    const Orm::Ptr<ConnectionPeriod const>& connectionPeriod);

}  // namespace Controller
