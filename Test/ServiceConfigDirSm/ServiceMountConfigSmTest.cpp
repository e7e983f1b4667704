#include "Controllerdb/ServiceConfigDirSm/ServiceMountConfigSm.h"
#include "Test/Support/ControllerFixture.h"

namespace Controller {
namespace {

using Orm::Ptr;
using testing::ElementsAre;
using testing::IsEmpty;

class ServiceMountConfigSmTest : public Support::ControllerFixture {
 protected:
  ServiceMountConfigSmTest() { startConfig(); }

  ServiceMountConfigSm& machine() const {
    return *configSm().serviceMountConfigSm().find("Topology");
  }
};

TEST_F(ServiceMountConfigSmTest, ConfigurationWithoutAServiceName_HasNoGroupMachinesUntilItIsSet) {
  const auto config = Orm::make<ServiceMountConfig>();
  config->genIdIs(controllerdbStatus()->leaderGenId());
  config->mountGroupConfigIs("default")->mountConfigIs("a", "T", "r", "");
  const auto status = Orm::make<ServiceMountStatus>();
  traceIs(8);
  mountStatusDir()->entityIs("Topology", status);
  mountConfigDir()->entityIs("Topology", config);
  EXPECT_TRUE(machine().mountGroupSm().empty());
  expectTrace(8, "ServiceMountConfigSm::handleInitialized");
  traces().clear();
  config->mountGroupConfigIs("second");
  EXPECT_TRUE(machine().mountGroupSm().empty());
  EXPECT_THAT(traced(8), ElementsAre("ServiceMountConfigSm::handleMountGroupConfig: second"));
  traces().clear();
  config->serviceNameIs("Topology");
  EXPECT_EQ(2U, machine().mountGroupSm().size());
  EXPECT_NE(nullptr, registry()->mountEntry("a"));
  EXPECT_EQ("Topology", status->serviceName());
  expectTrace(8, "ServiceMountConfigSm::handleMountGroupConfig");
  expectTrace(8, "ServiceMountConfigSm::handleMountGroupConfig: default");
  EXPECT_EQ("void Controller::ServiceMountConfigSm::handleServiceName():  serviceName:Topology",
            traced(5).front());
}

TEST_F(ServiceMountConfigSmTest, ServiceNameSetAgain_IsWrittenToTheStatus) {
  const auto topology = service("Topology");
  EXPECT_EQ("", topology.status().serviceName());
  traceIs(8);
  topology.config().serviceNameIs("Renamed");
  EXPECT_EQ("Renamed", topology.status().serviceName());
  expectTrace(5,
              "void Controller::ServiceMountConfigSm::handleServiceName():  serviceName:Renamed");
  EXPECT_THAT(traced(8), ElementsAre("ServiceMountConfigSm::handleInitialized"));
}

TEST_F(ServiceMountConfigSmTest, ServiceNameMessage_IsInTheFastTraceToo) {
  const auto topology = service("Topology");
  Dualog::fastTraceIs(true);
  topology.config().serviceNameIs("Renamed");
  std::vector<std::string> records;
  Zimlog::read([&](const Zimlog::Descriptor& descriptor, std::int64_t, std::string_view text) {
    EXPECT_STREQ("Controllerdb/ServiceConfigDirSm", descriptor.source);
    records.emplace_back(text);
  });
  EXPECT_THAT(records, ElementsAre("void Controller::ServiceMountConfigSm::handleServiceName():  "
                                   "serviceName:Renamed"));
}

TEST_F(ServiceMountConfigSmTest, GroupAdded_GetsOneMachine) {
  const auto topology = service("Topology");
  traceIs(8);
  topology.group("default");
  const ServiceMountGroupSm* const made = machine().mountGroupSm().find("default");
  ASSERT_NE(nullptr, made);
  expectTrace(8, "ServiceMountConfigSm::handleMountGroupConfig: default");
  machine().handleMountGroupConfig("default");
  machine().handleMountGroupConfig();
  EXPECT_EQ(made, machine().mountGroupSm().find("default"));
  EXPECT_EQ(1U, machine().mountGroupSm().size());
}

TEST_F(ServiceMountConfigSmTest, GroupGone_CleansUpBeforeItsMachineIsDeleted) {
  const auto topology = service("Topology");
  topology.group("default").path("a");
  topology.group("second").path("b");
  traceIs(8);
  topology.withoutGroup("default");
  EXPECT_EQ(nullptr, machine().mountGroupSm().find("default"));
  EXPECT_TRUE(registry()->mountEntry("a")->mounter().empty());
  EXPECT_FALSE(registry()->mountEntry("b")->mounter().empty());
  expectTrace(8, "ServiceMountGroupSm::doCleanup");
}

TEST_F(ServiceMountConfigSmTest, UnknownGroup_IsTracedOnly) {
  service("Topology");
  traceIs(8);
  machine().handleMountGroupConfig("nowhere");
  EXPECT_THAT(traced(8), ElementsAre("ServiceMountConfigSm::handleMountGroupConfig: nowhere"));
}

// ---- what is taken away by a watcher while it is made

class TakenAwayTest : public ServiceMountConfigSmTest {
 protected:
  TakenAwayTest() {
    config_->serviceNameIs("Topology");
    config_->genIdIs(controllerdbStatus()->leaderGenId());
  }
  static Ptr<ServiceMountGroupConfig> groupWithPaths() {
    auto group = Orm::make<ServiceMountGroupConfig>("default");
    group->mountConfigIs("a", "T", "r", "");
    group->mountConfigIs("b", "T", "r", "");
    return group;
  }
  void add() {
    mountStatusDir()->entityIs("Topology", status_);
    mountConfigDir()->entityIs("Topology", config_);
  }
  void expectNothingLeft() const {
    for (const Ptr<MountsRegistryEntry>& entry : registry()->mountEntry()) {
      EXPECT_TRUE(entry->mounter().empty()) << entry->name();
    }
    EXPECT_TRUE(status_->mountedPathPrefix().empty());
  }

