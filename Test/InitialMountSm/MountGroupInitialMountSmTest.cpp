#include "Controllerdb/InitialMountSm/MountGroupInitialMountSm.h"
#include "Platform/Zimlog/Zimlog.h"
#include "Test/Support/InitialMountFixture.h"

namespace Controller {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kService = "Topology";
constexpr const char* kGroup = "default";

/// One service with one group, and two switches.
class MountGroupInitialMountSmTest : public Support::InitialMountFixture {
 protected:
  MountGroupInitialMountSmTest() : topology_(service(kService)) {
    topology_.group(kGroup);
    topology_.status().serviceNameIs(kService);
  }

  /// The period has ended with these switches in the snapshot.
  void startWith(std::initializer_list<const char*> systems) {
    startInitialMounts();
    peerComes(kLeaf3);  // so that there is a period
    peerGoes(kLeaf3);
    for (const char* system : systems) peerComes(system);
    run(kPeriod);
  }
  MountGroupInitialMountSm& group() const { return *groupSm(kService, kGroup); }
  bool isSnapshot(const char* system) const {
    return group().mountGroupInitialSwitchSet()->initialSwitch().value(systemId(system));
  }
  bool isRemaining(const char* system) const { return group().remainingSwitch().has(system); }
  bool isComplete() const { return InitialMountFixture::isComplete(kService, kGroup); }
  void processed(const char* system) const {
    InitialMountFixture::processed(system, kService, kGroup);
  }
  void owes(const char* system) const { InitialMountFixture::owes(system, kService, kGroup); }
  void reports(const char* system, MountState state) const {
    InitialMountFixture::reports(system, kService, kGroup, state);
  }
  ServiceMountGroupStatus& status(const char* system) const {
    return InitialMountFixture::status(system, kService, kGroup);
  }

