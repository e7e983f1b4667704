#pragma once

#include <cstdint>

#include "Controllerdb/MountsRegistry/Admission.h"
#include "Controllerdb/MountsRegistry/Connection.h"
#include "Controllerdb/MountsRegistry/PublishRegistryEntry.h"
#include "Controllerdb/MountsRegistry/StorePath.h"
#include "Platform/Entities/ControllerOob/Status.h"
#include "Platform/Entities/Controllerdb/PublishStatus.h"
#include "Platform/Orm/Clock.h"
#include "Platform/Orm/Collection.h"
#include "Platform/Orm/Reactor.h"
#include "Platform/Orm/Sm.h"

namespace Controller {

class MountsRegistrySm;

/// The machine of one publish entry: one local path that a service wants published to the
/// switches.
///
/// It decides for each connection whether the path is published to it, records the publication in
/// the controller database's publish status or takes it out again, and looks once a second for a
/// local entity that is not there yet.
///
/// A child of MountsRegistrySm, which calls handleSwitchConnection on every change of a connection
/// and doCleanup before it lets the machine go. Loop thread only. Deciding one connection costs
/// O(1) besides a lookup of the local path, and formats nothing; deciding all costs that for each
/// peer.
class PublishRegistryEntrySm : public Orm::Sm, private Kobble::Counted<PublishRegistryEntrySm> {
 public:
  /// Reacts to the entry.
  class OrmPublishRegistryEntry final
      : public Orm::ReactorOn<PublishRegistryEntry, PublishRegistryEntrySm> {
   public:
    explicit OrmPublishRegistryEntry(PublishRegistryEntrySm* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
  };

  /// Reacts to the members of the entry's system filter.
  class OrmSystemFilter final : public Orm::ReactorOn<MountFilterSystem, PublishRegistryEntrySm> {
   public:
    explicit OrmSystemFilter(PublishRegistryEntrySm* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
    void handleIncludedSystem();
    void handleIncludedSystem(const Orm::String& system);
  };

  /// Reacts to the members of the entry's version filter.
  class OrmVersionFilter final
      : public Orm::ReactorOn<MountFilterServiceVersion, PublishRegistryEntrySm> {
   public:
    explicit OrmVersionFilter(PublishRegistryEntrySm* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
    void handleIncludedServiceVersion();
    void handleIncludedServiceVersion(std::uint32_t version);
  };

  /// The re-check of a local entity that is missing.
  class OrmEntityPresenceCheckClock final : public Orm::ClockReactor<PublishRegistryEntrySm> {
   public:
    explicit OrmEntityPresenceCheckClock(PublishRegistryEntrySm* owner) : ClockReactor(owner) {}

   private:
    void onClock() override { owner()->handleEntityPresenceCheckClock(); }
  };

  /// Until a missing local entity is looked for again.
  static constexpr Orm::Seconds kEntityCheckInterval = 1.0;
  /// The flags of every publication.
  static constexpr const char* kMountFlags = "rti";

  PublishRegistryEntrySm(Orm::Ptr<PublishRegistryEntry> publishEntry,
                         Orm::Ptr<ControllerOob::Status const> oobStatus,
                         Orm::Ptr<Controllerdb::PublishStatus> controllerdbPublishStatus,
                         MountsRegistrySm* mountsRegistrySm);
  ~PublishRegistryEntrySm() override;

  const Orm::Ptr<PublishRegistryEntry>& publishEntry() const { return publishEntry_; }
  /// The local path.
  const Orm::String& entryName() const { return publishEntry_->name(); }
  MountsRegistrySm* mountsRegistrySm() const { return mountsRegistrySm_; }
  /// Grows from machine to machine of a registry machine.
  std::uint64_t order() const { return order_; }
  bool initialized() const { return initialized_; }

  /// Registers on what it watches and deals with what is present. Once, by the parent, which holds
  /// the machine by then, so that whoever is told of what it does may take it away again.
  void start();

  void hasNotificationActiveIs(bool active) override;

  // ---- reactions

  void handleInitialized();
  void handleSwitchConnection(const SystemId& systemId);
  void handleSwitchConnection(const Connection& connection);
  /// Every peer, and then the local entity; nothing before the machine is initialized.
  void handleSwitchConnection();
  void handleReadyToPublish();
  void handleSystemFilter();
  void handleVersionFilter();
  void handleEntityPresenceCheckClock();

  // ---- decisions

  bool canPublishToConnection(const Orm::String& connection);
  bool canPublishToConnection(const Connection& connection);
  bool hasVersion(const Orm::String& connection, std::uint32_t version);
  /// The local entity stands at the entry's path, whatever its type.
  bool publishEntityExists();

  /// What was decided last for a system. For reports.
  Admission admission(const SystemId& systemId) const;

  // ---- acting on a connection

  /// The path that is published to a system: the entry's own, or of a prefix-path entry the
  /// system's child. Allocates for the latter.
  Orm::String publishedPath(const Connection& connection) const;

  void doConnectSwitch(const SystemId& systemId) { doConnectSwitch(connectionOf(systemId)); }
  void doDisconnectSwitch(const SystemId& systemId) { doDisconnectSwitch(connectionOf(systemId)); }
  void addSwitchToPublishEntryDir(const SystemId& systemId) {
    addSwitchToPublishEntryDir(connectionOf(systemId));
  }
  /// The system must be a peer that has a record, and the local entity must be there.
  void doConnectSwitch(const Connection& connection);
  void doDisconnectSwitch(const Connection& connection);
  /// Only of a prefix-path entry, whose path must be a directory.
  void addSwitchToPublishEntryDir(const Connection& connection);
  /// Records a publication, which must describe one, in place of what has its local path.
  static void publishMount(Controllerdb::SystemPublishedMount& system,
                           const Controllerdb::MountDesc& mdesc);

  // ---- the nested reactors

  void systemFilterIs(const Orm::Ptr<MountFilterSystem const>& filter);
  void systemFilterDel() { systemFilter_.notifierIs(nullptr); }
  void versionFilterIs(const Orm::Ptr<MountFilterServiceVersion const>& filter);
  void versionFilterDel() { versionFilter_.notifierIs(nullptr); }
  const OrmEntityPresenceCheckClock& entityPresenceCheckClock() const {
    return entityPresenceCheckClock_;
  }
  void entityPresenceCheckClockIs(const Orm::Ptr<Orm::Clock>& clock);
  void entityPresenceCheckClockDel() { entityPresenceCheckClock_.notifierIs(nullptr); }
  /// kNever while disarmed; an entry whose clock is armed holds its service's readiness back.
  Orm::Seconds entityPresenceCheckClockTimeMin() const {
    return entityPresenceCheckClock_.timeMin();
  }

  /// Takes the publications to all systems back and disarms the clock. Harmless when repeated.
  void doCleanup();

 private:
  Admission decide(const Peer& peer, const Connection& connection);
  Admission admissionByFilters(const Connection& connection);
  void admissionIs(const SystemId& systemId, Admission admission);
  void withdraw(Controllerdb::SystemPublishedMount& system, const Connection& connection) const;

  Peer* peer(const SystemId& systemId) const;
  Connection connectionOf(const SystemId& systemId) const;
  /// What stands at the entry's path, and at the path that is published to a system.
  Orm::Ptr<Orm::Entity> localEntity() const;
  Orm::Ptr<Orm::Entity> publishedEntity(const Connection& connection) const;
  Controllerdb::SystemPublishedMount* publishedTo(const SystemId& systemId) const;
  bool hasSuccessor() const;
  void leaveIndex();

  Orm::Ptr<PublishRegistryEntry> publishEntry_;
  Orm::Ptr<ControllerOob::Status const> oobStatus_;
  Orm::Ptr<Controllerdb::PublishStatus> controllerdbPublishStatus_;
  MountsRegistrySm* mountsRegistrySm_;
  std::uint64_t order_;
  StorePath localPath_;
  Orm::String mountFlags_;  // one text for all publications

  OrmPublishRegistryEntry ormPublishRegistryEntry_;
  OrmSystemFilter systemFilter_;
  OrmVersionFilter versionFilter_;
  OrmEntityPresenceCheckClock entityPresenceCheckClock_;
  /// Why connected systems were refused; nothing is kept of those that were admitted.
  Orm::ValueCollection<SystemId, Admission> refused_;
  bool initialized_ = false;
  bool indexed_ = true;  // under its service, in the registry machine
  bool cleanedUp_ = false;
};

Orm::Ptr<PublishRegistryEntrySm> publishRegistryEntrySmFactory(
    const Orm::Ptr<PublishRegistryEntry>& publishEntry,
    const Orm::Ptr<ControllerOob::Status const>& oobStatus,
    const Orm::Ptr<Controllerdb::PublishStatus>& controllerdbPublishStatus,
    MountsRegistrySm* mountsRegistrySm);

}  // namespace Controller
