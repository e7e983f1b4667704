#include "Controllerdb/ServiceConfigDirSm/ServiceConfigDirSm.h"
#include "Platform/Fennix/Node.h"
#include "Test/Support/ControllerFixture.h"

namespace Controller {
namespace {

using Orm::Ptr;
using Orm::String;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr const char* kSeen = "ServiceConfigDirSm::handleServiceMount: Topology";
constexpr const char* kProxySeen = "ServiceConfigDirSm::handleProxyServiceMount: Topology-Proxy";
constexpr const char* kCommon = "ServiceConfigDirSm::handleServiceMountCommon: Topology";
constexpr const char* kCreating =
    "ServiceConfigDirSm::handleServiceMountCommon creating serviceMountConfigSm for Topology";
constexpr const char* kPresent =
    "ServiceConfigDirSm::handleServiceMountCommon serviceMountConfigSm already present!";
constexpr const char* kDeleting =
    "ServiceConfigDirSm::handleServiceMountCommon deleting Topology serviceMountConfigSm";
constexpr const char* kNotComplete =
    "ServiceConfigDirSm::handleServiceMountCommon mounts not complete ";
constexpr const char* kPublish = "ServiceConfigDirSm::handleServicePublish";

class ServiceConfigDirSmTest : public Support::ControllerFixture {
 protected:
  static Ptr<ServiceMountConfig> configOf(const char* serviceName) {
    auto config = Orm::make<ServiceMountConfig>();
    config->serviceNameIs(serviceName);
    return config;
  }
  void configIs() { mountConfigDir()->entityIs("Topology", configOf("Topology")); }
  void statusIs() { mountStatusDir()->entityIs("Topology", Orm::make<ServiceMountStatus>()); }
  const ServiceMountConfigSm* machine(const char* name = "Topology") const {
    return configSm().serviceMountConfigSm().find(name);
  }
  void startTracing() {
    traces().clear();
    traceIs(8);
  }
};

// ---- mounts

TEST_F(ServiceConfigDirSmTest, ConfigurationBeforeItsStatus_CreatesNothingUntilTheStatusIsThere) {
  startConfig();
  startTracing();
  configIs();
  EXPECT_EQ(nullptr, machine());
  EXPECT_THAT(traced(8), ElementsAre(kSeen, kCommon, kNotComplete));
  startTracing();
  statusIs();
  ASSERT_NE(nullptr, machine());
  EXPECT_FALSE(machine()->isProxy());
  EXPECT_EQ((std::vector<std::string>{kSeen, kCommon, kCreating}),
            (std::vector<std::string>{traced(8)[0], traced(8)[1], traced(8)[2]}));
}

TEST_F(ServiceConfigDirSmTest, StatusBeforeItsConfiguration_CreatesNothingUntilThatIsThere) {
  startConfig();
  statusIs();
  EXPECT_EQ(nullptr, machine());
  configIs();
  EXPECT_NE(nullptr, machine());
}

TEST_F(ServiceConfigDirSmTest, ServicesPresentAtStart_GetMachines) {
  service("Topology");
  service("Routing");
  proxyService("Topology-Proxy");
  startConfig();
  EXPECT_EQ(3U, configSm().serviceMountConfigSm().size());
}

TEST_F(ServiceConfigDirSmTest, ConfigurationRemoved_DeletesTheMachineAndThenOnlyTraces) {
  startConfig();
  service("Topology");
  startTracing();
  mountConfigDir()->entityDel("Topology");
  EXPECT_EQ(nullptr, machine());
  expectTrace(8, kDeleting);
  startTracing();
  mountStatusDir()->entityDel("Topology");
  EXPECT_THAT(traced(8), ElementsAre(kSeen, kCommon, kNotComplete));
}

TEST_F(ServiceConfigDirSmTest, StatusRemoved_DeletesTheMachineAndThenOnlyTraces) {
  startConfig();
  service("Topology");
  startTracing();
  mountStatusDir()->entityDel("Topology");
  EXPECT_EQ(nullptr, machine());
  expectTrace(8, kDeleting);
  startTracing();
  mountConfigDir()->entityDel("Topology");
  EXPECT_THAT(traced(8), ElementsAre(kSeen, kCommon, kNotComplete));
}

TEST_F(ServiceConfigDirSmTest, ServiceThatGoes_TakesItsMountersAndStatusesWithIt) {
  constexpr const char* kA = "02:00:00:00:00:01";
  start();
  const auto topology = service("Topology");
  topology.group("default").path("a").path("b");
  service("Routing").group("default").path("a");
  connect(kA, {{"Topology", 3}, {"Routing", 3}});
  for (const char* path : {"a", "b"}) mount(kA, path).reports(MountState::mounted);
  mountConfigDir()->entityDel("Topology");
  EXPECT_EQ(nullptr, registry()->mountEntry("a")->mounter("Topology"));
  EXPECT_NE(nullptr, registry()->mountEntry("a")->mounter("Routing"));
  EXPECT_TRUE(registry()->mountEntry("b")->mounter().empty());
  EXPECT_TRUE(topology.status().mountedPathPrefix().empty());
  EXPECT_TRUE(topology.status().systemStatus().empty());
  EXPECT_EQ(MountState::mounted, groupStatus(kA, "Routing", "default")->mountState());
}

TEST_F(ServiceConfigDirSmTest, ConfigurationReplaced_KeepsTheMachineOfTheOldOne) {
  startConfig();
  const auto old = service("Topology");
  const ServiceMountConfigSm* const made = machine();
  startTracing();
  configIs();
  EXPECT_EQ(made, machine());
  EXPECT_THAT(traced(8), ElementsAre(kSeen, kCommon, kPresent));
  old.group("default").path("a");
  EXPECT_NE(nullptr, registry()->mountEntry("a"));
}

TEST_F(ServiceConfigDirSmTest, MemberOfAnotherType_CountsAsAbsent) {
  startConfig();
  statusIs();
  startTracing();
  mountConfigDir()->entityIs("Topology", Orm::make<Fennix::Node>("Something::Else"));
  EXPECT_EQ(nullptr, machine());
  expectTrace(8, kNotComplete);
  mountConfigDir()->entityIs("Topology", Orm::make<ServiceMountStatus>());
  EXPECT_EQ(nullptr, machine());
  configIs();
  EXPECT_NE(nullptr, machine());
  mountConfigDir()->entityIs("Topology", Orm::make<Fennix::Node>("Something::Else"));
  EXPECT_EQ(nullptr, machine());
}

// ---- proxies

TEST_F(ServiceConfigDirSmTest, ProxyService_GetsAProxyMachineUnderItsProxyName) {
  startConfig();
  startTracing();
  proxyService("Topology-Proxy");
  ASSERT_NE(nullptr, machine("Topology-Proxy"));
  EXPECT_TRUE(machine("Topology-Proxy")->isProxy());
  EXPECT_EQ(nullptr, machine("Topology"));
  expectTrace(8, kProxySeen);
  expectTrace(8, "ServiceConfigDirSm::handleServiceMountCommon: Topology-Proxy");
  expectTrace(8,
              "ServiceConfigDirSm::handleServiceMountCommon creating serviceMountConfigSm for "
              "Topology-Proxy");
}

TEST_F(ServiceConfigDirSmTest, ProxyConfigurationRemoved_DeletesItsMachine) {
  startConfig();
  proxyService("Topology-Proxy");
  proxyMountConfigDir()->entityDel("Topology-Proxy");
  EXPECT_EQ(nullptr, machine("Topology-Proxy"));
}

// ---- publications

TEST_F(ServiceConfigDirSmTest, PublishConfigurationAndStatus_CreateOneMachine) {
  startConfig();
  startTracing();
  publishConfigDir()->entityIs("Topology", Orm::make<ServicePublishConfig>());
  EXPECT_TRUE(configSm().servicePublishConfigSm().empty());
  EXPECT_THAT(traced(8), ElementsAre(std::string(kPublish) + ": Topology",
                                     std::string(kPublish) + " mounts not complete "));
  startTracing();
  publishStatusDir()->entityIs("Topology", Orm::make<ServicePublishStatus>());
  EXPECT_EQ(1U, configSm().servicePublishConfigSm().size());
  expectTrace(8, std::string(kPublish) + " creating servicePublishConfigSm for Topology");
  const auto* const made = configSm().servicePublishConfigSm().find("Topology");
  startTracing();
  configSm().handleServicePublish("Topology");
  EXPECT_THAT(traced(8), ElementsAre(std::string(kPublish) + ": Topology"));
  EXPECT_EQ(made, configSm().servicePublishConfigSm().find("Topology"));
}

TEST_F(ServiceConfigDirSmTest, PublishConfigurationOrStatusRemoved_DeletesTheMachine) {
  startConfig();
  for (const auto& removedFrom : {publishConfigDir(), publishStatusDir()}) {
    publishConfigDir()->entityIs("Topology", Orm::make<ServicePublishConfig>());
    publishStatusDir()->entityIs("Topology", Orm::make<ServicePublishStatus>());
    ASSERT_EQ(1U, configSm().servicePublishConfigSm().size());
    startTracing();
    removedFrom->entityDel("Topology");
    EXPECT_TRUE(configSm().servicePublishConfigSm().empty());
    expectTrace(8, std::string(kPublish) + " deleting Topology servicePublishConfigSm");
    publishConfigDir()->entityDelAll();
    publishStatusDir()->entityDelAll();
    expectTrace(8, std::string(kPublish) + " mounts not complete ");
  }
}

TEST_F(ServiceConfigDirSmTest, PublishStatusBeforeItsConfiguration_CreatesNothingUntilThatIsThere) {
  startConfig();
  publishStatusDir()->entityIs("Topology", Orm::make<ServicePublishStatus>());
  EXPECT_TRUE(configSm().servicePublishConfigSm().empty());
  publishConfigDir()->entityIs("Topology", Orm::make<ServicePublishConfig>());
  EXPECT_EQ(1U, configSm().servicePublishConfigSm().size());
}

TEST_F(ServiceConfigDirSmTest, PublishMemberOfAnotherType_CountsAsAbsent) {
  startConfig();
  publishStatusDir()->entityIs("Topology", Orm::make<ServicePublishStatus>());
  publishConfigDir()->entityIs("Topology", Orm::make<ServicePublishStatus>());
  EXPECT_TRUE(configSm().servicePublishConfigSm().empty());
  publishConfigDir()->entityIs("Topology", Orm::make<ServicePublishConfig>());
  EXPECT_EQ(1U, configSm().servicePublishConfigSm().size());
  publishStatusDir()->entityIs("Topology", Orm::make<ServicePublishConfig>());
  EXPECT_TRUE(configSm().servicePublishConfigSm().empty());
}

TEST_F(ServiceConfigDirSmTest, PublishConfigurationReplaced_KeepsTheMachineOfTheOldOne) {
  startConfig();
  publishConfigDir()->entityIs("Topology", Orm::make<ServicePublishConfig>());
  publishStatusDir()->entityIs("Topology", Orm::make<ServicePublishStatus>());
  const auto* const made = configSm().servicePublishConfigSm().find("Topology");
  publishConfigDir()->entityIs("Topology", Orm::make<ServicePublishConfig>());
  EXPECT_EQ(made, configSm().servicePublishConfigSm().find("Topology"));
}

TEST_F(ServiceConfigDirSmTest, PublicationsPresentAtStart_GetMachines) {
  publishConfigDir()->entityIs("Topology", Orm::make<ServicePublishConfig>());
  publishStatusDir()->entityIs("Topology", Orm::make<ServicePublishStatus>());
  startConfig();
  EXPECT_EQ(1U, configSm().servicePublishConfigSm().size());
}

// ---- the machine itself

TEST_F(ServiceConfigDirSmTest, InitializedAgain_DoesNothing) {
  startConfig();
  service("Topology");
  startTracing();
  configSm().handleInitialized();
  EXPECT_THAT(traced(8), IsEmpty());
}

TEST_F(ServiceConfigDirSmTest, WithoutDirectories_NothingIsWatched) {
  const auto machine = serviceConfigDirSmFactory(controllerdbStatus(), nullptr, nullptr, nullptr,
                                                 nullptr, nullptr, nullptr, nullptr, registry());
  EXPECT_TRUE(machine->serviceMountConfigSm().empty());
  traceIs(8);
  machine->handleServiceMount();
  machine->handleProxyServiceMount();
  machine->handleServicePublish();
  machine->handleServiceMount("Topology");
  expectTrace(8, kNotComplete);
}

TEST_F(ServiceConfigDirSmTest, NotificationOff_NothingIsDone) {
  startConfig();
  service("Topology").group("default");
  configSm().hasNotificationActiveIs(false);
  service("Routing");
  service("Topology").group("default").path("a");
  EXPECT_EQ(1U, configSm().serviceMountConfigSm().size());
  EXPECT_EQ(nullptr, registry()->mountEntry("a"));
  configSm().hasNotificationActiveIs(true);
  service("Topology").group("default").path("b");
  EXPECT_NE(nullptr, registry()->mountEntry("b"));
}

TEST_F(ServiceConfigDirSmTest, MachineGoes_MountersGoAndNothingWatchesAnyMore) {
  startConfig();
  const auto topology = service("Topology");
  topology.group("default").path("a");
  stopConfig();
  EXPECT_TRUE(registry()->mountEntry("a")->mounter().empty());
  EXPECT_TRUE(topology.status().mountedPathPrefix().empty());
  EXPECT_EQ(0U, mountConfigDir()->notifieeCount());
  EXPECT_EQ(0U, mountStatusDir()->notifieeCount());
  EXPECT_EQ(0U, proxyMountConfigDir()->notifieeCount());
  EXPECT_EQ(0U, proxyMountStatusDir()->notifieeCount());
  EXPECT_EQ(0U, publishConfigDir()->notifieeCount());
  EXPECT_EQ(0U, publishStatusDir()->notifieeCount());
  EXPECT_EQ(0U, controllerdbStatus()->notifieeCount());
  EXPECT_EQ(0U, topology.config().notifieeCount());
  EXPECT_EQ(0U, topology.group("default").config().notifieeCount());
}

TEST_F(ServiceConfigDirSmTest, MachineGoesWhileItCreatesAService_IsSurvived) {
  startConfig();
  service("Topology").group("default");
  Support::Recorder recorder(registry(), [this](auto, const auto&) { stopConfig(); });
  service("Topology").group("default").path("a");
  ASSERT_NE(nullptr, registry()->mountEntry("a"));
}

TEST_F(ServiceConfigDirSmTest, ServicesDeletedTwice_Harmless) {
  startConfig();
  service("Topology").group("default").path("a");
  for (int time = 0; time != 2; ++time) {
    configSm().serviceMountConfigSmDel("Topology");
    configSm().servicePublishConfigSmDel("Topology");
  }
  EXPECT_TRUE(registry()->mountEntry("a")->mounter().empty());
}

}  // namespace
}  // namespace Controller