  Ptr<ServiceMountConfig> config_ = Orm::make<ServiceMountConfig>();
  Ptr<ServiceMountStatus> status_ = Orm::make<ServiceMountStatus>();
};

TEST_F(TakenAwayTest, GroupThatGoesWhileItsMachineIsMade_LeavesNothingBehind) {
  add();
  Support::Recorder recorder(
      status_, [this](auto, const auto&) { config_->mountGroupConfigDel("default"); });
  config_->mountGroupConfigIs(groupWithPaths());
  EXPECT_TRUE(machine().mountGroupSm().empty());
  expectNothingLeft();
}

TEST_F(TakenAwayTest, ServiceThatGoesWhileAGroupsMachineIsMade_LeavesNothingBehind) {
  add();
  Support::Recorder recorder(
      status_, [this](auto, const auto&) { mountStatusDir()->entityDel("Topology"); });
  config_->mountGroupConfigIs(groupWithPaths());
  EXPECT_TRUE(configSm().serviceMountConfigSm().empty());
  expectNothingLeft();
}

TEST_F(TakenAwayTest, ServiceThatGoesWhileItsMachineIsMade_LeavesNothingBehind) {
  config_->mountGroupConfigIs(groupWithPaths());
  Support::Recorder recorder(
      status_, [this](auto, const auto&) { mountConfigDir()->entityDel("Topology"); });
  add();
  EXPECT_TRUE(configSm().serviceMountConfigSm().empty());
  expectNothingLeft();
}

TEST_F(ServiceMountConfigSmTest, CleanedUpTwice_Harmless) {
  const auto topology = service("Topology");
  topology.group("default").path("a");
  topology.group("second").path("b");
  traceIs(8);
  machine().doCleanup();
  machine().doCleanup();
  expectTrace(8, "ServiceMountConfigSm::doCleanup");
  EXPECT_TRUE(machine().mountGroupSm().empty());
  EXPECT_TRUE(registry()->mountEntry("a")->mounter().empty());
  EXPECT_TRUE(registry()->mountEntry("b")->mounter().empty());
  topology.group("third");
  EXPECT_TRUE(machine().mountGroupSm().empty());
}

}  // namespace
}  // namespace Controller
