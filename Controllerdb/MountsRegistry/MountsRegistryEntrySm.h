#pragma once

#include <cstdint>
#include <utility>

#include "Controllerdb/MountsRegistry/Admission.h"
#include "Controllerdb/MountsRegistry/Connection.h"
#include "Controllerdb/MountsRegistry/MounterConfigSm.h"
#include "Controllerdb/MountsRegistry/MountsRegistryEntry.h"
#include "Controllerdb/MountsRegistry/ServiceVersionFilter.h"
#include "Platform/Entities/ControllerOob/Status.h"
#include "Platform/Entities/ServiceConfig/ServiceConfigDir.h"
#include "Platform/Fennix/Dir.h"
#include "Platform/Mount/MountSm.h"
#include "Platform/Orm/Clock.h"
#include "Platform/Orm/Collection.h"
#include "Platform/Orm/Reactor.h"
#include "Platform/Orm/Sm.h"

namespace Controller {

class MountsRegistrySm;

/// The machine of one mount entry: one remote path that services want mounted from the switches.
///
/// It keeps a MounterConfigSm per mounter, which fold their filters into the union filters here;
/// decides for each connection whether the path is mounted from it; makes, refreshes, remounts and
/// unmounts; turns the mounts' reports into the services' mount status; and reports mounts that
/// take too long.
///
/// A child of MountsRegistrySm, which calls handleSwitchConnection on every change of a connection
/// and doCleanup before it lets the machine go. Loop thread only. Deciding one connection costs
/// O(mounters) and neither formats, parses nor allocates when nothing changes; deciding all costs
/// that for each peer.
class MountsRegistryEntrySm : public Orm::Sm, private Kobble::Counted<MountsRegistryEntrySm> {
 public:
  /// Reacts to the entry's mounters.
  class OrmMountsRegistryEntry final
      : public Orm::ReactorOn<MountsRegistryEntry, MountsRegistryEntrySm> {
   public:
    explicit OrmMountsRegistryEntry(MountsRegistryEntrySm* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
  };

  /// The entry's one mount timer.
  class OrmTimeoutClock final : public Orm::ClockReactor<MountsRegistryEntrySm> {
   public:
    explicit OrmTimeoutClock(MountsRegistryEntrySm* owner) : ClockReactor(owner) {}

   private:
    void onClock() override { owner()->handleMountTimeout(); }
  };

  /// One mount from one system: holds its record and its mount machine, and reacts to the record's
  /// state once the machine has been made.
  class OrmMountSmDataSm final : public Orm::ReactorOn<MountSmData, MountsRegistryEntrySm>,
                                 private Kobble::Counted<OrmMountSmDataSm> {
   public:
    /// Silent until the mount machine has been made: a group must not count as processed for a
    /// switch before its mount has been asked for.
    OrmMountSmDataSm(MountsRegistryEntrySm* owner, Orm::Ptr<MountSmData> mountSmData)
        : ReactorOn(owner, std::move(mountSmData)) {}
    ~OrmMountSmDataSm() override = default;

    const SystemId& systemId() const { return record().systemId(); }
    /// The record; the mount machine writes it, so it is handed out to be written.
    Orm::Ptr<MountSmData> mountSmData() const { return const_cast<MountSmData*>(notifier()); }
    /// Null until it has been made, and once it has been let go.
    const Orm::Ptr<MountSm>& mountSm() const { return mountSm_; }
    /// The last state seen.
    MountState lastMountState() const { return lastMountState_; }

    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
    void handleMountState();
    template <bool kTraced = true>
    void handleMountStateTimer();

   private:
    friend class MountsRegistryEntrySm;

    template <bool kTraced>
    [[gnu::flatten]] void handleMountState();

    const MountSmData& record() const { return *notifier(); }

    // These three lie in the base's padding.
    MountState lastMountState_ = MountState::unmounted;
    bool askedAgain_ = false;  // since the mounters were told of the last state
    bool leaving_ = false;     // its switch has gone or was refused when it was decided last
    Orm::Ptr<MountSm> mountSm_;
  };
  static_assert(sizeof(OrmMountSmDataSm) == 40);

  /// Seconds until a slow or failed mount is reported.
  static constexpr std::uint32_t kTimeoutPeriod = 300;
  /// What "no limit" is to the mount machine.
  static constexpr std::int32_t kNoTimeout = 2147483647;
  static constexpr std::uint32_t kNoRetryLimit = 4294967295;

  MountsRegistryEntrySm(Orm::Ptr<MountsRegistryEntry> registryEntry,
                        Orm::Ptr<ControllerOob::Status const> oobStatus,
                        Orm::Ptr<ServiceConfigDir const> serviceConfigDir,
                        Orm::Ptr<Fennix::Dir> directory, MountsRegistrySm* mountsRegistrySm);
  ~MountsRegistryEntrySm() override;

  const Orm::Ptr<MountsRegistryEntry>& registryEntry() const { return registryEntry_; }
  /// The remote path.
  const Orm::String& entryName() const { return registryEntry_->name(); }
  MountsRegistrySm* mountsRegistrySm() const { return mountsRegistrySm_; }
  /// Grows from machine to machine of a registry machine.
  std::uint64_t order() const { return order_; }
  bool initialized() const { return initialized_; }

  /// Registers on what it watches and deals with what is present. Once, by the parent, which holds
  /// the machine by then, so that whoever is told of what it does may take it away again.
  void start();

  void hasNotificationActiveIs(bool active) override;

  // ---- reactions

  void handleMounter(const Orm::String& serviceName);
  void handleMounter();
  void handleSwitchConnection(const SystemId& systemId);
  void handleSwitchConnection(const Connection& connection);
  /// Every peer; nothing before the machine is initialized.
  void handleSwitchConnection();
  void handleNamedSwitchConnection(const Orm::String& systemName);
  /// Fetches the mount from a system into the caches. Called for all entries that are about to
  /// decide it: each has its mount elsewhere, and so the waits for them overlap. O(1), decides
  /// nothing.
  void fetchMount(const SystemId& systemId) const {
    const OrmMountSmDataSm* const mount = mountSmDataSm_.probable(systemId, lastMount_);
    if (!mount) return;
    __builtin_prefetch(mount->notifier());
    __builtin_prefetch(mount->mountSm().get());
  }
  void handleMountTimeout();
  /// A mounter's group has other filters than before.
  void handleMounterFilters();

  // ---- admission

  bool wildcard() const { return wildcard_; }
  void evaluateMounters();
  bool canMountFromConnection(const Orm::String& connection);
  bool connectionMatchesVersionFilter(const Orm::String& connection);
  bool matchingServiceVersionFilter(const Orm::String& serviceName, const Orm::String& connection);
  bool mounterIsInterestedInConnection(const Mounter& mounter, const Orm::String& connection);
  template <bool kTraced = true>
  bool mounterIsInterestedInConnection(const Mounter& mounter, const Connection& connection) {
    return interestOf<kTraced>(mounter, connection) == Admission::admitted;
  }

  /// Whether a system was admitted when it was decided last, and if not, what speaks against it
  /// now; for a system from which the entry is mounted, how the mounter's own filters see it. For
  /// reports: nothing is kept of refusals, so that this decides again, without a trace.
  Admission admission(const SystemId& systemId) const;
  Admission mounterAdmission(const Mounter& mounter, const SystemId& systemId) const;

  // ---- the union filters, maintained by the mounter machines

  using ConnectionFilter = Orm::ValueCollection<Orm::String, std::uint32_t>;
  using VersionFilter =
      Orm::Collection<Orm::Ptr<ServiceVersionFilter>, &ServiceVersionFilter::serviceName>;

  /// How many mounters include a system, by its name.
  const ConnectionFilter& connectionFilter() const { return connectionFilter_; }
  void connectionFilterIs(const Orm::String& system, std::uint32_t count) {
    sameAsUnion_ = nullptr;
    connectionFilter_.set(system, count);
  }
  void connectionFilterDel(const Orm::String& system) {
    sameAsUnion_ = nullptr;
    connectionFilter_.erase(system);
  }
  /// The union has the same systems as `filter` has now. Until either changes, decisions ask the
  /// filter, which is one for all paths of a group, and not the union, which each entry has for
  /// itself, so that it has not been touched since the entry's last decision.
  void connectionFilterIsSameAs(const Orm::Ptr<MountFilterSystem const>& filter) {
    sameAsUnion_ = filter;
    sameAsOf_ = filter->changes();
  }

  /// The versions that the mounters accept, by service.
  const VersionFilter& versionFilter() const { return versionFilter_; }
  Orm::Ptr<ServiceVersionFilter> versionFilterIs(const Orm::String& serviceName);
  void versionFilterDel(const Orm::String& serviceName) { versionFilter_.take(serviceName); }

  // ---- acting on a connection

  void doConnectSwitch(const SystemId& systemId) { doConnectSwitch(Connection(systemId)); }
  void doDisconnectSwitch(const SystemId& systemId) { doDisconnectSwitch(Connection(systemId)); }
  void doConnectSwitch(const Connection& connection) {
    const Orm::Ptr<Peer const> connected(peer(connection.systemId));
    doConnectSwitch<true>(connection, connected.get());
  }
  template <bool kTraced = true>
  void doDisconnectSwitch(const Connection& connection);
  bool preserveMountsOnDisconnect(const Connection& connection);

  // ---- status

  template <bool kTraced = true>
  void updateMountersStatus(const Connection& connection, MountState state);
  template <bool kTraced = true>
  void updateMounterStatus(const Mounter& mounter, const Connection& connection, MountState state);
  template <bool kTraced = true>
  void handleMountState(const Mounter& mounter, const Connection& connection, MountState state);
  template <bool kTraced = true>
  void updateMountGroupMountState(const ServiceMountGroupConfig& mountGroupConfig,
                                  ServiceMountGroupStatus& mountGroupStatus,
                                  MountState state) const;
  template <bool kTraced = true>
  void updateSystemStatus(const Connection& connection);

  // ---- the mount timer

  std::uint32_t timeoutPeriod() const { return timeoutPeriod_; }
  template <bool kTraced = true>
  void startMountTimer();
  const OrmTimeoutClock& timeoutClock() const { return timeoutClock_; }
  void timeoutClockIs(const Orm::Ptr<Orm::Clock>& clock);
  void timeoutClockDel();

  /// Ends everything that the entry has: mounters, mounts, the timer. Harmless when repeated.
  void doCleanup();

  // ---- children

  using MounterConfigSms =
      Orm::Collection<Orm::Ptr<MounterConfigSm>, &MounterConfigSm::serviceName>;
  const MounterConfigSms& mounterConfigSm() const { return mounterConfigSm_; }
  Orm::Ptr<MounterConfigSm> mounterConfigSmIs(const Orm::Ptr<Mounter>& mounter);
  /// Cleans the mounter's machine up and lets it go.
  void mounterConfigSmDel(const Orm::String& serviceName);

  MountSm* mountSm(const SystemId& systemId) const;
  /// Makes the mount's machine, which asks for it.
  static void mountSmIs(OrmMountSmDataSm& mount, const MountRequest& request);
  void mountSmDel(const SystemId& systemId) const;

  Orm::Ptr<MountSmData> mountSmData(const SystemId& systemId) const;
  Orm::Ptr<MountSmData> mountSmDataIs(const SystemId& systemId, const Orm::String& text);
  void mountSmDataDel(const SystemId& systemId);

  OrmMountSmDataSm* mountSmDataSm(const SystemId& systemId) const {
    return mountSmDataSm_.find(systemId, lastMount_);
  }
  /// Lets the record's reactor see its state, now and from now on.
  template <bool kTraced = true>
  static void mountSmDataSmIs(OrmMountSmDataSm& mount);
  void mountSmDataSmDelAll();

  /// The mounts, one record a system, in the order in which they came.
  using MountSmDataSms = Orm::Collection<Orm::Owned<OrmMountSmDataSm>, &OrmMountSmDataSm::systemId>;
  const MountSmDataSms& mountSmDataSm() const { return mountSmDataSm_; }

 private:
  void handleInitialized();

  Peer* peer(const SystemId& systemId) const {
    const Orm::Ptr<PeerTable>& table = oobStatus_->peerTable();
    return table ? table->peer(systemId) : nullptr;
  }
  Connection connectionOf(const SystemId& systemId) const;
  void indexMounter(const Orm::String& serviceName);
  void leaveIndex();
  bool hasMounterOf(const Orm::String& realServiceName) const;

  // What a decision and a report go through, with statements of traces and without.
  template <bool kTraced>
  [[gnu::flatten]] void handleSwitchConnection(const Connection& connection);
  template <bool kTraced>
  Admission decide(const Peer& connected, const Connection& connection) const;
  template <bool kTraced>
  Admission decide(const Connection& connection) const;
  template <bool kTraced>
  bool hasNegotiatedVersion(const Connection& connection) const;
  template <bool kTraced>
  bool connectionMatchesVersionFilter(const Connection& connection) const;
  template <bool kTraced>
  bool matchingServiceVersionFilter(const Orm::String& serviceName,
                                    const Connection& connection) const;
  template <bool kTraced>
  Admission interestOf(const Mounter& mounter, const Connection& connection) const;
  template <bool kTraced>
  void doConnectSwitch(const Connection& connection, const Peer* connected);
  template <bool kTraced>
  void startMount(const Connection& connection, const Peer& peer, OrmMountSmDataSm* mount);
  template <bool kTraced>
  void handleMountState(const Mounter& mounter, const Connection& connection, MountState state,
                        ServiceMountGroupStatus& groupStatus, MountStatus* mountStatus);
  template <bool kTraced>
  void updateSystemStatus(const Connection& connection, bool known);
  template <bool kTraced>
  void updateSystemStatus(const Mounter& mounter, const Connection& connection, bool known);

  bool isInConnectionFilter(const Orm::String& system) const {
    if (sameAsUnion_ && sameAsUnion_->changes() == sameAsOf_) return sameAsUnion_->includes(system);
    return connectionFilter_.value(system, lastIncluded_) != 0;
  }
  bool hasSystemStatus(const Connection& connection) const;
  OrmMountSmDataSm& newMount(const SystemId& systemId, const Orm::String& text);
  const Orm::Ptr<Fennix::Dir>& prefixDir();
  void handleMountTimeout(const OrmMountSmDataSm& mount) const;
  Orm::String displayName(const SystemId& systemId) const;

  // First what each decision and each report reads, so that it lies in few cache lines.
  bool wildcard_ = false;
  bool initialized_ = false;
  Orm::Ptr<MountsRegistryEntry> registryEntry_;
  MountsRegistrySm* mountsRegistrySm_;
  Orm::Ptr<ControllerOob::Status const> oobStatus_;
  MountSmDataSms mountSmDataSm_;
  mutable MountSmDataSms::Hint lastMount_ = 0;
  mutable ConnectionFilter::Hint lastIncluded_ = 0;
  ConnectionFilter connectionFilter_;
  Orm::Ptr<MountFilterSystem const> sameAsUnion_;  // null: none is known
  std::uint64_t sameAsOf_ = 0;                     // its changes()
  VersionFilter versionFilter_;
  OrmTimeoutClock timeoutClock_;

  Orm::Ptr<ServiceConfigDir const> serviceConfigDir_;
  Orm::Ptr<Fennix::Dir> directory_;
  std::uint64_t order_;
  OrmMountsRegistryEntry ormMountsRegistryEntry_;
  MounterConfigSms mounterConfigSm_;
  /// The real names of the services under which the registry machine has this one indexed.
  Orm::ValueCollection<Orm::String, bool> indexedService_;
  /// The directory at the target path, as it was found when `prefixDirAsOf_` directories had left
  /// the store; see prefixDir().
  Orm::Ptr<Fennix::Dir> prefixDir_;
  std::uint64_t prefixDirAsOf_ = 0;
  std::uint32_t timeoutPeriod_ = kTimeoutPeriod;
};

/// Makes the machine of an entry, as a child of the registry machine.
Orm::Ptr<MountsRegistryEntrySm> mountsRegistryEntrySmFactory(
    const Orm::Ptr<MountsRegistryEntry>& registryEntry,
    const Orm::Ptr<ControllerOob::Status const>& oobStatus,
    const Orm::Ptr<ServiceConfigDir const>& serviceConfigDir,
    const Orm::Ptr<Fennix::Dir>& directory, MountsRegistrySm* mountsRegistrySm);

}  // namespace Controller
