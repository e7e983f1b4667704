#include "Controllerdb/InitialMountSm/InitialMountSm.h"
#include "Platform/Fennix/Node.h"
#include "Test/Support/InitialMountFixture.h"

namespace Controller {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;

class InitialMountSmTest : public Support::InitialMountFixture {
 protected:
  static constexpr const char* kPeerSignature =
      "void Controller::InitialMountSm::handlePeer(const Controller::SystemId&): ";

  bool isInitial(const char* system) const {
    return initialSm().initialSwitchSet()->initialSwitch().value(systemId(system));
  }
  /// The deadline of the connection period, after the start.
  Orm::Seconds deadline() const { return initialSm().connectionClock().timeMin() - kStart; }
  Orm::Seconds kStart = now();
};

// ---- start

TEST_F(InitialMountSmTest, Start_ClockIsDisarmedAndPeriodOpen) {
  startInitialMounts();
  EXPECT_FALSE(initialSm().connectionClock().isArmed());
  EXPECT_EQ(initialSm().connectionClock().timeMin(), Orm::kNever);
  EXPECT_FALSE(isPeriodComplete());
  EXPECT_TRUE(initialSm().initialSwitchSet()->initialSwitch().empty());
  EXPECT_FALSE(initialSm().initialSwitchSet()->complete());
}

TEST_F(InitialMountSmTest, Start_TakesInThePeersAndServicesThatAreThere) {
  peerComes(kLeaf1);
  peerComes(kLeaf2);
  service("Topology");
  service("Acl");
  startInitialMounts();
  EXPECT_TRUE(isInitial(kLeaf1));
  EXPECT_TRUE(isInitial(kLeaf2));
  EXPECT_EQ(deadline(), 15);
  EXPECT_NE(serviceSm("Topology"), nullptr);
  EXPECT_NE(serviceSm("Acl"), nullptr);
}

TEST_F(InitialMountSmTest, Start_TracesEachStepInOrder) {
  peerComes(kLeaf1);
  service("Topology");
  traceIs(8);
  startInitialMounts();
  EXPECT_THAT(
      traced(8),
      ElementsAre("InitialMountSm::handlePeer",  // the peer table was set
                  "InitialMountSm::handleInitialized",
                  // the clock was set, and was never armed
                  "InitialMountSm::handleConnectionTimeout: timeMin=0 connection period "
                  "complete=false",
                  "InitialMountSm::handlePeer", "InitialMountSm::handlePeer 02:00:00:00:00:01",
                  "InitialMountSm::handleServiceMount",
                  "InitialMountSm::handleServiceMount: Topology",
                  "handleServiceMount(Topology): creating serviceInitialMountSm",
                  "ServiceInitialMountSm::handleInitialized",
                  "ServiceInitialMountSm::handleLeaderGenId gen-1",
                  "ServiceInitialMountSm::canHandleMountGroup mountConfig genId:gen-1 "
                  "controller genId:gen-1"));
  EXPECT_THAT(traced(5), ElementsAre(kPeerSignature + std::string("reset timeMin to 1015")));
  EXPECT_EQ(traces().lines().front().handle, "ControllerInitialMountSm");
  EXPECT_EQ(traces().lines().front().source, "Controllerdb/InitialMountSm");
}

TEST_F(InitialMountSmTest, InputsThatAreNull_CountAsAbsent) {
  const auto machine = initialMountSmFactory(nullptr, nullptr, nullptr, nullptr, nullptr);
  EXPECT_EQ(machine->heartbeatConfig(), nullptr);
  EXPECT_EQ(machine->heartbeatInterval(), 0);
  machine->handlePeer(systemId(kLeaf1));
  machine->handleServiceMount("Topology");
  machine->handleServiceMount();
  EXPECT_TRUE(machine->initialSwitchSet()->initialSwitch().empty());
  EXPECT_TRUE(machine->serviceInitialMountSm().empty());
  run(1000);
  EXPECT_FALSE(machine->connectionPeriod()->complete());
}

TEST_F(InitialMountSmTest, NoControllerdbStatus_IsNoLeader) {
  service("Topology").group("default");
  const auto machine =
      initialMountSmFactory(mountConfigDir(), mountStatusDir(), oobConfig(), oobStatus(), nullptr);
  const auto* const topology = machine->serviceInitialMountSm().find("Topology");
  ASSERT_NE(topology, nullptr);
  EXPECT_TRUE(topology->mountGroupInitialMountSm().empty());
}

// ---- the connection period

TEST_F(InitialMountSmTest, PeriodEnds_ThreeHeartbeatsAfterTheOnlySwitch) {
  startInitialMounts();
  peerComes(kLeaf1);
  EXPECT_EQ(deadline(), 15);
  run(14.999);
  EXPECT_FALSE(isPeriodComplete());
  run(0.001);
  EXPECT_TRUE(isPeriodComplete());
}

TEST_F(InitialMountSmTest, TwoSwitchesOneHeartbeatApart_PeriodEndsThreeAfterTheSecond) {
  startInitialMounts();
  peerComes(kLeaf1);
  run(kHeartbeat);
  peerComes(kLeaf2);
  EXPECT_EQ(deadline(), 20);
  run(14.999);
  EXPECT_FALSE(isPeriodComplete());
  run(0.001);
  EXPECT_TRUE(isPeriodComplete());
}

TEST_F(InitialMountSmTest, HeartbeatThatIsNoWholeNumber_IsNotRounded) {
  heartbeatConfig()->heartbeatIntervalIs(0.1);
  startInitialMounts();
  peerComes(kLeaf1);
  EXPECT_EQ(initialSm().connectionClock().timeMin(), 1000 + 3.0 * 0.1);
}

TEST_F(InitialMountSmTest, HeartbeatThatChanges_CountsForTheNextNewSwitch) {
  startInitialMounts();
  peerComes(kLeaf1);
  heartbeatConfig()->heartbeatIntervalIs(1);
  EXPECT_EQ(deadline(), 15);
  peerComes(kLeaf2);
  EXPECT_EQ(deadline(), 3);
}

TEST_F(InitialMountSmTest, KnownSwitchThatReconnects_DoesNotMoveTheClock) {
  startInitialMounts();
  peerComes(kLeaf1);
  run(10);
  peerGoes(kLeaf1);
  traceIs(8);
  traces().clear();
  peerComes(kLeaf1);
  EXPECT_EQ(deadline(), 15);
  EXPECT_THAT(traced(5),
              ElementsAre(kPeerSignature + std::string("already in initial switch set")));
  EXPECT_THAT(traced(8), ElementsAre("InitialMountSm::handlePeer 02:00:00:00:00:01"));
  run(5);
  EXPECT_TRUE(isPeriodComplete());
}

TEST_F(InitialMountSmTest, SwitchWhoseMemberIsFalse_CountsAsNew) {
  startInitialMounts();
  peerComes(kLeaf1);
  run(10);
  initialSm().initialSwitchSet()->initialSwitchIs(systemId(kLeaf1), false);
  initialSm().handlePeer(systemId(kLeaf1));
  EXPECT_TRUE(isInitial(kLeaf1));
  EXPECT_EQ(deadline(), 25);
}

TEST_F(InitialMountSmTest, SwitchThatIsGone_ChangesNothing) {
  startInitialMounts();
  peerComes(kLeaf1);
  run(10);
  traceIs(8);
  peerGoes(kLeaf1);
  initialSm().handlePeer(systemId(kLeaf2));
  EXPECT_TRUE(isInitial(kLeaf1));
  EXPECT_FALSE(isInitial(kLeaf2));
  EXPECT_EQ(deadline(), 15);
  EXPECT_THAT(traced(5), IsEmpty());
  EXPECT_THAT(traced(8), ElementsAre("InitialMountSm::handlePeer 02:00:00:00:00:01",
                                     "InitialMountSm::handlePeer 02:00:00:00:00:02"));
}

TEST_F(InitialMountSmTest, HeartbeatOfZero_FirstSwitchEndsThePeriodInTheNextTurn) {
  heartbeatConfig()->heartbeatIntervalIs(0);
  startInitialMounts();
  peerComes(kLeaf1);
  EXPECT_FALSE(isPeriodComplete());
  EXPECT_EQ(deadline(), 0);
  run(0);
  EXPECT_TRUE(isPeriodComplete());
}

TEST_F(InitialMountSmTest, NoHeartbeatConfiguration_IsAnIntervalOfZero) {
  oobConfig()->heartbeatConfigIs(nullptr);
  startInitialMounts();
  EXPECT_EQ(initialSm().heartbeatInterval(), 0);
  peerComes(kLeaf1);
  run(0);
  EXPECT_TRUE(isPeriodComplete());
}

TEST_F(InitialMountSmTest, NoSwitch_PeriodNeverEnds) {
  startInitialMounts();
  run(1e9);
  EXPECT_FALSE(isPeriodComplete());
  EXPECT_EQ(clock()->armedTimers(), 0U);
}

TEST_F(InitialMountSmTest, PeriodThatEnds_TracesTheDeadline) {
  startInitialMounts();
  peerComes(kLeaf1);
  traceIs(8);
  run(kPeriod);
  EXPECT_THAT(traced(8),
              ElementsAre("InitialMountSm::handleConnectionTimeout: timeMin=1015 connection period "
                          "complete=false"));
  EXPECT_THAT(traced(5),
              ElementsAre("void Controller::InitialMountSm::handleConnectionTimeout(): initial "
                          "switch set complete"));
}

TEST_F(InitialMountSmTest, SwitchAfterThePeriod_IsTakenInAndArmsTheClockButNothingIsSetBack) {
  startInitialMounts();
  peerComes(kLeaf1);
  run(100);
  ASSERT_TRUE(isPeriodComplete());
  Support::Recorder period(initialSm().connectionPeriod());
  traceIs(8);
  peerComes(kLeaf2);
  EXPECT_TRUE(isInitial(kLeaf2));
  EXPECT_EQ(deadline(), 115);
  EXPECT_TRUE(isPeriodComplete());
  EXPECT_THAT(traced(5), ElementsAre(kPeerSignature + std::string("reset timeMin to 1115")));

  traces().clear();
  run(100);
  EXPECT_TRUE(isPeriodComplete());
  EXPECT_EQ(period.told(), 0U);
  EXPECT_THAT(traced(5), IsEmpty());
  EXPECT_THAT(traced(8), ElementsAre("InitialMountSm::handleConnectionTimeout: timeMin=1115 "
                                     "connection period complete=true"));
}

TEST_F(InitialMountSmTest, ClockThatWasNeverArmed_EndsNothing) {
  startInitialMounts();
  initialSm().connectionClockDel();
  const_cast<InitialMountSm::OrmConnectionClock&>(initialSm().connectionClock()).timeMinIs(0);
  initialSm().handleConnectionTimeout();
  EXPECT_FALSE(isPeriodComplete());
}

TEST_F(InitialMountSmTest, PeerTable_IsWatchedUntilItIsTakenAway) {
  startInitialMounts();
  const auto other = Orm::make<PeerTable>();
  other->peerIs(systemId(kLeaf1), address(systemId(kLeaf1)));
  initialSm().peerTableIs(other);
  EXPECT_TRUE(isInitial(kLeaf1));
  peerComes(kLeaf2);
  EXPECT_FALSE(isInitial(kLeaf2));
  initialSm().peerTableDel();
  other->peerIs(systemId(kLeaf3), address(systemId(kLeaf3)));
  initialSm().handlePeer(systemId(kLeaf3));
  EXPECT_FALSE(isInitial(kLeaf3));
}

TEST_F(InitialMountSmTest, OwnedEntities_AreMadeOnceAndAgainWhenTheyWereTakenAway) {
  startInitialMounts();
  const auto period = initialSm().connectionPeriod();
  const auto set = initialSm().initialSwitchSet();
  EXPECT_EQ(initialSm().connectionPeriodIs(), period);
  EXPECT_EQ(initialSm().initialSwitchSetIs(), set);
  initialSm().connectionPeriodDel();
  initialSm().initialSwitchSetDel();
  peerComes(kLeaf1);
  EXPECT_TRUE(isInitial(kLeaf1));
  run(kPeriod);
  EXPECT_TRUE(isPeriodComplete());
  EXPECT_FALSE(period->complete());
}

TEST_F(InitialMountSmTest, ClockTakenAway_NewSwitchesAreTakenInAndNothingIsDue) {
  startInitialMounts();
  initialSm().connectionClockDel();
  peerComes(kLeaf1);
  EXPECT_TRUE(isInitial(kLeaf1));
  EXPECT_FALSE(initialSm().connectionClock().isArmed());
  run(100);
  EXPECT_FALSE(isPeriodComplete());
}

// ---- the services

TEST_F(InitialMountSmTest, ServiceWithoutStatus_GetsAMachineWhenTheStatusComes) {
  startInitialMounts();
  mountConfigDir()->entityIs("Topology", Orm::make<ServiceMountConfig>());
  EXPECT_EQ(serviceSm("Topology"), nullptr);
  traceIs(8);
  mountStatusDir()->entityIs("Topology", Orm::make<ServiceMountStatus>());
  EXPECT_NE(serviceSm("Topology"), nullptr);
  EXPECT_THAT(traced(8),
              IsSupersetOf({"InitialMountSm::handleServiceMount: Topology",
                            "handleServiceMount(Topology): creating serviceInitialMountSm"}));
}

TEST_F(InitialMountSmTest, StatusWithoutConfiguration_GetsAMachineWhenTheConfigurationComes) {
  startInitialMounts();
  mountStatusDir()->entityIs("Topology", Orm::make<ServiceMountStatus>());
  EXPECT_EQ(serviceSm("Topology"), nullptr);
  mountConfigDir()->entityIs("Topology", Orm::make<ServiceMountConfig>());
  EXPECT_NE(serviceSm("Topology"), nullptr);
}

TEST_F(InitialMountSmTest, ServiceWhoseConfigurationGoes_LosesItsMachine) {
  service("Topology");
  startInitialMounts();
  traceIs(8);
  mountConfigDir()->entityDel("Topology");
  EXPECT_EQ(serviceSm("Topology"), nullptr);
  EXPECT_THAT(traced(8), ElementsAre("InitialMountSm::handleServiceMount: Topology",
                                     "handleServiceMount(Topology): deleting serviceInitialMountSm",
                                     "ServiceInitialMountSm::doCleanup Topology"));
  traces().clear();
  mountStatusDir()->entityDel("Topology");
  EXPECT_THAT(traced(8), ElementsAre("InitialMountSm::handleServiceMount: Topology"));
}

TEST_F(InitialMountSmTest, ServiceWhoseStatusGoes_LosesItsMachine) {
  service("Topology");
  startInitialMounts();
  mountStatusDir()->entityDel("Topology");
  EXPECT_EQ(serviceSm("Topology"), nullptr);
}

TEST_F(InitialMountSmTest, EntitiesOfAnotherType_CountAsMissing) {
  mountConfigDir()->entityIs("A", Orm::make<ServiceMountStatus>());
  mountStatusDir()->entityIs("A", Orm::make<ServiceMountStatus>());
  mountConfigDir()->entityIs("B", Orm::make<ServiceMountConfig>());
  mountStatusDir()->entityIs("B", Orm::make<ServiceMountConfig>());
  startInitialMounts();
  EXPECT_TRUE(initialSm().serviceInitialMountSm().empty());
}

TEST_F(InitialMountSmTest, MachineThatIsThere_IsKept) {
  const auto topology = service("Topology");
  startInitialMounts();
  const auto* const machine = serviceSm("Topology");
  traceIs(8);
  initialSm().handleServiceMount("Topology");
  initialSm().handleServiceMount();
  EXPECT_EQ(serviceSm("Topology"), machine);
  EXPECT_EQ(initialSm()
                .serviceInitialMountSmIs("Topology", topology.configPtr(), topology.statusPtr(),
                                         initialSm().connectionPeriod(), oobStatus(),
                                         controllerdbStatus())
                .get(),
            machine);
  EXPECT_THAT(traced(8), ElementsAre("InitialMountSm::handleServiceMount: Topology",
                                     "InitialMountSm::handleServiceMount",
                                     "InitialMountSm::handleServiceMount: Topology"));
}

TEST_F(InitialMountSmTest, ServiceGone_GroupsWithdrawTheirReports) {
  const auto topology = service("Topology");
  topology.group("default");
  topology.group("inventory");
  startInitialMounts();
  peerComes(kLeaf1);
  peerGoes(kLeaf1);
  run(kPeriod);
  ASSERT_TRUE(isComplete("Topology", "default"));
  ASSERT_TRUE(isComplete("Topology", "inventory"));
  mountConfigDir()->entityDel("Topology");
  EXPECT_TRUE(topology.status().initialMountsComplete().empty());
}

TEST_F(InitialMountSmTest, MachineLetGo_GroupsWithdrawTheirReports) {
  const auto topology = service("Topology");
  topology.group("default");
  startInitialMounts();
  peerComes(kLeaf1);
  peerGoes(kLeaf1);
  run(kPeriod);
  ASSERT_TRUE(isComplete("Topology", "default"));
  stopInitialMounts();
  EXPECT_TRUE(topology.status().initialMountsComplete().empty());
  EXPECT_EQ(clock()->armedTimers(), 0U);
}

TEST_F(InitialMountSmTest, NotificationSwitchedOff_NothingIsSeen) {
  service("Topology").group("default");
  startInitialMounts();
  peerComes(kLeaf1);
  initialSm().hasNotificationActiveIs(false);
  peerComes(kLeaf2);
  EXPECT_FALSE(isInitial(kLeaf2));
  service("Acl");
  EXPECT_EQ(serviceSm("Acl"), nullptr);
  leaderIs("");
  EXPECT_NE(groupSm("Topology", "default"), nullptr);
  run(kPeriod);
  EXPECT_FALSE(isPeriodComplete());
  initialSm().hasNotificationActiveIs(true);
  peerComes(kLeaf3);
  EXPECT_TRUE(isInitial(kLeaf3));
}

// ---- while a service's machine is being made

/// A service whose group completes while its machine is being made.
class InitialMountSmMakingTest : public InitialMountSmTest {
 protected:
  void startAfterThePeriod() {
    startInitialMounts();
    peerComes(kLeaf1);
    peerGoes(kLeaf1);
    run(kPeriod);
    config_ = Orm::make<ServiceMountConfig>();
    config_->genIdIs("gen-1");
    config_->mountGroupConfigIs("default");
    status_ = Orm::make<ServiceMountStatus>();
    mountStatusDir()->entityIs("Topology", status_);
  }
  ~InitialMountSmMakingTest() override { stopInitialMounts(); }

