// The last steps of a mount group's machine: the attribute log is flushed, and the group reported.

#include "Test/Support/InitialMountFixture.h"

namespace Controller {
namespace {

using Orm::NboAttrLog::Demuxer;
using Orm::NboAttrLog::In::Status;
using testing::ElementsAre;

constexpr const char* kService = "Topology";
constexpr const char* kGroup = "default";
const std::string kFlush =
    "void Controller::MountGroupInitialMountSm::handleInitialMountsComplete(): "
    "flushLocalPassiveEntityLogs: Flushing Demuxer: ";
const std::string kPoll = "void Controller::MountGroupInitialMountSm::handleAttrlogFlushTimer(): ";
const std::string kCheck = kPoll + "isLocalPassiveCurrentRoundSyncComplete: ";
const std::string kTimer = "MountGroupInitialMountSm::handleAttrlogFlushTimer ";

/// A group that completes locally when the connection period ends: nothing is owed.
class AttrlogFlushTest : public Support::InitialMountFixture {
 protected:
  AttrlogFlushTest() : topology_(service(kService)) {
    topology_.group(kGroup);
    topology_.status().serviceNameIs(kService);
    startInitialMounts();
    peerComes(kLeaf1);
    peerGoes(kLeaf1);
    run(kPeriod - 1);
  }

  /// To the moment at which the group is complete locally.
  void completeLocally() {
    run(1);
    ASSERT_TRUE(group().localInitialMountsComplete());
  }
  MountGroupInitialMountSm& group() const { return *groupSm(kService, kGroup); }
  bool isComplete() const { return InitialMountFixture::isComplete(kService, kGroup); }

