#pragma once

#include <cstdint>

#include "Controllerdb/MountsRegistry/Mounter.h"
#include "Platform/Orm/Reactor.h"
#include "Platform/Orm/Sm.h"

namespace Controller {

class MountsRegistryEntrySm;

/// The machine of one mounter of a mount entry: folds the system and version filters of the
/// mounter's group into the entry's union filters, and follows them.
///
/// A child of the entry's machine, which calls doCleanup before it lets the machine go. Loop
/// thread only. It withdraws from the union what it has itself put in and nothing else, so that a
/// system's count is always the number of mounters that include it.
class MounterConfigSm : public Orm::Sm, private Kobble::Counted<MounterConfigSm> {
 public:
  /// Reacts to the filters that the group has.
  class OrmMountGroupConfig final
      : public Orm::ReactorOn<ServiceMountGroupConfig, MounterConfigSm> {
   public:
    explicit OrmMountGroupConfig(MounterConfigSm* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
  };

  /// Reacts to the members of the group's system filter.
  class OrmSystemFilter final : public Orm::ReactorOn<MountFilterSystem, MounterConfigSm> {
   public:
    explicit OrmSystemFilter(MounterConfigSm* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
    void handleInitialized() { handleIncludedSystem(); }
    void handleIncludedSystem();
    void handleIncludedSystem(const Orm::String& system);

   private:
    void foldedIs(std::uint64_t changes);

    static constexpr std::uint64_t kNothing = ~std::uint64_t{0};
    std::uint64_t folded_ = kNothing;  // the changes() of the filter up to which the union has all
  };

  /// Reacts to the members of the group's version filter.
  class OrmVersionFilter final : public Orm::ReactorOn<MountFilterServiceVersion, MounterConfigSm> {
   public:
    explicit OrmVersionFilter(MounterConfigSm* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
    void handleInitialized() { handleIncludedServiceVersion(); }
    void handleIncludedServiceVersion();
    void handleIncludedServiceVersion(std::uint32_t version);
  };

  MounterConfigSm(Orm::Ptr<Mounter> mounter, MountsRegistryEntrySm* parent);

  const Orm::Ptr<Mounter>& mounter() const { return mounter_; }
  const Orm::String& serviceName() const { return mounter_->serviceName(); }
  MountsRegistryEntrySm* parent() const { return parent_; }

  /// Registers on what it watches and deals with what is present. Once, by the parent, which holds
  /// the machine by then, so that whoever is told of what it does may take it away again.
  void start();

  void hasNotificationActiveIs(bool active) override;

  /// Points the reactor at the filter and folds its members in; null takes the reactor away.
  void systemFilterIs(const Orm::Ptr<MountFilterSystem const>& filter);
  void systemFilterDel() { systemFilter_.notifierIs(nullptr); }
  void versionFilterIs(const Orm::Ptr<MountFilterServiceVersion const>& filter);
  void versionFilterDel() { versionFilter_.notifierIs(nullptr); }

  /// All of the group's system filter is in the union: when there is nothing else, they are the
  /// same.
  void systemFilterIsFolded(const Orm::Ptr<MountFilterSystem const>& filter);
  void addSystemToConnectionFilter(const Orm::String& system);
  void removeSystemFromConnectionFilter(const Orm::String& system);
  void addVersionToVersionFilter(std::uint32_t version);
  void removeVersionFromVersionFilter(std::uint32_t version);

  /// The group's system filter, or its version filter, is another one, or none: what came from
  /// the old one is withdrawn, the new one is folded in, and the entry decides once.
  void handleSystemFilter();
  void handleVersionFilter();

  /// Withdraws what the mounter has put into the union filters and deletes the status that it
  /// caused. Harmless when repeated.
  void doCleanup();

 private:
  const Orm::Ptr<MountFilterSystem const>& groupSystemFilter() const;
  const Orm::Ptr<MountFilterServiceVersion const>& groupVersionFilter() const;
  void withdrawSystems();
  void withdrawVersions();
  bool isReplaced() const;
  void deleteMountStatus();
  void deleteMountStatus(SystemStatus& system);
  void redecide();

  Orm::Ptr<Mounter> mounter_;
  MountsRegistryEntrySm* parent_;
  OrmMountGroupConfig mountGroupConfig_;
  OrmSystemFilter systemFilter_;
  OrmVersionFilter versionFilter_;
  /// The systems that this mounter is counted for in the entry's connection filter.
  Orm::ValueCollection<Orm::String, bool> contributed_;
  bool refolding_ = false;  // a filter is being exchanged: decide once, at the end
  bool cleanedUp_ = false;
};

/// Makes the machine of a mounter, as a child of the entry's machine.
Orm::Ptr<MounterConfigSm> mounterConfigSmFactory(const Orm::Ptr<Mounter>& mounter,
                                                 MountsRegistryEntrySm* parent);

}  // namespace Controller
