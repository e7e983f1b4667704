#include <random>

#include "Test/Support/ControllerFixture.h"

// What the machine of a mount entry makes of its mounts' reports.
namespace Controller {
namespace {

using Orm::Ptr;
using Orm::String;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kA = "02:00:00:00:00:01";
constexpr const char* kB = "02:00:00:00:00:02";

const std::string kReport =
    "void Controller::MountsRegistryEntrySm::OrmMountSmDataSm::handleMountState(): ";
const std::string kMounters =
    "void Controller::MountsRegistryEntrySm::updateMountersStatus(const Controller::SystemId&, "
    "Controller::MountState): ";
const std::string kSystem =
    "void Controller::MountsRegistryEntrySm::updateSystemStatus(const Controller::SystemId&): ";

class MountStatusTest : public Support::ControllerFixture {
 protected:
  MountStatusTest() { start(); }

  void mountFromA(std::initializer_list<const char*> paths = {"a", "b", "c"}) {
    for (const char* path : paths) group().path(path);
    connect(kA, {{"Topology", 3}});
  }
  Support::MountGroup group() const { return service("Topology").group("default"); }
  MountState groupState(const char* system = kA) const {
    return groupStatus(system, "Topology", "default")->mountState();
  }
  const MountStatus* status(const char* path) const {
    return mountStatus(kA, "Topology", "default", path);
  }
  /// The text ends like this, whatever the function's signature is.
  void expectMessage(const std::string& end) const {
    EXPECT_THAT(traced(5), Contains(testing::EndsWith(": " + end)));
  }
};

// ---- reports

TEST_F(MountStatusTest, Report_IsLoggedWithTheOldAndTheNewState) {
  mountFromA({"a"});
  traceIs(8);
  mount(kA, "a").reports(MountState::mounting);
  expectTrace(5, kReport +
                     "a connection:02:00:00:00:00:01 oldMountState:unmounted "
                     "newMountState:mounting");
  mount(kA, "a").reports(MountState::mounted);
  expectTrace(
      5, kReport + "a connection:02:00:00:00:00:01 oldMountState:mounting newMountState:mounted");
  expectTrace(5, kMounters + "a mount state:mounted connection:02:00:00:00:00:01");
}

TEST_F(MountStatusTest, Report_IsWrittenForTheMounter) {
  mountFromA({"a"});
  traceIs(8);
  mount(kA, "a").reports(MountState::mounted);
  expectMessage(
      "mounter: Value('Controller::MounterName', ** {'serviceName': Topology, 'groupName': "
      "default}) connectionId: 02:00:00:00:00:01 mountState: mounted");
  expectMessage("group: default mount: a%s config: true");
  expectMessage(
      "a mount state:mounted connection:02:00:00:00:00:01 service:Topology mountGroup:default "
      "remote path:a");
}

TEST_F(MountStatusTest, MountedPath_IsTheTargetPathAndTheSystem) {
  mountFromA({"a"});
  mount(kA, "a").reports(MountState::mounting);
  EXPECT_EQ(MountState::mounting, status("a")->mountState());
  EXPECT_TRUE(status("a")->mountedPath().empty());
  mount(kA, "a").reports(MountState::mounted);
  EXPECT_EQ("/controller/mounts/a/02:00:00:00:00:01", status("a")->mountedPath().text());
}

TEST_F(MountStatusTest, MountedPath_StaysWhenTheMountFailsLater) {
  mountFromA({"a"});
  mount(kA, "a").reports(MountState::mounted);
  mount(kA, "a").reports(MountState::failed);
  EXPECT_EQ(MountState::failed, status("a")->mountState());
  EXPECT_EQ("/controller/mounts/a/02:00:00:00:00:01", status("a")->mountedPath().text());
}

TEST_F(MountStatusTest, MountThatReportsUnmountedAfterAnotherState_IsDeleted) {
  mountFromA({"a"});
  mount(kA, "a").reports(MountState::mounted);
  mounts().takeRequests();
  traceIs(8);
  mount(kA, "a").reports(MountState::unmounted);
  EXPECT_THAT(mounts().takeRequests(), ElementsAre("clean up a from 02:00:00:00:00:01"));
  EXPECT_TRUE(mounts().live().empty());
  EXPECT_EQ(nullptr, entrySm("a").mountSmData(systemId(kA)));
  EXPECT_EQ(nullptr, entrySm("a").mountSm(systemId(kA)));
  EXPECT_EQ(nullptr, status("a"));
  expectTrace(8, "MountsRegistryEntrySm::handleMountState: Deleting mountSm for 02:00:00:00:00:01");
}

TEST_F(MountStatusTest, RecordThatStartsUnmounted_IsNotDeleted) {
  mountFromA({"a"});
  EXPECT_EQ(MountState::unmounted, mount(kA, "a").record().mountState());
  EXPECT_NE(nullptr, entrySm("a").mountSm(systemId(kA)));
  mount(kA, "a").reports(MountState::requested);
  EXPECT_NE(nullptr, entrySm("a").mountSm(systemId(kA)));
  EXPECT_EQ(MountState::requested, entrySm("a").mountSmDataSm(systemId(kA))->lastMountState());
}

TEST_F(MountStatusTest, MountThatWentIsMadeAnewByTheNextDecision) {
  mountFromA({"a"});
  mount(kA, "a").reports(MountState::mounted);
  mount(kA, "a").reports(MountState::unmounted);
  mounts().takeRequests();
  registrySm().handleSwitchConnection(systemId(kA));
  EXPECT_THAT(mounts().takeRequests(), ElementsAre("mount a from 02:00:00:00:00:01"));
}

TEST_F(MountStatusTest, WatcherThatTakesTheEntryOutOnItsReport_IsSurvived) {
  // Before, at and after the report that ends the mount.
  for (const MountState last :
       {MountState::mounting, MountState::failed, MountState::mounted, MountState::unmounted}) {
    mountFromA({"a"});
    mount(kA, "a").reports(MountState::mounted);
    mount(kA, "a").reports(MountState::requested);
    const Ptr<ServiceMountGroupStatus> watched(groupStatus(kA, "Topology", "default"));
    const Ptr<MountStatus> path(watched->mountStatus("a"));
    const auto takeOut = [this](auto, const auto&) { registry()->mountEntryDel("a"); };
    Support::Recorder ofGroup(watched, takeOut);
    Support::Recorder ofPath(path, takeOut);
    mount(kA, "a").reports(last);
    EXPECT_FALSE(hasEntrySm("a"));
    EXPECT_TRUE(mounts().live().empty());
    service("Topology").withoutGroup("default");
    disconnect(kA);
  }
}

using MountStatusDeathTest = MountStatusTest;

TEST_F(MountStatusDeathTest, RecordWithoutItsMountMachine_StopsTheProcess) {
  mountFromA({"a"});
  mount(kA, "a").reports(MountState::mounted);
  const Ptr<MountSmData> record = entrySm("a").mountSmData(systemId(kA));
  entrySm("a").mountSmDel(systemId(kA));
  EXPECT_DEATH(record->mountStateIs(MountState::unmounted),
               HasSubstr("mountsRegistryEntrySm()->mountSm( connectionId ) "));
}

TEST_F(MountStatusDeathTest, MounterWithoutAServiceMountStatus_StopsTheProcess) {
  const auto made = registry()->mountEntryIs("p", "/controller/mounts", "T", "r");
  const Ptr<Mounter> mounter = Orm::make<Mounter>(MounterName{"S", "g"}, nullptr,
                                                  Orm::make<ServiceMountGroupConfig>("g"), nullptr);
  const Connection connection(systemId(kA));
  EXPECT_DEATH(entrySm("p").updateMounterStatus(*mounter, connection, MountState::mounted),
               HasSubstr("assertion failed: serviceMountStatus "));
}

TEST_F(MountStatusDeathTest, MounterWithoutAGroupConfig_StopsTheProcess) {
  const auto made = registry()->mountEntryIs("p", "/controller/mounts", "T", "r");
  const auto status = Orm::make<ServiceMountStatus>();
  made->mounterIs({"S", "g"}, nullptr, nullptr, status);
  EXPECT_DEATH(connect(kA, {{"S", 3}}),
               HasSubstr("mountGroupConfig && \"mountGroupConfig does not exist for mounter\" "));
}

// ---- one mounter's status

TEST_F(MountStatusTest, NoSystemStatus_IsLoggedAndSkipped) {
  mountFromA({"a"});
  service("Topology").status().systemStatusDel(kA);
  traceIs(8);
  mount(kA, "a").reports(MountState::mounted);
  expectMessage("no system status for: 02:00:00:00:00:01");
  EXPECT_EQ(nullptr, groupStatus(kA, "Topology", "default"));
}

TEST_F(MountStatusTest, NoGroupStatus_IsTracedAndSkipped) {
  mountFromA({"a"});
  service("Topology").status().systemStatus(kA)->serviceMountGroupStatusDel("default");
  traceIs(8);
  mount(kA, "a").reports(MountState::mounted);
  expectTrace(8, "serviceMountGroupStatus does not exist for mounter");
  EXPECT_EQ(nullptr, groupStatus(kA, "Topology", "default"));
}

TEST_F(MountStatusTest, PathThatTheGroupNoLongerConfigures_HasNoStatus) {
  mountFromA({"a"});
  stopConfig();  // nobody takes the mounter off
  const auto made = registry()->mountEntry("a");
  made->mounterIs({"Topology", "default"}, nullptr,
                  Ptr<ServiceMountGroupConfig const>(&group().config()),
                  service("Topology").statusPtr());
  mount(kA, "a").reports(MountState::mounted);
  EXPECT_NE(nullptr, status("a"));
  group().withoutPath("a");
  traceIs(5);
  mount(kA, "a").reports(MountState::mounting);
  EXPECT_EQ(nullptr, status("a"));
  expectMessage("group: default mount: a%s config: false");
  EXPECT_TRUE(groupStatus(kA, "Topology", "default")->processed());
}

TEST_F(MountStatusTest, MounterThatIsNotInterested_HasNoStatusButIsProcessed) {
  group().systems({kB}).path("a");
  service("Other").group("g").path("a");
  connect(kA, {{"Topology", 3}, {"Other", 3}});
  mount(kA, "a").reports(MountState::mounted);
  EXPECT_EQ(nullptr, status("a"));
  EXPECT_TRUE(groupStatus(kA, "Topology", "default")->processed());
  EXPECT_EQ(MountState::mounted, mountStatus(kA, "Other", "g", "a")->mountState());
}

TEST_F(MountStatusTest, RefusedSystem_CountsAsProcessed) {
  group().path("a");
  connect(kA, {{"Topology", 0}});
  EXPECT_TRUE(groupStatus(kA, "Topology", "default")->processed());
  EXPECT_EQ(nullptr, status("a"));
  EXPECT_EQ(MountState::unmounted, groupState());
}

TEST_F(MountStatusTest, SystemOfUnknownVersion_IsNotLookedAt) {
  group().path("a");
  connect(kA);
  EXPECT_EQ(nullptr, groupStatus(kA, "Topology", "default"));
}

TEST_F(MountStatusTest, TwoMounters_BothSeeTheMount) {
  service("Other").group("g").path("a");
  mountFromA({"a"});
  mount(kA, "a").reports(MountState::mounted);
  EXPECT_EQ(MountState::mounted, status("a")->mountState());
  EXPECT_EQ(MountState::mounted, mountStatus(kA, "Other", "g", "a")->mountState());
}

// ---- the group's state

TEST_F(MountStatusTest, OneFailedPath_MakesTheGroupFailed) {
  mountFromA();
  mount(kA, "a").reports(MountState::mounted);
  mount(kA, "b").reports(MountState::failed);
  mount(kA, "c").reports(MountState::mounted);
  EXPECT_EQ(MountState::failed, groupState());
}

TEST_F(MountStatusTest, OnePathMountedAndAnotherWithoutStatus_IsUnmounted) {
  mountFromA();
  mount(kA, "a").reports(MountState::mounted);
  EXPECT_EQ(MountState::unmounted, groupState());
}

TEST_F(MountStatusTest, AllPathsInOneState_IsThatState) {
  mountFromA();
  for (const char* path : {"a", "b", "c"}) mount(kA, path).reports(MountState::mounting);
  EXPECT_EQ(MountState::mounting, groupState());
  mount(kA, "a").reports(MountState::mounted);
  EXPECT_EQ(MountState::unmounted, groupState());
  mount(kA, "b").reports(MountState::mounted);
  mount(kA, "c").reports(MountState::mounted);
  EXPECT_EQ(MountState::mounted, groupState());
}

TEST_F(MountStatusTest, GroupWithoutPaths_HasTheStateThatIsWritten) {
  const auto config = Orm::make<ServiceMountGroupConfig>("g");
  const auto made = Orm::make<ServiceMountGroupStatus>("g");
  registry()->mountEntryIs("p", "/controller/mounts", "T", "r");
  entrySm("p").updateMountGroupMountState(*config, *made, MountState::mounted);
  EXPECT_EQ(MountState::mounted, made->mountState());
}

/// The walk over the group's paths that the counts stand for.
MountState stateByWalk(const ServiceMountGroupConfig& config, const ServiceMountGroupStatus& status,
                       MountState state) {
  bool mixed = false;
  for (const Ptr<MountConfig>& path : config.mountConfig()) {
    const MountStatus* const one = status.mountStatus(path->path());
    if (one && one->mountState() == MountState::failed) return MountState::failed;
    if (!one || one->mountState() != state) mixed = true;
  }
  return mixed ? MountState::unmounted : state;
}

TEST_F(MountStatusTest, RandomStates_CountsGiveWhatTheWalkGives) {
  registry()->mountEntryIs("p", "/controller/mounts", "T", "r");
  for (unsigned seed = 1; seed <= 50; ++seed) {
    std::mt19937 random(seed);
    const auto config = Orm::make<ServiceMountGroupConfig>("g");
    const auto made = Orm::make<ServiceMountGroupStatus>("g");
    for (int step = 0; step != 300; ++step) {
      const String path("p" + std::to_string(random() % 5));
      const auto state = static_cast<MountState>(random() % kMountStates);
      switch (random() % 4) {
        case 0:
          config->mountConfigIs(path, "T", "r", "");
          break;
        case 1:
          made->mountStatusDel(path);
          config->mountConfigDel(path);
          break;
        case 2:
          if (config->mountConfig(path)) made->mountStatusIs(path)->mountStateIs(state);
          break;
        default:
          made->mountStatusDel(path);
          break;
      }
      entrySm("p").updateMountGroupMountState(*config, *made, state);
      ASSERT_EQ(stateByWalk(*config, *made, state), made->mountState())
          << "seed " << seed << " step " << step;
    }
  }
}

// ---- the system's status

TEST_F(MountStatusTest, ConnectedSystem_GetsAGroupStatusLoggedOnce) {
  group().path("a").path("b");
  traceIs(5);
  connect(kA, {{"Topology", 3}});
  const std::string added = kSystem + "Adding serviceMountGroupStatus for: 02:00:00:00:00:01";
  EXPECT_EQ(1U, timesTraced(5, added));
  registrySm().handleSwitchConnection(systemId(kA));
  EXPECT_EQ(1U, timesTraced(5, added));
}

TEST_F(MountStatusTest, UnknownSystem_LosesItsStatus) {
  mountFromA({"a"});
  traceIs(5);
  disconnect(kA);
  expectTrace(5, kSystem + "Deleting systemStatus for: 02:00:00:00:00:01");
  EXPECT_TRUE(service("Topology").status().systemStatus().empty());
}

TEST_F(MountStatusTest, InactiveSystem_KeepsItsStatus) {
  mountFromA({"a"});
  inactive(kA);
  traceIs(5);
  disconnect(kA);
  EXPECT_NE(nullptr, groupStatus(kA, "Topology", "default"));
  EXPECT_THAT(traced(5), Not(Contains(HasSubstr("Deleting systemStatus"))));
  forget(kA);
  EXPECT_EQ(nullptr, groupStatus(kA, "Topology", "default"));
}

TEST_F(MountStatusTest, MessagesOfReports_AreInTheFastTraceToo) {
  mountFromA({"a"});
  Dualog::fastTraceIs(true);
  mount(kA, "a").reports(MountState::mounted);
  std::vector<std::string> records;
  Zimlog::read(
      [&](const auto&, std::int64_t, std::string_view text) { records.emplace_back(text); });
  EXPECT_THAT(records, Contains(kReport + "a connection:02:00:00:00:00:01 oldMountState:unmounted "
                                          "newMountState:mounted"));
  EXPECT_THAT(records, Contains(kMounters + "a mount state:mounted connection:" + kA));
}

}  // namespace
}  // namespace Controller