  Support::MountService topology_;
};

TEST_F(AttrlogFlushTest, NoPassiveConnection_GroupIsReportedInTheSameCall) {
  traceIs(8);
  completeLocally();
  EXPECT_TRUE(isComplete());
  EXPECT_FALSE(group().attrlogFlushTimer().isArmed());
  expectTrace(8, kTimer + "Attrlog flush completed for Topology:default");
}

TEST_F(AttrlogFlushTest, ConnectionThatIsNotPassiveOrNotActive_IsNotFlushed) {
  Demuxer& active = demuxer("active");
  connection("active").modeIs(Orm::NboAttrLog::Mode::active);
  Demuxer& idle = demuxer("idle");
  connection("idle").status()->activeIs(false);
  completeLocally();
  EXPECT_TRUE(isComplete());
  EXPECT_EQ(active.mountTable()->nextRound(), 0U);
  EXPECT_EQ(idle.mountTable()->nextRound(), 0U);
}

TEST_F(AttrlogFlushTest, PassiveConnections_AreEachAskedForTheNextRoundInTheirOrder) {
  Demuxer& second = demuxer("z");
  Demuxer& first = demuxer("a");
  second.mountTable()->nextRoundIs(41);
  traceIs(5);
  completeLocally();
  EXPECT_EQ(second.mountTable()->nextRound(), 42U);
  EXPECT_EQ(first.mountTable()->nextRound(), 1U);
  EXPECT_THAT(
      traced(5),
      ElementsAre("void Controller::InitialMountSm::handleConnectionTimeout(): initial "
                  "switch set complete",
                  "void Controller::MountGroupInitialMountSm::handleMountTimeout(): ", kFlush + "z",
                  kFlush + "a", kPoll, kCheck + "Demuxer:z connectStatus:1 round:0 nextRound:42",
                  kCheck + "Demuxer:a connectStatus:1 round:0 nextRound:1"));
}

TEST_F(AttrlogFlushTest, DemuxerThatIsNotConnected_IsNeitherAskedNorWaitedFor) {
  Demuxer& standby = demuxer("standby");
  standby.connectStatusIs(Status::notConnected);
  standby.mountTable()->nextRoundIs(7);
  traceIs(5);
  completeLocally();
  EXPECT_TRUE(isComplete());
  EXPECT_EQ(standby.mountTable()->nextRound(), 7U);
  expectTrace(5, kCheck + "Demuxer:standby connectStatus:0 round:0 nextRound:7");
  expectNoTrace(5, kFlush + "standby");
}

TEST_F(AttrlogFlushTest, DemuxerWithAnotherStatus_IsNeitherAskedNorWaitedFor) {
  Demuxer& standby = demuxer("standby");
  standby.connectStatusIs(static_cast<Status>(2));
  standby.mountTable()->nextRoundIs(7);
  completeLocally();
  EXPECT_TRUE(isComplete());
  EXPECT_EQ(standby.mountTable()->nextRound(), 7U);
}

TEST_F(AttrlogFlushTest, ConnectionWithoutDemuxer_IsTracedAndNotWaitedFor) {
  connection("standby");
  traceIs(5);
  completeLocally();
  EXPECT_TRUE(isComplete());
  expectTrace(5, kCheck + "No Demuxer for:standby");
}

TEST_F(AttrlogFlushTest, RoundReachedWithinTheCall_GroupIsReportedInTheSameCall) {
  Demuxer& standby = demuxer("standby");
  const Support::Recorder host(standby.mountTable(),
                               [&](Orm::AttributeId, const Orm::Key&) { syncs(standby); });
  completeLocally();
  EXPECT_EQ(standby.round(), 1U);
  EXPECT_TRUE(isComplete());
}

TEST_F(AttrlogFlushTest, RoundReachedBetweenTwoPolls_IsSeenByTheNext) {
  Demuxer& standby = demuxer("standby");
  completeLocally();
  run(3.5);
  syncs(standby);
  EXPECT_FALSE(isComplete());
  traceIs(8);
  run(0.499);
  EXPECT_FALSE(isComplete());
  run(0.001);
  EXPECT_TRUE(isComplete());
  EXPECT_THAT(traced(5),
              ElementsAre(kPoll, kCheck + "Demuxer:standby connectStatus:1 round:1 nextRound:1"));
  EXPECT_THAT(traced(8), ElementsAre(kTimer + "Attrlog flush completed for Topology:default"));
  EXPECT_FALSE(group().attrlogFlushTimer().isArmed());
}

TEST_F(AttrlogFlushTest, OneOfTwoSynced_WaitsForTheOther) {
  Demuxer& a = demuxer("a");
  Demuxer& b = demuxer("b");
  completeLocally();
  syncs(a);
  run(1);
  EXPECT_FALSE(isComplete());
  syncs(b);
  run(1);
  EXPECT_TRUE(isComplete());
}

TEST_F(AttrlogFlushTest, DemuxerLostWhileFlushing_DoesNotHoldItUp) {
  Demuxer& a = demuxer("a");
  demuxer("b");
  completeLocally();
  run(10);
  EXPECT_FALSE(isComplete());
  a.connectStatusIs(Status::notConnected);
  Orm::globalNboAttrLogDemuxerManager()->demuxerDel("b");
  run(1);
  EXPECT_TRUE(isComplete());
}

TEST_F(AttrlogFlushTest, DemuxerThatConnectsWhileFlushing_IsWaitedForWhenItsRoundIsBehind) {
  Demuxer& a = demuxer("a");
  Demuxer& b = demuxer("b");
  b.mountTable()->nextRoundIs(1);
  b.connectStatusIs(Status::notConnected);
  completeLocally();
  b.connectStatusIs(Status::connected);
  syncs(a);
  run(1);
  EXPECT_FALSE(isComplete());
  syncs(b);
  run(1);
  EXPECT_TRUE(isComplete());
}

TEST_F(AttrlogFlushTest, RoundThatIsFurtherOn_IsNotTheOneAskedFor) {
  Demuxer& standby = demuxer("standby");
  standby.roundIs(5);
  completeLocally();
  run(1);
  EXPECT_FALSE(isComplete());
}

TEST_F(AttrlogFlushTest, RoundNeverReached_IsGivenUpAfter120Seconds) {
  demuxer("standby");
  completeLocally();
  run(119.999);
  EXPECT_FALSE(isComplete());
  traceIs(8);
  run(0.001);
  EXPECT_TRUE(isComplete());
  EXPECT_THAT(traced(8), ElementsAre(kTimer + "Attrlog flush timed out for Topology:default"));
  EXPECT_FALSE(group().attrlogFlushTimer().isArmed());
}

TEST_F(AttrlogFlushTest, RoundReachedForTheLastPoll_IsCalledTimedOutAllTheSame) {
  Demuxer& standby = demuxer("standby");
  completeLocally();
  run(119.5);
  syncs(standby);
  traceIs(8);
  run(0.5);
  EXPECT_THAT(traced(8), ElementsAre(kTimer + "Attrlog flush timed out for Topology:default"));
}

TEST_F(AttrlogFlushTest, RoundReachedForThePollBeforeTheLast_IsCalledCompleted) {
  Demuxer& standby = demuxer("standby");
  completeLocally();
  run(118.5);
  syncs(standby);
  traceIs(8);
  run(0.5);
  EXPECT_THAT(traced(8), ElementsAre(kTimer + "Attrlog flush completed for Topology:default"));
}

TEST_F(AttrlogFlushTest, Polls_AreEachSecondAndTraceTheTimeThatIsLeft) {
  demuxer("standby");
  completeLocally();
  const Orm::Seconds begin = now();
  EXPECT_EQ(group().attrlogFlushRemainingTime(), 119);
  EXPECT_EQ(group().attrlogFlushTimer().timeMin(), begin + 1);
  traceIs(8);
  run(119.5);
  std::vector<Orm::Seconds> times;
  std::vector<std::string> texts;
  std::vector<std::string> expected;
  for (const auto& line : traces().lines()) {
    if (line.level != 8) continue;
    times.push_back(line.time - begin);
    texts.push_back(line.text);
  }
  ASSERT_EQ(times.size(), 119U);
  for (std::size_t at = 0; at != times.size(); ++at) {
    EXPECT_EQ(times[at], static_cast<Orm::Seconds>(at + 1));
    expected.push_back(kTimer + "Attrlog flush not complete yet, remaining time until timeout: " +
                       std::to_string(119 - at));
  }
  EXPECT_EQ(texts, expected);
}

TEST_F(AttrlogFlushTest, FirstPoll_TracesTheWholeTimeout) {
  demuxer("standby");
  traceIs(8);
  completeLocally();
  expectTrace(8, kTimer + "Attrlog flush not complete yet, remaining time until timeout: 120");
}

TEST_F(AttrlogFlushTest, LocalCompletionToldTwice_DoesNotRestartTheFlush) {
  Demuxer& standby = demuxer("standby");
  completeLocally();
  run(10);
  group().localInitialMountsCompleteIs(true);
  group().checkSwitchMountsPending();
  EXPECT_EQ(standby.mountTable()->nextRound(), 1U);
  EXPECT_EQ(group().attrlogFlushRemainingTime(), 109);
}

TEST_F(AttrlogFlushTest, TwoGroups_EachAskForARoundAndWaitForTheLast) {
  topology_.group("inventory");
  Demuxer& standby = demuxer("standby");
  completeLocally();
  EXPECT_EQ(standby.mountTable()->nextRound(), 2U);
  standby.roundIs(1);
  run(1);
  EXPECT_FALSE(isComplete());
  standby.roundIs(2);
  run(1);
  EXPECT_TRUE(isComplete());
  EXPECT_TRUE(InitialMountFixture::isComplete(kService, "inventory"));
}

TEST_F(AttrlogFlushTest, FlushTimerTakenAway_IsNotPolledAgain) {
  Demuxer& standby = demuxer("standby");
  group().attrlogFlushTimerDel();
  completeLocally();
  syncs(standby);
  run(200);
  EXPECT_FALSE(isComplete());
  group().handleAttrlogFlushTimer();
  EXPECT_TRUE(isComplete());
}

TEST_F(AttrlogFlushTest, SwitchProcessedWhileFlushing_HoldsNothingUp) {
  Demuxer& standby = demuxer("standby");
  peerComes(kLeaf1);
  processed(kLeaf1, kService, kGroup);
  completeLocally();
  run(0.5);
  owes(kLeaf2, kService, kGroup);
  EXPECT_TRUE(group().remainingSwitch().empty());  // not of the snapshot
  status(kLeaf1, kService, kGroup).mountStatusIs(kPath);
  processed(kLeaf3, kService, kGroup);
  EXPECT_TRUE(isRemaining(kLeaf1, kService, kGroup));  // of the snapshot, and owes by now
  syncs(standby);
  run(0.5);
  EXPECT_TRUE(isComplete());
  run(240);
  EXPECT_TRUE(group().remainingSwitch().empty());
  EXPECT_EQ(standby.mountTable()->nextRound(), 1U);
}

// ---- clean-up

TEST_F(AttrlogFlushTest, CleanupWhileFlushing_LeavesNoTimerAndNoReport) {
  Demuxer& standby = demuxer("standby");
  completeLocally();
  run(5);
  leaderIs("gen-2");
  EXPECT_EQ(clock()->armedTimers(), 0U);
  syncs(standby);
  run(200);
  EXPECT_TRUE(topology_.status().initialMountsComplete().empty());
}

TEST_F(AttrlogFlushTest, CleanupAfterTheReport_WithdrawsItAndIsTraced) {
  completeLocally();
  topology_.status().initialMountsCompleteIs("other", true);
  traceIs(8);
  topology_.withoutGroup(kGroup);
  expectTrace(8, "MountGroupInitialMountSm::doCleanup Topology:default");
  EXPECT_FALSE(topology_.status().initialMountsComplete().has(kGroup));
  EXPECT_TRUE(topology_.status().initialMountsComplete().has("other"));
}

TEST_F(AttrlogFlushTest, CleanupWithoutStatus_IsHarmless) {
  const Orm::Ptr<MountGroupInitialMountSm> machine(&group());
  machine->doCleanup();
  machine->doCleanup();
  EXPECT_TRUE(topology_.status().initialMountsComplete().empty());
}

TEST_F(AttrlogFlushTest, NewMachine_StartsFromTheBeginning) {
  Demuxer& standby = demuxer("standby");
  completeLocally();
  run(30);
  leaderIs("gen-2");
  leaderIs("gen-1");
  EXPECT_EQ(standby.mountTable()->nextRound(), 2U);
  EXPECT_EQ(group().attrlogFlushRemainingTime(), 119);
  run(119);
  EXPECT_FALSE(isComplete());
  run(1);
  EXPECT_TRUE(isComplete());
}

}  // namespace
}  // namespace Controller
