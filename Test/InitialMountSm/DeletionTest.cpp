// A mount group's machine goes while one of its own handlers is on the stack: whoever hears that
// the group is complete, or is asked for a round of the attribute log, takes the machine away.

#include "Test/Support/InitialMountFixture.h"

namespace Controller {
namespace {

constexpr const char* kService = "Topology";
constexpr const char* kGroup = "default";

class DeletionFixture : public Support::InitialMountFixture {
 protected:
  DeletionFixture() : topology_(service(kService)) {
    topology_.group(kGroup);
    topology_.status().serviceNameIs(kService);
    traceIs(8);  // so that what is traced after the machine has gone is read
  }
  ~DeletionFixture() override { stopInitialMounts(); }

  /// Two switches stand in the snapshot when the period ends.
  void startWithSwitches() {
    startInitialMounts();
    peerComes(kLeaf1);
    peerComes(kLeaf2);
    run(kPeriod);
  }
  void bothOwe() {
    owes(kLeaf1, kService, kGroup);
    owes(kLeaf2, kService, kGroup);
  }

  Support::MountService topology_;
};

// ---- from within

/// Brings a group to its completion on one way, up to the last step, and does that.
struct Way {
  const char* name;
  void (*prepare)(class DeletionTest&);
  void (*lastStep)(class DeletionTest&);
};
/// Takes the machine away.
struct Removal {
  const char* name;
  void (*remove)(class DeletionTest&);
};

class DeletionTest : public DeletionFixture,
                     public testing::WithParamInterface<std::tuple<Way, Removal>> {
 public:
  static std::vector<Way> ways();
  static std::vector<Removal> removals();

 protected:
  void expectNothingLeft() {
    EXPECT_FALSE(topology_.status().initialMountsComplete().has(kGroup));
    EXPECT_EQ(clock()->armedTimers(), 0U);
    run(1000);
    EXPECT_FALSE(topology_.status().initialMountsComplete().has(kGroup));
  }
};

std::vector<Way> DeletionTest::ways() {
  return {
      {"PeriodEnds",
       [](DeletionTest& test) {
         test.startInitialMounts();
         test.peerComes(kLeaf1);
         test.peerGoes(kLeaf1);
       },
       [](DeletionTest& test) { test.run(kPeriod); }},
      {"LastSwitchProcessed",
       [](DeletionTest& test) {
         test.startWithSwitches();
         test.processed(kLeaf1, kService, kGroup);
         test.status(kLeaf2, kService, kGroup);
       },
       [](DeletionTest& test) { test.processed(kLeaf2, kService, kGroup); }},
      {"LastSwitchProcessedWhenItsStatusComes",
       [](DeletionTest& test) {
         test.startWithSwitches();
         test.processed(kLeaf1, kService, kGroup);
         test.mountStatusOf(kService).systemStatusIs(kLeaf2);
       },
       [](DeletionTest& test) { test.processed(kLeaf2, kService, kGroup); }},
      {"LastMountDone",
       [](DeletionTest& test) {
         test.startWithSwitches();
         test.bothOwe();
         test.reports(kLeaf1, kService, kGroup, MountState::mounted);
       },
       [](DeletionTest& test) { test.reports(kLeaf2, kService, kGroup, MountState::failed); }},
      {"AllMountsLookedAt",
       [](DeletionTest& test) {
         test.startWithSwitches();
         test.bothOwe();
         MountGroupInitialMountSm& group = *test.groupSm(kService, kGroup);
         group.hasNotificationActiveIs(false);
         test.reports(kLeaf1, kService, kGroup, MountState::mounted);
         test.reports(kLeaf2, kService, kGroup, MountState::mounted);
         group.hasNotificationActiveIs(true);
       },
       [](DeletionTest& test) { test.groupSm(kService, kGroup)->handleMountState(); }},
      {"WindowEnds",
       [](DeletionTest& test) {
         test.startWithSwitches();
         test.bothOwe();
       },
       [](DeletionTest& test) { test.run(240); }},
      {"FlushCompletes",
       [](DeletionTest& test) {
         Orm::NboAttrLog::Demuxer& standby = demuxer("standby");
         test.startWithSwitches();
         test.processed(kLeaf1, kService, kGroup);
         test.processed(kLeaf2, kService, kGroup);
         test.run(2.5);
         syncs(standby);
       },
       [](DeletionTest& test) { test.run(0.5); }},
      {"FlushTimesOut",
       [](DeletionTest& test) {
         demuxer("standby");
         test.startWithSwitches();
         test.processed(kLeaf1, kService, kGroup);
         test.processed(kLeaf2, kService, kGroup);
       },
       [](DeletionTest& test) { test.run(120); }},
  };
}

std::vector<Removal> DeletionTest::removals() {
  return {
      {"LeaderChanges", [](DeletionTest& test) { test.leaderIs("gen-2"); }},
      {"GenerationChanges", [](DeletionTest& test) { test.topology_.generation("gen-2"); }},
      {"GroupGoes", [](DeletionTest& test) { test.topology_.withoutGroup(kGroup); }},
      {"ServiceGoes", [](DeletionTest& test) { test.mountConfigDir()->entityDel(kService); }},
      {"AllGoes", [](DeletionTest& test) { test.stopInitialMounts(); }},
  };
}

TEST_P(DeletionTest, ReportThatTakesTheMachineAway_IsTheLastAndIsWithdrawn) {
  const Way& way = std::get<Way>(GetParam());
  const Removal& removal = std::get<Removal>(GetParam());
  way.prepare(*this);
  int reports = 0;
  const Support::Recorder watch(
      topology_.statusPtr(), [&](Orm::AttributeId attribute, const Orm::Key& key) {
        if (attribute != ServiceMountStatus::Attr::initialMountsComplete) return;
        if (!topology_.status().initialMountsComplete().value(key.as<Orm::String>())) return;
        ++reports;
        removal.remove(*this);
      });
  EXPECT_EQ(reports, 0);
  way.lastStep(*this);
  EXPECT_EQ(reports, 1);
  expectNothingLeft();
}

std::string nameOf(const testing::TestParamInfo<std::tuple<Way, Removal>>& instance) {
  const auto& [way, removal] = instance.param;
  return std::string(way.name) + "_" + removal.name;
}

INSTANTIATE_TEST_SUITE_P(Ways, DeletionTest,
                         testing::Combine(testing::ValuesIn(DeletionTest::ways()),
                                          testing::ValuesIn(DeletionTest::removals())),
                         nameOf);

TEST_F(DeletionFixture, RoundAskedForThatTakesTheMachineAway_EndsTheFlush) {
  Orm::NboAttrLog::Demuxer& first = demuxer("a");
  demuxer("b");
  const Support::Recorder host(first.mountTable(),
                               [this](Orm::AttributeId, const Orm::Key&) { leaderIs("gen-2"); });
  startWithSwitches();
  processed(kLeaf1, kService, kGroup);
  processed(kLeaf2, kService, kGroup);
  EXPECT_EQ(host.told(), 1U);
  EXPECT_EQ(groupSm(kService, kGroup), nullptr);
  EXPECT_EQ(clock()->armedTimers(), 0U);
  EXPECT_TRUE(topology_.status().initialMountsComplete().empty());
}

TEST_F(DeletionFixture, LeaderChangedAndBackByTheReport_LeavesANewMachineThatCompletesToo) {
  startWithSwitches();
  processed(kLeaf1, kService, kGroup);
  bool first = true;
  const Support::Recorder watch(topology_.statusPtr(), [&](Orm::AttributeId, const Orm::Key&) {
    if (!std::exchange(first, false)) return;
    leaderIs("gen-2");
    leaderIs("gen-1");
  });
  status(kLeaf2, kService, kGroup);
  first = true;
  processed(kLeaf2, kService, kGroup);
  EXPECT_FALSE(first);
  ASSERT_NE(groupSm(kService, kGroup), nullptr);
  EXPECT_TRUE(isComplete(kService, kGroup));
}

TEST_F(DeletionFixture, TwoGroupsThatEndTogether_SecondIsNotToldWhenTheFirstEndsTheGeneration) {
  topology_.group("inventory");
  const Support::Recorder watch(topology_.statusPtr(),
                                [this](Orm::AttributeId, const Orm::Key&) { leaderIs("gen-2"); });
  startInitialMounts();
  peerComes(kLeaf1);
  peerGoes(kLeaf1);
  run(kPeriod);
  EXPECT_EQ(watch.told(), 2U);  // the first group's report, and its end
  EXPECT_TRUE(topology_.status().initialMountsComplete().empty());
}

// ---- from outside: the leader changes in each phase, and comes back

class PhaseTest : public DeletionFixture {
 protected:
  /// Changes the leader, sees that nothing is left, and comes back to it.
  void changeLeaderAndBack() {
    leaderIs("gen-2");
    EXPECT_EQ(groupSm(kService, kGroup), nullptr);
    EXPECT_TRUE(topology_.status().initialMountsComplete().empty());
    leaderIs("gen-1");
    ASSERT_NE(groupSm(kService, kGroup), nullptr);
  }
  MountGroupInitialMountSm& group() const { return *groupSm(kService, kGroup); }
};

TEST_F(PhaseTest, LeaderChangesInTheConnectionPeriod_NewMachineWaitsForItToo) {
  startInitialMounts();
  peerComes(kLeaf1);
  run(10);
  changeLeaderAndBack();
  EXPECT_FALSE(group().mountGroupInitialSwitchSet()->complete());
  processed(kLeaf1, kService, kGroup);
  run(4.999);
  EXPECT_FALSE(isComplete(kService, kGroup));
  run(0.001);
  EXPECT_TRUE(isComplete(kService, kGroup));
}

TEST_F(PhaseTest, LeaderChangesWhileSwitchesAreProcessed_NewMachineCountsAgain) {
  startWithSwitches();
  processed(kLeaf1, kService, kGroup);
  peerGoes(kLeaf2);
  changeLeaderAndBack();
  EXPECT_TRUE(isComplete(kService, kGroup));  // its snapshot has one switch, which is processed
}

TEST_F(PhaseTest, LeaderChangesInTheMountWindow_NewMachineHasAWindowOfItsOwn) {
  startWithSwitches();
  bothOwe();
  run(200);
  changeLeaderAndBack();
  EXPECT_EQ(group().remainingSwitch().size(), 2U);
  run(239.999);
  EXPECT_FALSE(isComplete(kService, kGroup));
  run(0.001);
  EXPECT_TRUE(isComplete(kService, kGroup));
}

TEST_F(PhaseTest, LeaderChangesWhileFlushing_NewMachineAsksForARoundOfItsOwn) {
  Orm::NboAttrLog::Demuxer& standby = demuxer("standby");
  startWithSwitches();
  processed(kLeaf1, kService, kGroup);
  processed(kLeaf2, kService, kGroup);
  run(1.5);
  changeLeaderAndBack();
  EXPECT_EQ(standby.mountTable()->nextRound(), 2U);
  standby.roundIs(1);
  run(1);
  EXPECT_FALSE(isComplete(kService, kGroup));
  standby.roundIs(2);
  run(1);
  EXPECT_TRUE(isComplete(kService, kGroup));
}

TEST_F(PhaseTest, LeaderChangesWhenAllIsDone_NewMachineReportsAgain) {
  startWithSwitches();
  processed(kLeaf1, kService, kGroup);
  processed(kLeaf2, kService, kGroup);
  ASSERT_TRUE(isComplete(kService, kGroup));
  changeLeaderAndBack();
  EXPECT_TRUE(isComplete(kService, kGroup));
}

}  // namespace
}  // namespace Controller