  Support::MountService topology_;
};

// ---- before the connection period has ended

TEST_F(MountGroupInitialMountSmTest, Start_IsIdle) {
  startInitialMounts();
  EXPECT_EQ(group().name(), kGroup);
  EXPECT_FALSE(group().mountClock().isArmed());
  EXPECT_FALSE(group().attrlogFlushTimer().isArmed());
  EXPECT_EQ(group().attrlogFlushRemainingTime(), 0);
  EXPECT_FALSE(group().mountGroupInitialSwitchSet()->complete());
  EXPECT_TRUE(group().mountGroupInitialSwitchSet()->initialSwitch().empty());
  EXPECT_FALSE(group().localInitialMountsComplete());
  EXPECT_FALSE(isComplete());
}

TEST_F(MountGroupInitialMountSmTest, Start_TracesEachStepInOrder) {
  traceIs(8);
  startInitialMounts();
  const auto texts = traced(8);
  const auto first =
      std::find(texts.begin(), texts.end(), "MountGroupInitialMountSm::handleInitialized");
  EXPECT_THAT(std::vector(first, texts.end()),
              ElementsAre("MountGroupInitialMountSm::handleInitialized",
                          "MountGroupInitialMountSm::handleConnectionPeriodComplete false",
                          "MountGroupInitialMountSm::handleSystemStatus"));
  EXPECT_THAT(traced(5), IsEmpty());  // neither the window nor the flush has been handled
}

TEST_F(MountGroupInitialMountSmTest, PeriodNotOver_ProcessedSwitchesAreCountedAndNothingElse) {
  startInitialMounts();
  peerComes(kLeaf1);
  processed(kLeaf1);
  EXPECT_EQ(group().processedSwitchSetInternal()->processed().size(), 1U);
  group().checkSwitchMountsPending();
  EXPECT_FALSE(group().localInitialMountsComplete());
  EXPECT_FALSE(isComplete());
}

TEST_F(MountGroupInitialMountSmTest, PeriodNotOver_MountStatesAreNotLookedAt) {
  startInitialMounts();
  traceIs(8);
  group().handleMountState();
  group().handleMountState(kLeaf1, kGroup);
  EXPECT_THAT(traced(8),
              ElementsAre("MountGroupInitialMountSm::handleMountState",
                          "MountGroupInitialMountSm::handleMountState: initial switch set not yet "
                          "complete",
                          "MountGroupInitialMountSm::handleMountState02:00:00:00:00:01 default"));
}

// ---- the snapshot

TEST_F(MountGroupInitialMountSmTest, PeriodEnds_PeersOfThatMomentAreTheSnapshot) {
  startInitialMounts();
  peerComes(kLeaf1);
  peerComes(kLeaf2);
  peerGoes(kLeaf1);
  run(kPeriod);
  EXPECT_TRUE(initialSm().initialSwitchSet()->initialSwitch().value(systemId(kLeaf1)));
  EXPECT_FALSE(isSnapshot(kLeaf1));
  EXPECT_TRUE(isSnapshot(kLeaf2));
  EXPECT_TRUE(group().mountGroupInitialSwitchSet()->complete());
  peerComes(kLeaf3);
  EXPECT_FALSE(isSnapshot(kLeaf3));
}

TEST_F(MountGroupInitialMountSmTest, GroupAddedAfterThePeriod_TakesItsSnapshotAtOnce) {
  startWith({kLeaf1});
  peerComes(kLeaf2);
  topology_.group("late");
  const MountGroupInitialMountSm& late = *groupSm(kService, "late");
  EXPECT_TRUE(late.mountGroupInitialSwitchSet()->complete());
  EXPECT_EQ(late.mountGroupInitialSwitchSet()->initialSwitch().size(), 2U);
  EXPECT_EQ(group().mountGroupInitialSwitchSet()->initialSwitch().size(), 1U);
}

TEST_F(MountGroupInitialMountSmTest, NoPeerTable_SnapshotIsEmptyAndTheGroupCompletes) {
  startInitialMounts();
  peerComes(kLeaf1);
  oobStatus()->peerTableIs(nullptr);
  run(kPeriod);
  EXPECT_TRUE(group().mountGroupInitialSwitchSet()->complete());
  EXPECT_TRUE(isComplete());
  oobStatus()->peerTableIs(Orm::make<PeerTable>());
}

TEST_F(MountGroupInitialMountSmTest, NoOobStatus_HasNoPeerTable) {
  const auto period = Orm::make<ConnectionPeriod>();
  const auto machine =
      mountGroupInitialMountSmFactory(kGroup, topology_.statusPtr(), nullptr, period);
  machine->start();
  EXPECT_EQ(machine->peerTable(), nullptr);
  period->completeIs(true);
  EXPECT_TRUE(isComplete());
  machine->doCleanup();
}

TEST_F(MountGroupInitialMountSmTest, PeriodEnds_TracesSnapshotAndCount) {
  startInitialMounts();
  peerComes(kLeaf1);
  traceIs(8);
  run(kPeriod);
  EXPECT_THAT(traced(8),
              ElementsAre("InitialMountSm::handleConnectionTimeout: timeMin=1015 connection period "
                          "complete=false",
                          "MountGroupInitialMountSm::handleConnectionPeriodComplete true",
                          "void Controller::MountGroupInitialMountSm::handleProcessed(): "
                          "groupName: default complete=true"));
}

TEST_F(MountGroupInitialMountSmTest, EmptySnapshot_CompletesAtOnce) {
  startWith({});
  EXPECT_TRUE(group().localInitialMountsComplete());
  EXPECT_TRUE(isComplete());
}

TEST_F(MountGroupInitialMountSmTest, EmptySnapshot_TracesTheWayToTheEnd) {
  startInitialMounts();
  peerComes(kLeaf1);
  peerGoes(kLeaf1);
  traceIs(8);
  run(kPeriod);
  EXPECT_THAT(
      traced(8),
      ElementsAre(
          "InitialMountSm::handleConnectionTimeout: timeMin=1015 connection period "
          "complete=false",
          "MountGroupInitialMountSm::handleConnectionPeriodComplete true",
          "void Controller::MountGroupInitialMountSm::handleProcessed(): groupName: default "
          "complete=true",
          "MountGroupInitialMountSm::doPopulateRemainingSwitch",
          "MountGroupInitialMountSm::checkSwitchMountsPending",
          "checkSwitchMountsPending: no remaining switches",
          "void Controller::MountGroupInitialMountSm::handleInitialMountsComplete(): ",
          "MountGroupInitialMountSm::handleAttrlogFlushTimer Attrlog flush completed for "
          "Topology:default",
          "MountGroupInitialMountSm::checkSwitchMountsPending",
          "checkSwitchMountsPending: no remaining switches"));
  EXPECT_THAT(
      traced(5),
      ElementsAre("void Controller::InitialMountSm::handleConnectionTimeout(): initial switch set "
                  "complete",
                  "void Controller::MountGroupInitialMountSm::handleMountTimeout(): ",
                  "void Controller::MountGroupInitialMountSm::handleAttrlogFlushTimer(): "));
}

// ---- waiting for the switches to be processed

TEST_F(MountGroupInitialMountSmTest, NotAllProcessed_WaitsHoweverLong) {
  startWith({kLeaf1, kLeaf2});
  processed(kLeaf1);
  run(1e6);
  EXPECT_FALSE(group().localInitialMountsComplete());
  processed(kLeaf2);
  EXPECT_TRUE(isComplete());
}

TEST_F(MountGroupInitialMountSmTest, ProcessedBeforeThePeriodEnded_CountsThen) {
  startInitialMounts();
  peerComes(kLeaf1);
  processed(kLeaf1);
  run(kPeriod);
  EXPECT_TRUE(isComplete());
}

TEST_F(MountGroupInitialMountSmTest, ProcessedSwitchOutsideTheSnapshot_MakesUpForOneInside) {
  startWith({kLeaf1, kLeaf2});
  processed(kLeaf1);
  EXPECT_FALSE(isComplete());
  processed(kLeaf3);
  EXPECT_TRUE(isComplete());
}

TEST_F(MountGroupInitialMountSmTest, ProcessedSwitch_TracesSwitchGroupAndWhatItIsNow) {
  startWith({kLeaf1, kLeaf2});
  status(kLeaf1);
  traceIs(8);
  processed(kLeaf1);
  EXPECT_THAT(traced(8),
              ElementsAre("void Controller::GroupProcessedSm::handleProcessed(): systemName: "
                          "02:00:00:00:00:01, groupName: default",
                          "void Controller::MountGroupInitialMountSm::handleProcessed(const "
                          "String&): 02:00:00:00:00:01 processed=true",
                          "void Controller::MountGroupInitialMountSm::handleProcessed(): "
                          "groupName: default complete=true"));
}

TEST_F(MountGroupInitialMountSmTest, MemberThatIsFalse_IsTracedAndCountedButDecidesNothing) {
  startWith({kLeaf1});
  traceIs(8);
  group().processedSwitchSetInternal()->processedIs(kLeaf1, false);
  EXPECT_THAT(traced(8), ElementsAre("void Controller::MountGroupInitialMountSm::handleProcessed("
                                     "const String&): 02:00:00:00:00:01 processed=false"));
  EXPECT_FALSE(isComplete());
  group().handleProcessed();
  EXPECT_TRUE(isComplete());
}

TEST_F(MountGroupInitialMountSmTest, ProcessedSetTakenAway_HasNoMembers) {
  startWith({kLeaf1});
  group().processedSwitchSetDel();
  processed(kLeaf1);
  group().handleProcessed(kLeaf1);
  group().handleProcessed();
  EXPECT_FALSE(isComplete());
  group().processedSwitchSetIs(group().processedSwitchSetInternalIs());
  group().handleProcessed(kLeaf1);
  EXPECT_TRUE(isComplete());
}

TEST_F(MountGroupInitialMountSmTest, GroupReportedComplete_IsNotPopulatedAgain) {
  startWith({kLeaf1});
  processed(kLeaf1);
  ASSERT_TRUE(isComplete());
  traceIs(8);
  owes(kLeaf2);
  EXPECT_TRUE(group().remainingSwitch().empty());
  expectNoTrace(8, "MountGroupInitialMountSm::doPopulateRemainingSwitch");
  EXPECT_FALSE(group().mountClock().isArmed());
}

TEST_F(MountGroupInitialMountSmTest, SwitchesRemaining_AreNotPopulatedAgain) {
  startWith({kLeaf1});
  owes(kLeaf1);
  ASSERT_TRUE(isRemaining(kLeaf1));
  run(100);
  processed(kLeaf2);
  EXPECT_EQ(group().mountClock().timeMin(), now() + 140);
}

// ---- populating

TEST_F(MountGroupInitialMountSmTest, OwingSwitch_IsRemainingAndTheWindowRuns) {
  startWith({kLeaf1, kLeaf2});
  traceIs(5);
  owes(kLeaf1);
  owes(kLeaf2);
  EXPECT_TRUE(isRemaining(kLeaf1));
  EXPECT_TRUE(isRemaining(kLeaf2));
  EXPECT_EQ(group().mountClock().timeMin(), now() + 240);
  EXPECT_FALSE(isComplete());
  EXPECT_THAT(traced(5),
              ElementsAre("void Controller::MountGroupInitialMountSm::doPopulateRemainingSwitch(): "
                          "Adding remaining switch: 02:00:00:00:00:01",
                          "void Controller::MountGroupInitialMountSm::doPopulateRemainingSwitch(): "
                          "Adding remaining switch: 02:00:00:00:00:02"));
}

TEST_F(MountGroupInitialMountSmTest, NothingRemaining_CompletesWithoutTheWindow) {
  startWith({kLeaf1, kLeaf2});
  reports(kLeaf1, MountState::mounted);
  processed(kLeaf1);
  processed(kLeaf2);
  EXPECT_TRUE(isComplete());
  EXPECT_EQ(clock()->armedTimers(), 0U);
}

TEST_F(MountGroupInitialMountSmTest, SwitchWithoutMounts_OwesNothingWhateverItsState) {
  startWith({kLeaf1});
  reports(kLeaf1, MountState::mounting);
  processed(kLeaf1);
  EXPECT_TRUE(isComplete());
}

TEST_F(MountGroupInitialMountSmTest, SwitchWithoutSystemStatus_IsNotWaitedFor) {
  startWith({kLeaf1, kLeaf2});
  processed(kLeaf1);
  processed(kLeaf2);
  ASSERT_TRUE(isComplete());

  topology_.group("late");
  mountStatusOf(kService).systemStatusDel(kLeaf2);
  InitialMountFixture::processed(kLeaf1, kService, "late");
  InitialMountFixture::owes(kLeaf3, kService, "late");
  EXPECT_TRUE(InitialMountFixture::isComplete(kService, "late"));
}

TEST_F(MountGroupInitialMountSmTest, SwitchWithASystemStatusButNoneForTheGroup_OwesNothing) {
  startWith({kLeaf1, kLeaf2});
  mountStatusOf(kService).systemStatusIs(kLeaf2);
  processed(kLeaf1);
  processed(kLeaf3);
  EXPECT_FALSE(isRemaining(kLeaf2));
  EXPECT_TRUE(isComplete());
}

/// Every value that a state can have, those of no enumerator too.
class MountGroupStateTest : public MountGroupInitialMountSmTest,
                            public testing::WithParamInterface<int> {
 protected:
  static MountState state() { return static_cast<MountState>(GetParam()); }
  static bool isFinal() { return GetParam() == 3 || GetParam() == 4; }
};

TEST_P(MountGroupStateTest, OfASwitchWhenPopulating_OnlyThreeAndFourAreNotOwed) {
  startWith({kLeaf1});
  status(kLeaf1).mountStatusIs(kPath);
  reports(kLeaf1, state());
  processed(kLeaf1);
  EXPECT_EQ(isRemaining(kLeaf1), !isFinal());
  EXPECT_EQ(isComplete(), isFinal());
}

TEST_P(MountGroupStateTest, OfARemainingSwitch_OnlyThreeAndFourEndIt) {
  startWith({kLeaf1});
  status(kLeaf1).mountStatusIs(kPath);
  reports(kLeaf1, MountState::requested);
  processed(kLeaf1);
  ASSERT_TRUE(isRemaining(kLeaf1));
  reports(kLeaf1, state());
  EXPECT_EQ(isRemaining(kLeaf1), !isFinal());
  EXPECT_EQ(isComplete(), isFinal());
}

INSTANTIATE_TEST_SUITE_P(States, MountGroupStateTest,
                         testing::Values(0, 1, 2, 3, 4, 5, 6, 127, 128, 254, 255));

// ---- remaining switches

TEST_F(MountGroupInitialMountSmTest, LastRemainingSwitchDone_CompletesAndStopsTheWindow) {
  startWith({kLeaf1, kLeaf2});
  owes(kLeaf1);
  owes(kLeaf2);
  reports(kLeaf1, MountState::mounted);
  EXPECT_FALSE(isRemaining(kLeaf1));
  EXPECT_FALSE(isComplete());
  EXPECT_TRUE(group().mountClock().isArmed());
  reports(kLeaf2, MountState::failed);
  EXPECT_TRUE(isComplete());
  EXPECT_FALSE(group().mountClock().isArmed());
}

TEST_F(MountGroupInitialMountSmTest, RemainingSwitchDone_TracesIt) {
  startWith({kLeaf1, kLeaf2});
  owes(kLeaf1);
  owes(kLeaf2);
  traceIs(8);
  reports(kLeaf1, MountState::mounted);
  EXPECT_THAT(traced(8),
              ElementsAre("MountGroupInitialMountSm::handleMountState02:00:00:00:00:01 default",
                          "MountGroupInitialMountSm::checkSwitchMountsPending"));
  EXPECT_THAT(traced(5),
              ElementsAre("void Controller::MountGroupInitialMountSm::handleMountState(const "
                          "String&, const String&): handleMountState: deleting remaining switch "
                          "02:00:00:00:00:01"));
}

TEST_F(MountGroupInitialMountSmTest, StateOfASwitchThatIsNotRemaining_IsOnlyTraced) {
  startWith({kLeaf1});
  owes(kLeaf1);
  traceIs(8);
  group().handleMountState(kLeaf2, kGroup);
  EXPECT_THAT(traced(8),
              ElementsAre("MountGroupInitialMountSm::handleMountState02:00:00:00:00:02 default",
                          "handleMountState: 02:00:00:00:00:02 not in remaining."));
  EXPECT_THAT(traced(5), IsEmpty());
  EXPECT_TRUE(isRemaining(kLeaf1));
}

TEST_F(MountGroupInitialMountSmTest, StateOfASwitchThatIsNoLongerRemaining_IsNotHeard) {
  startWith({kLeaf1, kLeaf2});
  owes(kLeaf1);
  owes(kLeaf2);
  reports(kLeaf1, MountState::mounted);
  traceIs(8);
  reports(kLeaf1, MountState::mounting);
  EXPECT_THAT(traced(8), IsEmpty());
  EXPECT_FALSE(isRemaining(kLeaf1));
}

TEST_F(MountGroupInitialMountSmTest, StateOfAnotherGroupOnARemainingSwitch_DoesNothing) {
  startWith({kLeaf1});
  InitialMountFixture::owes(kLeaf1, kService, "other");
  traceIs(8);
  owes(kLeaf1);
  traces().clear();
  InitialMountFixture::reports(kLeaf1, kService, "other", MountState::mounted);
  EXPECT_TRUE(isRemaining(kLeaf1));
  EXPECT_THAT(traced(8),
              ElementsAre("MountGroupInitialMountSm::handleMountState02:00:00:00:00:01 other"));
  EXPECT_THAT(traced(5), IsEmpty());
}

TEST_F(MountGroupInitialMountSmTest, OtherGroups_AreNotWatchedWhileTheTraceIsOff) {
  startWith({kLeaf1});
  const ServiceMountGroupStatus& before = InitialMountFixture::status(kLeaf1, kService, "before");
  owes(kLeaf1);
  EXPECT_EQ(before.notifieeCount(), 0U);
  EXPECT_EQ(status(kLeaf1).notifieeCount(), 2U);  // as a remaining switch, and for processing
  EXPECT_EQ(InitialMountFixture::status(kLeaf1, kService, "late").notifieeCount(), 0U);
  traceIs(8);
  EXPECT_EQ(InitialMountFixture::status(kLeaf1, kService, "later").notifieeCount(), 1U);
}

TEST_F(MountGroupInitialMountSmTest, AllRemainingSwitches_AreLookedAtTogether) {
  startWith({kLeaf1, kLeaf2});
  owes(kLeaf1);
  owes(kLeaf2);
  group().hasNotificationActiveIs(false);
  reports(kLeaf1, MountState::mounted);
  reports(kLeaf2, MountState::mounted);
  group().hasNotificationActiveIs(true);
  ASSERT_TRUE(isRemaining(kLeaf1));
  traceIs(8);
  group().handleMountState();
  EXPECT_TRUE(isComplete());
  EXPECT_EQ(traced(8).front(), "MountGroupInitialMountSm::handleMountState");
  expectTrace(8, "MountGroupInitialMountSm::handleMountState02:00:00:00:00:01 default");
  expectTrace(8, "MountGroupInitialMountSm::handleMountState02:00:00:00:00:02 default");
}

TEST_F(MountGroupInitialMountSmTest, GroupStatusThatComesToARemainingSwitch_IsFollowed) {
  startWith({kLeaf1});
  owes(kLeaf1);
  traceIs(8);
  InitialMountFixture::status(kLeaf1, kService, "new").mountStateIs(MountState::mounting);
  expectTrace(8, "MountGroupInitialMountSm::handleMountState02:00:00:00:00:01 new");
}

TEST_F(MountGroupInitialMountSmTest, GroupStatusThatGoesAndComesBack_IsFollowedAgain) {
  startWith({kLeaf1});
  owes(kLeaf1);
  SystemStatus& system = *mountStatusOf(kService).systemStatus(kLeaf1);
  const Orm::Ptr<ServiceMountGroupStatus> gone(system.serviceMountGroupStatus(kGroup));
  system.serviceMountGroupStatusDel(kGroup);
  gone->mountStateIs(MountState::mounted);
  EXPECT_TRUE(isRemaining(kLeaf1));
  group().handleMountState();  // without a status for the group it stays
  EXPECT_TRUE(isRemaining(kLeaf1));
  reports(kLeaf1, MountState::mounted);
  EXPECT_TRUE(isComplete());
}

TEST_F(MountGroupInitialMountSmTest, GroupStatusReplacedUnderARemainingSwitch_NewOneIsFollowed) {
  startWith({kLeaf1});
  owes(kLeaf1);
  MountGroupInitialMountSm::OrmRemainingSwitch& remaining = *group().remainingSwitch().find(kLeaf1);
  const Orm::Ptr<ServiceMountGroupStatus const> present(&status(kLeaf1));
  remaining.serviceMountGroupStatusIs(present);  // the same again changes nothing
  EXPECT_EQ(present->notifieeCount(), 2U);       // this one and what tracks processing
  const auto other = Orm::make<ServiceMountGroupStatus>(kGroup);
  remaining.serviceMountGroupStatusIs(other);
  EXPECT_EQ(present->notifieeCount(), 1U);
  EXPECT_EQ(other->notifieeCount(), 1U);
}

TEST_F(MountGroupInitialMountSmTest, RemainingSwitchWhoseStatusGoes_IsWaitedForUntilTheWindowEnds) {
  startWith({kLeaf1});
  owes(kLeaf1);
  mountStatusOf(kService).systemStatusDel(kLeaf1);
  EXPECT_TRUE(isRemaining(kLeaf1));
  owes(kLeaf1);
  reports(kLeaf1, MountState::mounted);  // of the status that came since
  EXPECT_TRUE(isRemaining(kLeaf1));
  run(240);
  EXPECT_TRUE(isComplete());
}

TEST_F(MountGroupInitialMountSmTest, RemainingSwitchAddedTwice_IsKept) {
  startWith({kLeaf1});
  owes(kLeaf1);
  const auto* const remaining = group().remainingSwitch().find(kLeaf1);
  group().remainingSwitchIs(mountStatusOf(kService).systemStatus(kLeaf1));
  EXPECT_EQ(group().remainingSwitch().find(kLeaf1), remaining);
  group().remainingSwitchDel(kLeaf1);
  EXPECT_TRUE(group().remainingSwitch().empty());
}

// ---- the mount window

TEST_F(MountGroupInitialMountSmTest, SwitchThatNeverFinishes_IsGivenUpAfter240Seconds) {
  startWith({kLeaf1});
  run(10);
  owes(kLeaf1);
  run(239.999);
  EXPECT_TRUE(isRemaining(kLeaf1));
  EXPECT_FALSE(isComplete());
  traceIs(8);
  run(0.001);
  EXPECT_TRUE(isComplete());
  EXPECT_TRUE(group().remainingSwitch().empty());
  EXPECT_THAT(
      traced(5),
      ElementsAre("void Controller::MountGroupInitialMountSm::handleMountTimeout(): ",
                  "void Controller::MountGroupInitialMountSm::handleAttrlogFlushTimer(): "));
  EXPECT_THAT(traced(8),
              ElementsAre("MountGroupInitialMountSm::checkSwitchMountsPending",
                          "checkSwitchMountsPending: no remaining switches",
                          "void Controller::MountGroupInitialMountSm::"
                          "handleInitialMountsComplete(): ",
                          "MountGroupInitialMountSm::handleAttrlogFlushTimer Attrlog flush "
                          "completed for Topology:default"));
}

TEST_F(MountGroupInitialMountSmTest, WindowBeginsWhenTheSwitchesArePopulated) {
  startWith({kLeaf1, kLeaf2});
  owes(kLeaf1);
  run(100);
  owes(kLeaf2);
  EXPECT_EQ(group().mountClock().timeMin(), now() + 240);
}

TEST_F(MountGroupInitialMountSmTest, MountTimeoutBeforeInitialized_DoesNothingAtAll) {
  startWith({kLeaf1});
  owes(kLeaf1);
  const Orm::Ptr<MountGroupInitialMountSm> machine(&group());
  machine->doCleanup();  // ends the time in which the machine is initialized
  traceIs(8);
  machine->handleMountTimeout();
  machine->handleAttrlogFlushTimer();
  EXPECT_THAT(traces().lines(), IsEmpty());
  topology_.withoutGroup(kGroup);
}

TEST_F(MountGroupInitialMountSmTest, MountTimeoutBeforeThePeriod_CompletesNothing) {
  startInitialMounts();
  peerComes(kLeaf1);
  traceIs(8);
  group().handleMountTimeout();
  EXPECT_THAT(traced(5),
              ElementsAre("void Controller::MountGroupInitialMountSm::handleMountTimeout(): "));
  EXPECT_THAT(traced(8), ElementsAre("MountGroupInitialMountSm::checkSwitchMountsPending"));
  EXPECT_FALSE(group().localInitialMountsComplete());
}

TEST_F(MountGroupInitialMountSmTest, SwitchesRemaining_NothingIsComplete) {
  startWith({kLeaf1});
  owes(kLeaf1);
  traceIs(8);
  group().checkSwitchMountsPending();
  EXPECT_THAT(traced(8), ElementsAre("MountGroupInitialMountSm::checkSwitchMountsPending"));
  EXPECT_TRUE(group().mountClock().isArmed());
  EXPECT_FALSE(group().localInitialMountsComplete());
}

TEST_F(MountGroupInitialMountSmTest, MountClockTakenAway_WindowNeverEnds) {
  startWith({kLeaf1});
  group().mountClockDel();
  owes(kLeaf1);
  run(1000);
  EXPECT_TRUE(isRemaining(kLeaf1));
  reports(kLeaf1, MountState::mounted);
  EXPECT_TRUE(isComplete());
}

// ---- both traces

TEST_F(MountGroupInitialMountSmTest, Messages_GoToTheFastTraceToo) {
  Dualog::fastTraceIs(true);
  startWith({kLeaf1});
  owes(kLeaf1);
  std::vector<std::string> texts;
  Zimlog::read([&texts](const Zimlog::Descriptor&, std::int64_t, std::string_view text) {
    texts.emplace_back(text);
  });
  EXPECT_THAT(texts, Contains("void Controller::MountGroupInitialMountSm::"
                              "doPopulateRemainingSwitch(): Adding remaining switch: "
                              "02:00:00:00:00:01"));
  EXPECT_THAT(texts, Contains("void Controller::MountGroupInitialMountSm::handleProcessed(): "
                              "groupName: default complete=true"));
  EXPECT_THAT(traces().lines(), IsEmpty());
}

}  // namespace
}  // namespace Controller