  Orm::Ptr<ServiceMountConfig> config_;
  Orm::Ptr<ServiceMountStatus> status_;
};

TEST_F(InitialMountSmMakingTest, ConfigurationTakenAwayByTheFirstReport_LeavesNoMachine) {
  startAfterThePeriod();
  Support::Recorder watch(status_, [this](Orm::AttributeId, const Orm::Key&) {
    mountConfigDir()->entityDel("Topology");
  });
  mountConfigDir()->entityIs("Topology", config_);
  EXPECT_EQ(serviceSm("Topology"), nullptr);
  EXPECT_TRUE(status_->initialMountsComplete().empty());
}

TEST_F(InitialMountSmMakingTest, ConfigurationReplacedByTheFirstReport_LeavesOneMachineForIt) {
  startAfterThePeriod();
  const auto other = Orm::make<ServiceMountConfig>();
  other->genIdIs("gen-1");
  other->mountGroupConfigIs("inventory");
  bool first = true;
  Support::Recorder watch(status_, [&](Orm::AttributeId, const Orm::Key&) {
    if (!std::exchange(first, false)) return;
    mountConfigDir()->entityDel("Topology");
    mountConfigDir()->entityIs("Topology", other);
  });
  mountConfigDir()->entityIs("Topology", config_);
  ASSERT_NE(serviceSm("Topology"), nullptr);
  EXPECT_EQ(groupSm("Topology", "default"), nullptr);
  EXPECT_NE(groupSm("Topology", "inventory"), nullptr);
  EXPECT_FALSE(isComplete("Topology", "default"));
  EXPECT_TRUE(isComplete("Topology", "inventory"));
}

}  // namespace
}  // namespace Controller
