// A controller process in small: it links the library, makes the three machines, says how mounts
// are made, and then only changes entities. Time is virtual, so that it ends at once.
#include <iostream>
#include <memory>
#include <vector>

#include "Controllerdb/InitialMountSm/InitialMountSm.h"
#include "Controllerdb/MountsRegistry/MountsRegistrySm.h"
#include "Controllerdb/ServiceConfigDirSm/ServiceConfigDirSm.h"
#include "Platform/Orm/ActivityLoop.h"
#include "Platform/Orm/ActivityManagerConfig.h"

namespace {

using Orm::Ptr;
using Orm::String;

/// A mount machine whose mounts succeed when the loop comes round to them. A real one asks the
/// switch.
class PromptMountSm final : public Controller::MountSm {
 public:
  explicit PromptMountSm(const Controller::MountRequest& request) : record_(request.mountSmData) {
    record_->mountStateIs(Controller::MountState::requested);
    std::cout << "asked for " << request.remotePath << " at " << request.mountPath() << '\n';
  }

  void arrive() { record_->mountStateIs(outcome_); }

  void doRemount() override { outcome_ = Controller::MountState::mounted; }
  void doUnmount() override { outcome_ = Controller::MountState::unmounted; }
  void doStatePreservingUnmount() override { outcome_ = Controller::MountState::unmounted; }
  void doCleanup() override {}
  bool pendingRequest() const override { return record_->mountState() != outcome_; }

 private:
  Ptr<Controller::MountSmData> record_;
  Controller::MountState outcome_ = Controller::MountState::mounted;
};

class PromptFactory final : public Controller::MountSm::Factory {
 public:
  Ptr<Controller::MountSm> mountSm(const Controller::MountRequest& request) override {
    Ptr<PromptMountSm> made = Orm::make<PromptMountSm>(request);
    made_.push_back(made);
    return made;
  }

  void arrive() {
    const std::vector<Ptr<PromptMountSm>> due = made_;
    for (const Ptr<PromptMountSm>& mount : due) mount->arrive();
  }
  void clear() { made_.clear(); }

 private:
  std::vector<Ptr<PromptMountSm>> made_;
};

void printStatus(const Controller::ServiceMountStatus& status) {
  for (const auto& system : status.systemStatus()) {
    for (const auto& group : system->serviceMountGroupStatus()) {
      for (const auto& mount : group->mountStatus()) {
        std::cout << system->name() << ' ' << mount->path() << ' '
                  << Controller::name(mount->mountState()) << ' ' << mount->mountedPath().text()
                  << '\n';
      }
    }
  }
}

int run() {
  PromptFactory factory;
  Controller::MountSm::factoryIs(&factory);
  const auto clock = Orm::make<Orm::Clock>(std::make_unique<Orm::VirtualTime>(0));
  Orm::ActivityManagerConfig::instanceIs(clock);
  Orm::ActivityLoop loop(clock);

  // What the controller process has: a state store, and the entities that the machines watch.
  const auto root = Orm::make<Fennix::Dir>();
  const auto registryDir = root->createDir("mounts");
  const auto registry = Orm::make<Controller::MountsRegistry>(registryDir, registryDir->path(),
                                                              root, String(), 0U, 0.0);
  const auto database = Orm::make<Controllerdb::Status>();
  const auto publications = Orm::make<Controllerdb::PublishStatus>();
  const auto services = Orm::make<Controller::ServiceConfigDir>();
  const auto peers = Orm::make<Controller::PeerTable>();
  const auto oob = Orm::make<ControllerOob::Status>();
  oob->peerTableIs(peers);
  const auto oobConfig = Orm::make<ControllerOob::Config>();
  const auto configDir = root->createDir("mountConfig");
  const auto statusDir = root->createDir("mountStatus");

  {
    const auto serviceConfigDirSm = Controller::serviceConfigDirSmFactory(
        database, configDir, statusDir, nullptr, nullptr, nullptr, nullptr, publications, registry);
    const auto mountsRegistrySm =
        Controller::mountsRegistrySmFactory(registry, oob, nullptr, root, publications, services);
    const auto initialMountSm =
        Controller::initialMountSmFactory(configDir, statusDir, oobConfig, oob, database);

    // A leader is known, and a service says what it wants mounted from every switch.
    database->leaderGenIdIs("gen-1");
    const auto config = Orm::make<Controller::ServiceMountConfig>();
    config->serviceNameIs("Topology");
    config->genIdIs("gen-1");
    config->mountGroupConfigIs("default")->mountConfigIs("topology/status", "Topology::Status", "r",
                                                         "");
    const auto status = Orm::make<Controller::ServiceMountStatus>();
    configDir->entityIs("Topology", config);
    statusDir->entityIs("Topology", status);

    // A switch connects and reports version 3 of the service.
    const auto systemId = *Controller::SystemId::parse("02:00:00:00:00:01");
    const Pomix::IpAddrPort address(Pomix::IpAddr::fromV4(0x0a000001), 40001);
    const auto client = oob->clientStatusIs(address, systemId);
    client->nameIs("leaf1");
    client->serviceStatusDirIs(Orm::make<Controller::ServiceStatusDir>());
    const auto peer = Orm::make<Controller::Peer>(systemId, address);
    peer->connectionConfigIs(Orm::make<Controller::ConnectionConfig>(address));
    peers->peerIs(peer);
    const auto service = client->serviceStatusDir()->serviceIs("Topology");
    service->enabledIs(true);
    service->versionStatusIs(Orm::make<Controller::ServiceVersionStatusV1>(true, true, 3U));

    factory.arrive();
    loop.run(1000);
    printStatus(*status);
    std::cout << "initial mounts of default are "
              << (status->initialMountsComplete().value("default") ? "complete" : "not complete")
              << '\n';
  }

  factory.clear();
  Controller::MountSm::factoryIs(nullptr);
  Orm::ActivityManagerConfig::instanceIs(nullptr);
  return 0;
}

}  // namespace

int main() { return run(); }
