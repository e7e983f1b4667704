#pragma once

#include <functional>
#include <optional>
#include <utility>

#include "Fabric/MountStatusWatch.h"
#include "Fabric/PublishStatusWatch.h"
#include "Fabric/Simulation.h"
#include "Fabric/StatusObserver.h"
#include "Platform/Entities/PeerTable/PeerTable.h"
#include "Platform/Orm/Reactor.h"
#include "Soak/Excuses.h"
#include "Soak/Fault.h"

namespace Soak {

/// Carries a script's faults out, and applies its patches: at their time, or within a notification
/// as somebody would who changes configuration because of what was told.
///
/// Is to be made before the machines, so that it is told first. Must go before the simulation.
class Meddler final : public Fabric::StatusObserver {
 public:
  Meddler(Fabric::Simulation& simulation, Excuses& excuses);

  /// Called before and after each patch.
  void onPatchIs(std::function<void()> onPatch) { onPatch_ = std::move(onPatch); }

  /// Called within each change of a service's readiness, before a patch that waits for it.
  void onReadyIs(std::function<void(std::string_view service, bool ready)> onReady) {
    onReady_ = std::move(onReady);
  }

  /// A note that is a fault is done, other notes are not.
  void note(std::string_view text);
  /// An event's patch, which is applied now unless the event's note said otherwise.
  void apply(const Fabric::Event& event);

  void groupState(std::string_view, std::string_view, std::string_view,
                  Controller::MountState) override {
    told(Fault::Notice::groupState);
  }
  void published(std::string_view, const Controllerdb::MountDesc&) override {
    told(Fault::Notice::published);
  }
  void unpublished(std::string_view, std::string_view) override { told(Fault::Notice::published); }
  void publishReady(std::string_view service, bool ready) override {
    if (onReady_) onReady_(service, ready);
    told(Fault::Notice::publishReady);
  }
  void initialMountsComplete(std::string_view, std::string_view, bool) override {
    told(Fault::Notice::initialMountsComplete);
  }
  void pathPrefix(std::string_view, std::string_view) override { told(Fault::Notice::pathPrefix); }

 private:
  class OrmPeerTable final : public Orm::ReactorOn<Controller::PeerTable, Meddler> {
   public:
    explicit OrmPeerTable(Meddler* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId, const Orm::Key&) override {
      owner()->told(Fault::Notice::peer);
    }
  };
  class OrmMountsRegistry final : public Orm::ReactorOn<Controller::MountsRegistry, Meddler> {
   public:
    explicit OrmMountsRegistry(Meddler* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key&) override;
  };

  /// A patch that waits for its notification.
  struct Waiting {
    Fault::Notice notice;
    std::uint32_t left;
    const Fabric::Patch* patch;
  };

  void carryOut(const Fault& fault);
  void told(Fault::Notice notice);
  void toldOfPublishEntry(const Orm::String& path);
  bool mayBeTakenOver(const Orm::String& path) const;
  bool bringsOrTakesService(const Fabric::Patch& patch) const;
  bool meetsAtSwitch(const Fabric::Patch& patch) const;
  bool bringsOrTakesDirectory(const Fabric::Patch& patch) const;
  void applyWaiting();
  void applyNow(const Fabric::Patch& patch);

  Fabric::Simulation& simulation_;
  Excuses& excuses_;
  std::function<void()> onPatch_;
  std::function<void(std::string_view service, bool ready)> onReady_;
  std::optional<Fault> within_;
  std::optional<Waiting> waiting_;
  std::size_t depth_ = 0;  // of patches that are being applied

  OrmPeerTable peerTable_;
  OrmMountsRegistry mountsRegistry_;
  Fabric::MountStatusWatch mounts_;
  Fabric::MountStatusWatch proxyMounts_;
  Fabric::PublishStatusWatch publications_;
};

}  // namespace Soak
