#include "Controllerdb/InitialMountSm/ServiceInitialMountSm.h"
#include "Test/Support/InitialMountFixture.h"

namespace Controller {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ServiceInitialMountSmTest : public Support::InitialMountFixture {
 protected:
  /// The connection period has ended without a switch that is still there.
  void startAfterThePeriod() {
    startInitialMounts();
    peerComes(kLeaf1);
    peerGoes(kLeaf1);
    run(kPeriod);
  }
  std::size_t groups(const Orm::String& service) const {
    return serviceSm(service)->mountGroupInitialMountSm().size();
  }
};

// ---- generations

TEST_F(ServiceInitialMountSmTest, NoLeader_NoGroupMachineEvenWhenBothGenerationsAreEmpty) {
  leaderIs("");
  service("Topology").group("default");
  ASSERT_EQ(service("Topology").config().genId(), "");
  startInitialMounts();
  EXPECT_FALSE(serviceSm("Topology")->canHandleMountGroup());
  EXPECT_EQ(groups("Topology"), 0U);
}

TEST_F(ServiceInitialMountSmTest, GenerationsThatDiffer_NoGroupMachine) {
  service("Topology").generation("gen-0").group("default");
  startInitialMounts();
  EXPECT_FALSE(serviceSm("Topology")->canHandleMountGroup());
  EXPECT_EQ(groups("Topology"), 0U);
}

TEST_F(ServiceInitialMountSmTest, LeaderThatChanges_RemovesTheMachinesAndMakesNewOnesWhenItIsBack) {
  const auto topology = service("Topology");
  topology.group("default");
  topology.group("inventory");
  startInitialMounts();
  ASSERT_EQ(groups("Topology"), 2U);
  const Orm::Ptr<InitialSwitchSet const> snapshot(
      groupSm("Topology", "default")->mountGroupInitialSwitchSet());
  leaderIs("gen-2");
  EXPECT_EQ(groups("Topology"), 0U);
  leaderIs("gen-1");
  EXPECT_EQ(groups("Topology"), 2U);
  EXPECT_NE(groupSm("Topology", "default")->mountGroupInitialSwitchSet(), snapshot);
}

TEST_F(ServiceInitialMountSmTest, ConfigurationThatFollowsTheLeader_GetsMachinesAgain) {
  const auto topology = service("Topology");
  topology.group("default");
  startInitialMounts();
  leaderIs("gen-2");
  ASSERT_EQ(groups("Topology"), 0U);
  topology.generation("gen-2");
  EXPECT_EQ(groups("Topology"), 1U);
  topology.generation("gen-3");
  EXPECT_EQ(groups("Topology"), 0U);
}

TEST_F(ServiceInitialMountSmTest, GroupsOfAnotherGeneration_AreNotTakenUpUntilItIsTheLeaders) {
  const auto topology = service("Topology");
  startInitialMounts();
  leaderIs("gen-2");
  topology.group("default");
  EXPECT_EQ(groups("Topology"), 0U);
  topology.generation("gen-2");
  EXPECT_NE(groupSm("Topology", "default"), nullptr);
}

TEST_F(ServiceInitialMountSmTest, LeaderThatChanges_WithdrawsWhatWasReported) {
  const auto topology = service("Topology");
  topology.group("default");
  startAfterThePeriod();
  ASSERT_TRUE(isComplete("Topology", "default"));
  leaderIs("gen-2");
  EXPECT_FALSE(topology.status().initialMountsComplete().has("default"));
}

// ---- groups

TEST_F(ServiceInitialMountSmTest, Groups_ComeAndGo) {
  const auto topology = service("Topology");
  startInitialMounts();
  topology.group("default");
  EXPECT_NE(groupSm("Topology", "default"), nullptr);
  topology.group("inventory");
  EXPECT_EQ(groups("Topology"), 2U);
  topology.withoutGroup("default");
  EXPECT_EQ(groupSm("Topology", "default"), nullptr);
  EXPECT_EQ(groups("Topology"), 1U);
}

TEST_F(ServiceInitialMountSmTest, GroupThatIsThere_KeepsItsMachine) {
  service("Topology").group("default");
  startInitialMounts();
  const auto* const machine = groupSm("Topology", "default");
  serviceSm("Topology")->handleMountGroupConfig("default");
  serviceSm("Topology")->handleMountGroupConfig();
  serviceSm("Topology")->handleLeaderGenId();
  EXPECT_EQ(groupSm("Topology", "default"), machine);
}

TEST_F(ServiceInitialMountSmTest, GroupRemoved_WithdrawsItsReportAndNoOther) {
  const auto topology = service("Topology");
  topology.group("default");
  topology.group("inventory");
  startAfterThePeriod();
  topology.withoutGroup("default");
  EXPECT_FALSE(topology.status().initialMountsComplete().has("default"));
  EXPECT_TRUE(isComplete("Topology", "inventory"));
}

// ---- clean-up

TEST_F(ServiceInitialMountSmTest, Cleanup_RunsThatOfEachGroupAndEndsTheMachine) {
  const auto topology = service("Topology");
  topology.group("default");
  topology.group("inventory");
  topology.status().serviceNameIs("Topology");
  startAfterThePeriod();
  const Orm::Ptr<ServiceInitialMountSm> machine(serviceSm("Topology"));
  traceIs(8);
  machine->doCleanup();
  EXPECT_THAT(traced(8), ElementsAre("ServiceInitialMountSm::doCleanup Topology",
                                     "MountGroupInitialMountSm::doCleanup Topology:default",
                                     "MountGroupInitialMountSm::doCleanup Topology:inventory"));
  EXPECT_TRUE(machine->mountGroupInitialMountSm().empty());
  EXPECT_TRUE(topology.status().initialMountsComplete().empty());
  machine->handleMountGroupConfig();
  machine->handleLeaderGenId();
  topology.group("late");
  EXPECT_TRUE(machine->mountGroupInitialMountSm().empty());
  machine->doCleanup();
}

// ---- traces

TEST_F(ServiceInitialMountSmTest, GroupThatComes_TracesGenerationsAndItsAddition) {
  const auto topology = service("Topology");
  startInitialMounts();
  traceIs(8);
  topology.group("default");
  const auto texts = traced(8);
  ASSERT_GE(texts.size(), 4U);
  EXPECT_EQ(texts[0],
            "ServiceInitialMountSm::canHandleMountGroup mountConfig genId:gen-1 controller "
            "genId:gen-1");
  EXPECT_EQ(texts[1], "ServiceInitialMountSm::handleMountGroupConfig default");
  EXPECT_EQ(texts[2], "handleMountGroupConfig: adding mountGroupInitialMountSm");
  EXPECT_EQ(texts[3], "MountGroupInitialMountSm::handleInitialized");
  EXPECT_EQ(timesTraced(8, texts[0]), 1U);
}

TEST_F(ServiceInitialMountSmTest, GroupThatGoes_TracesTheGroupAndItsCleanup) {
  const auto topology = service("Topology");
  topology.group("default");
  topology.status().serviceNameIs("Topology");
  startInitialMounts();
  traceIs(8);
  topology.withoutGroup("default");
  EXPECT_THAT(traced(8),
              ElementsAre("ServiceInitialMountSm::canHandleMountGroup mountConfig genId:gen-1 "
                          "controller genId:gen-1",
                          "ServiceInitialMountSm::handleMountGroupConfig default",
                          "MountGroupInitialMountSm::doCleanup Topology:default"));
}

TEST_F(ServiceInitialMountSmTest, LeaderThatChanges_TracesTheConfigurationsGeneration) {
  service("Topology");
  startInitialMounts();
  traceIs(8);
  leaderIs("gen-2");
  EXPECT_THAT(traced(8),
              ElementsAre("ServiceInitialMountSm::handleLeaderGenId gen-1",
                          "ServiceInitialMountSm::canHandleMountGroup mountConfig genId:gen-1 "
                          "controller genId:gen-2"));
  EXPECT_THAT(traced(5), IsEmpty());
}

// ---- while a group's machine is being made: its first steps may report the group complete

/// A group that is put in after the period, and something that happens when it is reported.
class ServiceInitialMountSmMakingTest : public ServiceInitialMountSmTest {
 protected:
  ServiceInitialMountSmMakingTest() : topology_(service("Topology")) { startAfterThePeriod(); }

