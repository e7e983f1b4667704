#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>

#include "Fabric/Carrier.h"
#include "Fabric/Document.h"
#include "Fabric/DocumentTime.h"
#include "Test/Fabric/Recorder.h"

namespace FabricTest {

/// A world that a document was carried to, and a recorder of what patches change in it.
class CarrierFixture : public testing::Test {
 protected:
  static constexpr const char* kLeaf1 = "02:00:00:00:00:01";
  static constexpr const char* kLeaf2 = "02:00:00:00:00:02";

  void start(std::string_view text) {
    model_ = Fabric::Document::parse("start", text).start();
    world_ = std::make_unique<Fabric::World>(
        Fabric::ControllerView(model_.block(Fabric::Block::controller)));
    carrier_ = std::make_unique<Fabric::Carrier>(*world_, mounts_);
    carrier_->start(model_);
  }
  void apply(std::string_view patch) { carrier_->apply(model_, model_.parsePatch("patch", patch)); }
  /// What a patch changes, in order.
  Lines changes(std::string_view patch) {
    apply(patch);
    return recorder_.take();
  }

  const Fabric::World& world() const { return *world_; }
  Recorder& recorder() { return recorder_; }
  Fabric::MountSimulation& mounts() { return mounts_; }

  // ---- the entities

  static Controller::SystemId idOf(const char* system) {
    return Controller::SystemId::ofName(system);
  }
  ControllerOob::ClientStatus* clientStatus(const char* system) const {
    return world_->oobStatus()->clientStatusOfSystem(idOf(system));
  }
  Controller::Peer* peer(const char* system) const {
    return world_->peerTable()->peer(idOf(system));
  }
  Orm::Ptr<Controller::ServiceMountConfig> mountConfig(const char* service) const {
    return world_->mountConfigDir()->entityAs<Controller::ServiceMountConfig>(service);
  }
  Orm::Ptr<Controller::ServiceMountGroupConfig> mountGroup(const char* service,
                                                           const char* group) const {
    return mountConfig(service)->mountGroupConfig(group);
  }
  Orm::Ptr<Controller::ServicePublishConfig> publishConfig(const char* service) const {
    return world_->publishConfigDir()->entityAs<Controller::ServicePublishConfig>(service);
  }
  Orm::Ptr<Controller::ServicePublishGroupConfig> publishGroup(const char* service,
                                                               const char* group) const {
    return publishConfig(service)->publishGroupConfig(group);
  }
  Orm::Ptr<Orm::Entity> entity(const char* path) const { return world_->rootDir()->lookup(path); }

  // ---- watching them

  void watchDir(const char* label, const Orm::Ptr<Fennix::Dir>& dir) {
    recorder_.watch(label, dir, {"entity"});
  }
  void watchMountConfig(const char* service) {
    recorder_.watch("config", mountConfig(service), {"serviceName", "genId", "group"});
  }
  void watchMountGroup(const Orm::Ptr<Controller::ServiceMountGroupConfig>& group) {
    recorder_.watch("group", group, {"path", "systemFilter", "versionFilter", "preserve"});
  }
  void watchPublishGroup(const Orm::Ptr<Controller::ServicePublishGroupConfig>& group) {
    recorder_.watch("group", group, {"path", "dir", "systemFilter", "versionFilter"});
  }
  void watchSystems(const Orm::Ptr<Controller::MountFilterSystem const>& filter) {
    recorder_.watch("systems", filter, {"included"});
  }
  void watchVersions(const Orm::Ptr<Controller::MountFilterServiceVersion const>& filter) {
    recorder_.watch("versions", filter, {"included"});
  }

 private:
  Orm::Ptr<Orm::Clock> clock_ =
      Orm::make<Orm::Clock>(std::make_unique<Orm::VirtualTime>(Fabric::kProcessTimeAtStart));
  Fabric::MountSimulation mounts_{clock_};
  Fabric::Model model_;
  std::unique_ptr<Fabric::World> world_;
  std::unique_ptr<Fabric::Carrier> carrier_;
  Recorder recorder_;
};

}  // namespace FabricTest
