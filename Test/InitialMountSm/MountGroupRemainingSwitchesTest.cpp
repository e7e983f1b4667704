#include "Platform/Zimlog/Zimlog.h"
#include "Test/InitialMountSm/MountGroupFixture.h"

namespace Controller {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
constexpr const char* kService = kMountService;
constexpr const char* kGroup = kMountGroup;

using MountGroupRemainingSwitchesTest = MountGroupFixture;

// ---- remaining switches

TEST_F(MountGroupRemainingSwitchesTest, LastRemainingSwitchDone_CompletesAndStopsTheWindow) {
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

TEST_F(MountGroupRemainingSwitchesTest, RemainingSwitchDone_TracesIt) {
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

TEST_F(MountGroupRemainingSwitchesTest, StateOfASwitchThatIsNotRemaining_IsOnlyTraced) {
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

TEST_F(MountGroupRemainingSwitchesTest, StateOfASwitchThatIsNoLongerRemaining_IsNotHeard) {
  startWith({kLeaf1, kLeaf2});
  owes(kLeaf1);
  owes(kLeaf2);
  reports(kLeaf1, MountState::mounted);
  traceIs(8);
  reports(kLeaf1, MountState::mounting);
  EXPECT_THAT(traced(8), IsEmpty());
  EXPECT_FALSE(isRemaining(kLeaf1));
}

TEST_F(MountGroupRemainingSwitchesTest, StateOfAnotherGroupOnARemainingSwitch_DoesNothing) {
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

TEST_F(MountGroupRemainingSwitchesTest, OtherGroups_AreNotWatchedWhileTheTraceIsOff) {
  startWith({kLeaf1});
  const ServiceMountGroupStatus& before = InitialMountFixture::status(kLeaf1, kService, "before");
  owes(kLeaf1);
  EXPECT_EQ(before.notifieeCount(), 0U);
  EXPECT_EQ(status(kLeaf1).notifieeCount(), 1U);
  EXPECT_EQ(InitialMountFixture::status(kLeaf1, kService, "late").notifieeCount(), 0U);
  EXPECT_EQ(mountStatusOf(kService).systemStatus(kLeaf1)->notifieeCount(), 0U);
}

TEST_F(MountGroupRemainingSwitchesTest, OtherGroups_AreWatchedWhileTheTraceIsOn) {
  startWith({kLeaf1});
  const ServiceMountGroupStatus& before = InitialMountFixture::status(kLeaf1, kService, "before");
  traceIs(8);
  owes(kLeaf1);
  EXPECT_EQ(before.notifieeCount(), 1U);
  const ServiceMountGroupStatus& late = InitialMountFixture::status(kLeaf1, kService, "late");
  EXPECT_EQ(late.notifieeCount(), 1U);
  reports(kLeaf1, MountState::mounted);
  EXPECT_EQ(before.notifieeCount(), 0U);
  EXPECT_EQ(late.notifieeCount(), 0U);
}

TEST_F(MountGroupRemainingSwitchesTest, OtherGroupThatGoesAndComesBack_IsWatchedAgain) {
  startWith({kLeaf1});
  const Orm::Ptr<ServiceMountGroupStatus> gone(
      &InitialMountFixture::status(kLeaf1, kService, "other"));
  traceIs(8);
  owes(kLeaf1);
  mountStatusOf(kService).systemStatus(kLeaf1)->serviceMountGroupStatusDel("other");
  EXPECT_EQ(gone->notifieeCount(), 0U);
  EXPECT_EQ(InitialMountFixture::status(kLeaf1, kService, "other").notifieeCount(), 1U);
}

TEST_F(MountGroupRemainingSwitchesTest, AllRemainingSwitches_AreLookedAtTogether) {
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

TEST_F(MountGroupRemainingSwitchesTest, GroupStatusThatComesToARemainingSwitch_IsFollowed) {
  startWith({kLeaf1});
  traceIs(8);
  owes(kLeaf1);
  InitialMountFixture::status(kLeaf1, kService, "new").mountStateIs(MountState::mounting);
  expectTrace(8, "MountGroupInitialMountSm::handleMountState02:00:00:00:00:01 new");
}

TEST_F(MountGroupRemainingSwitchesTest, GroupStatusThatGoesAndComesBack_IsFollowedAgain) {
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

TEST_F(MountGroupRemainingSwitchesTest, GroupStatusReplacedUnderARemainingSwitch_NewOneIsFollowed) {
  startWith({kLeaf1});
  owes(kLeaf1);
  SystemStatus& system = *mountStatusOf(kService).systemStatus(kLeaf1);
  const Orm::Ptr<ServiceMountGroupStatus> gone(system.serviceMountGroupStatus(kGroup));
  EXPECT_EQ(gone->notifieeCount(), 1U);
  EXPECT_EQ(system.notifieeCount(), 0U);
  system.serviceMountGroupStatusDelAll();
  EXPECT_EQ(gone->notifieeCount(), 0U);
  EXPECT_EQ(system.notifieeCount(), 1U);
  InitialMountFixture::status(kLeaf1, kService, "other");
  EXPECT_EQ(system.notifieeCount(), 1U);
  EXPECT_EQ(status(kLeaf1).notifieeCount(), 1U);
  EXPECT_EQ(system.notifieeCount(), 0U);
}

/// Of two groups that both wait for the switch, the first to wait hears first, also of a status
/// that came since.
TEST_F(MountGroupRemainingSwitchesTest, GroupStatusThatComesBackWhileTraced_IsHeardInTheOldOrder) {
  topology_.group("second");
  startWith({kLeaf1});
  traceIs(8);
  owes(kLeaf1);
  InitialMountFixture::owes(kLeaf1, kService, "second");
  mountStatusOf(kService).systemStatus(kLeaf1)->serviceMountGroupStatusDel(kGroup);
  status(kLeaf1);
  traces().clear();
  reports(kLeaf1, MountState::mounting);
  EXPECT_THAT(traced(8),
              ElementsAre("MountGroupInitialMountSm::handleMountState02:00:00:00:00:01 default",
                          "MountGroupInitialMountSm::handleMountState02:00:00:00:00:01 default"));
  traces().clear();
  reports(kLeaf1, MountState::mounted);
  EXPECT_EQ(traced(8).at(1), "MountGroupInitialMountSm::checkSwitchMountsPending");
  EXPECT_EQ(traced(8).back(),
            "MountGroupInitialMountSm::handleMountState02:00:00:00:00:01 default");
}

TEST_F(MountGroupRemainingSwitchesTest,
       RemainingSwitchWhoseStatusGoes_IsWaitedForUntilTheWindowEnds) {
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

TEST_F(MountGroupRemainingSwitchesTest, RemainingSwitchAddedTwice_IsKept) {
  startWith({kLeaf1});
  owes(kLeaf1);
  const auto* const remaining = group().remainingSwitch().find(kLeaf1);
  group().remainingSwitchIs(mountStatusOf(kService).systemStatus(kLeaf1));
  EXPECT_EQ(group().remainingSwitch().find(kLeaf1), remaining);
  group().remainingSwitchDel(kLeaf1);
  EXPECT_TRUE(group().remainingSwitch().empty());
}

// ---- the mount window

TEST_F(MountGroupRemainingSwitchesTest, SwitchThatNeverFinishes_IsGivenUpAfter240Seconds) {
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

TEST_F(MountGroupRemainingSwitchesTest, WindowBeginsWhenTheSwitchesArePopulated) {
  startWith({kLeaf1, kLeaf2});
  owes(kLeaf1);
  run(100);
  owes(kLeaf2);
  EXPECT_EQ(group().mountClock().timeMin(), now() + 240);
}

TEST_F(MountGroupRemainingSwitchesTest, MountTimeoutBeforeInitialized_DoesNothingAtAll) {
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

TEST_F(MountGroupRemainingSwitchesTest, MountTimeoutBeforeThePeriod_CompletesNothing) {
  startInitialMounts();
  peerComes(kLeaf1);
  traceIs(8);
  group().handleMountTimeout();
  EXPECT_THAT(traced(5),
              ElementsAre("void Controller::MountGroupInitialMountSm::handleMountTimeout(): "));
  EXPECT_THAT(traced(8), ElementsAre("MountGroupInitialMountSm::checkSwitchMountsPending"));
  EXPECT_FALSE(group().localInitialMountsComplete());
}

TEST_F(MountGroupRemainingSwitchesTest, SwitchesRemaining_NothingIsComplete) {
  startWith({kLeaf1});
  owes(kLeaf1);
  traceIs(8);
  group().checkSwitchMountsPending();
  EXPECT_THAT(traced(8), ElementsAre("MountGroupInitialMountSm::checkSwitchMountsPending"));
  EXPECT_TRUE(group().mountClock().isArmed());
  EXPECT_FALSE(group().localInitialMountsComplete());
}

TEST_F(MountGroupRemainingSwitchesTest, MountClockTakenAway_WindowNeverEnds) {
  startWith({kLeaf1});
  group().mountClockDel();
  owes(kLeaf1);
  run(1000);
  EXPECT_TRUE(isRemaining(kLeaf1));
  reports(kLeaf1, MountState::mounted);
  EXPECT_TRUE(isComplete());
}

// ---- both traces

TEST_F(MountGroupRemainingSwitchesTest, Messages_GoToTheFastTraceToo) {
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
