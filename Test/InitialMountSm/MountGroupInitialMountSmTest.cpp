#include "Test/InitialMountSm/MountGroupFixture.h"

namespace Controller {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
constexpr const char* kService = kMountService;
constexpr const char* kGroup = kMountGroup;

using MountGroupInitialMountSmTest = MountGroupFixture;

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

TEST_F(MountGroupInitialMountSmTest, GroupsThatSeeTheSamePeers_ShareTheSnapshot) {
  topology_.group("other");
  startWith({kLeaf1, kLeaf2});
  topology_.group("late");
  const auto& shared = group().mountGroupInitialSwitchSet();
  EXPECT_EQ(groupSm(kService, "other")->mountGroupInitialSwitchSet(), shared);
  EXPECT_EQ(groupSm(kService, "late")->mountGroupInitialSwitchSet(), shared);
  // The same peers in another order are looked at in another order.
  peerGoes(kLeaf1);
  peerComes(kLeaf1);
  topology_.group("later");
  const auto& own = groupSm(kService, "later")->mountGroupInitialSwitchSet();
  EXPECT_NE(own, shared);
  EXPECT_EQ(own->initialSwitch().size(), 2U);
  EXPECT_EQ((*own->initialSwitch().begin()).key, systemId(kLeaf2));
  EXPECT_EQ((*shared->initialSwitch().begin()).key, systemId(kLeaf1));
}

TEST_F(MountGroupInitialMountSmTest, SwitchOfTheSnapshotThatIsNoPeerNow_CanBeRemaining) {
  startWith({kLeaf1, kLeaf2});
  owes(kLeaf1);
  peerGoes(kLeaf1);
  owes(kLeaf2);
  EXPECT_TRUE(isRemaining(kLeaf1));
  EXPECT_TRUE(isRemaining(kLeaf2));
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

}  // namespace
}  // namespace Controller