  /// Adds the group; `act` is done when it is reported complete for the first time.
  void addGroup(const std::function<void()>& act) {
    bool first = true;
    const Support::Recorder watch(
        topology_.statusPtr(), [&](Orm::AttributeId attribute, const Orm::Key&) {
          if (attribute != ServiceMountStatus::Attr::initialMountsComplete) return;
          if (std::exchange(first, false)) act();
        });
    topology_.group("default");
    EXPECT_FALSE(first);
  }

  Support::MountService topology_;
};

TEST_F(ServiceInitialMountSmMakingTest, LeaderChangedByTheReport_LeavesNoMachineAndNoReport) {
  addGroup([this] { leaderIs("gen-2"); });
  EXPECT_EQ(groups("Topology"), 0U);
  EXPECT_FALSE(topology_.status().initialMountsComplete().has("default"));
}

TEST_F(ServiceInitialMountSmMakingTest, LeaderChangedAndBackByTheReport_LeavesOneNewMachine) {
  addGroup([this] {
    leaderIs("gen-2");
    leaderIs("gen-1");
  });
  EXPECT_EQ(groups("Topology"), 1U);
  EXPECT_TRUE(isComplete("Topology", "default"));
}

TEST_F(ServiceInitialMountSmMakingTest, GroupTakenAwayByTheReport_LeavesNoMachineAndNoReport) {
  addGroup([this] { topology_.withoutGroup("default"); });
  EXPECT_EQ(groups("Topology"), 0U);
  EXPECT_FALSE(topology_.status().initialMountsComplete().has("default"));
}

TEST_F(ServiceInitialMountSmMakingTest, GroupTakenAwayAndBackByTheReport_LeavesOneNewMachine) {
  addGroup([this] {
    topology_.withoutGroup("default");
    topology_.group("default");
  });
  EXPECT_EQ(groups("Topology"), 1U);
  EXPECT_TRUE(isComplete("Topology", "default"));
}

TEST_F(ServiceInitialMountSmMakingTest, ServiceTakenAwayByTheReport_LeavesNothing) {
  addGroup([this] { mountConfigDir()->entityDel("Topology"); });
  EXPECT_EQ(serviceSm("Topology"), nullptr);
  EXPECT_FALSE(topology_.status().initialMountsComplete().has("default"));
}

TEST_F(ServiceInitialMountSmMakingTest, AnotherGroupAddedByTheReport_BothHaveMachines) {
  addGroup([this] { topology_.group("inventory"); });
  EXPECT_EQ(groups("Topology"), 2U);
  EXPECT_TRUE(isComplete("Topology", "default"));
  EXPECT_TRUE(isComplete("Topology", "inventory"));
}

}  // namespace
}  // namespace Controller
