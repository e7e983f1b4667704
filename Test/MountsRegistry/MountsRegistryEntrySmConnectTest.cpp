#include "Test/Support/ControllerFixture.h"

// What the machine of a mount entry does about its decisions: mounts, remounts, unmounts.
namespace Controller {
namespace {

using Orm::Ptr;
using Orm::String;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr const char* kA = "02:00:00:00:00:01";
constexpr const char* kB = "02:00:00:00:00:02";

const std::string kHandle =
    "void Controller::MountsRegistryEntrySm::handleSwitchConnection(const Controller::SystemId&): ";
const std::string kConnect =
    "void Controller::MountsRegistryEntrySm::doConnectSwitch(const Controller::SystemId&): ";
const std::string kDisconnect =
    "void Controller::MountsRegistryEntrySm::doDisconnectSwitch(const Controller::SystemId&): ";

class MountsRegistryEntrySmConnectTest : public Support::ControllerFixture {
 protected:
  MountsRegistryEntrySmConnectTest() { start(); }

  MountsRegistryEntrySm& entry() const { return entrySm("topology/status"); }
  Support::MountGroup group() const { return service("Topology").group("default"); }
  Support::FakeMountSm& mountOfA() const { return mount(kA, "topology/status"); }
  void mountFromA() {
    group().path("topology/status");
    connect(kA, {{"Topology", 3}});
  }
  void startTracing() {
    traces().clear();
    traceIs(8);
    mounts().takeRequests();
  }
};

// ---- connecting

TEST_F(MountsRegistryEntrySmConnectTest, AdmittedSystem_IsMountedWithWhatTheRegistrySays) {
  traceIs(8);
  group().path("topology/status", "Topology::Status", "rs");
  connect(kA, {{"Topology", 3}});
  const Support::FakeMountSm::Request& request = mountOfA().request();
  EXPECT_EQ(systemId(kA), request.systemId);
  EXPECT_EQ(peerTable().peer(systemId(kA))->connectionConfig(), request.connectionConfig);
  EXPECT_EQ(heartbeatConfig(), request.heartbeatConfig);
  EXPECT_EQ("/switch", request.remoteRoot);
  EXPECT_EQ("topology/status", request.remotePath);
  EXPECT_EQ("/controller/mounts/topology/status/02:00:00:00:00:01", request.mountPath);
  EXPECT_EQ("Topology::Status", request.ormType);
  EXPECT_EQ("rs", request.mountFlags);
  EXPECT_EQ("", mountOfA().record().text());
  EXPECT_EQ(systemId(kA), mountOfA().record().systemId());
  expectTrace(
      8, "MountsRegistryEntrySm::handleSwitchConnection topology/status Peer:" + std::string(kA));
  expectTrace(8, "MountsRegistryEntrySm::doConnectSwitch topology/status 02:00:00:00:00:01");
  expectTrace(5, kConnect + " mounting:topology/status from:02:00:00:00:00:01");
  expectTrace(8, "targetPath=/controller/mounts/topology/status/02:00:00:00:00:01");
}

TEST_F(MountsRegistryEntrySmConnectTest, NoLimits_AreTheLargestNumbers) {
  mountFromA();
  EXPECT_EQ(2147483647, mountOfA().request().timeout);
  EXPECT_EQ(4294967295U, mountOfA().request().retries);
}

TEST_F(MountsRegistryEntrySmConnectTest, Limits_ArePassedOnAsWholeNumbers) {
  stopConfig();
  stopRegistry();
  registrySettingsAre("/switch", 5, 30.75);
  start();
  mountFromA();
  EXPECT_EQ(30, mountOfA().request().timeout);
  EXPECT_EQ(5U, mountOfA().request().retries);
}

TEST_F(MountsRegistryEntrySmConnectTest, TargetPathOfItsOwn_IsWhereTheSwitchesCopiesStand) {
  group().path("topology/status", "T", "r", "/elsewhere/topology");
  connect(kA, {{"Topology", 3}});
  EXPECT_EQ("/elsewhere/topology/02:00:00:00:00:01", mountOfA().request().mountPath);
}

TEST_F(MountsRegistryEntrySmConnectTest, MountedAndIdle_OnlyHasItsStatusRefreshed) {
  mountFromA();
  mountOfA().reports(MountState::mounted);
  startTracing();
  entry().handleSwitchConnection(systemId(kA));
  EXPECT_THAT(mounts().requests(), IsEmpty());
  expectTrace(5, kConnect + " updating status:topology/status from:02:00:00:00:00:01");
  expectTrace(5,
              "void Controller::MountsRegistryEntrySm::updateMountersStatus(const "
              "Controller::SystemId&, Controller::MountState): topology/status mount "
              "state:mounted connection:02:00:00:00:00:01");
}

TEST_F(MountsRegistryEntrySmConnectTest, MountedWithAPendingRequest_IsRemounted) {
  mountFromA();
  mountOfA().reports(MountState::mounted);
  mountOfA().pendingRequestIs(true);
  startTracing();
  entry().handleSwitchConnection(systemId(kA));
  EXPECT_THAT(mounts().requests(), ElementsAre("remount topology/status from 02:00:00:00:00:01"));
  expectTrace(5, kConnect + " remounting:topology/status from:02:00:00:00:00:01");
}

TEST_F(MountsRegistryEntrySmConnectTest, MountInAnyOtherState_IsRemountedAtEachDecision) {
  mountFromA();
  for (const MountState state : {MountState::requested, MountState::mounting, MountState::failed}) {
    mountOfA().reports(state);
    startTracing();
    entry().handleSwitchConnection(systemId(kA));
    entry().handleSwitchConnection(systemId(kA));
    EXPECT_EQ(2U, mounts().requests().size());
    EXPECT_THAT(mounts().requests(),
                Contains("remount topology/status from 02:00:00:00:00:01").Times(2));
  }
}

TEST_F(MountsRegistryEntrySmConnectTest, NamedConnection_IsTheSameDecision) {
  mountFromA();
  startTracing();
  entry().handleNamedSwitchConnection(kA);
  expectTrace(
      8, "MountsRegistryEntrySm::handleSwitchConnection topology/status Peer:" + std::string(kA));
  EXPECT_THAT(mounts().requests(), ElementsAre("remount topology/status from 02:00:00:00:00:01"));
}

TEST_F(MountsRegistryEntrySmConnectTest, UnknownSystem_IsNotConnected) {
  mountFromA();
  startTracing();
  entry().doConnectSwitch(systemId(kB));
  EXPECT_THAT(mounts().requests(), IsEmpty());
  EXPECT_THAT(traced(5), IsEmpty());
}

TEST_F(MountsRegistryEntrySmConnectTest, RecordIsWatchedOnceTheMountHasBeenAskedFor) {
  group().path("topology/status");
  bool processed = true;
  std::size_t watchers = 99;
  mounts().onMadeIs([&](Support::FakeMountSm& made) {
    const auto* status = groupStatus(kA, "Topology", "default");
    processed = status && status->processed();
    watchers = made.record().notifieeCount();
    made.record().mountStateIs(MountState::requested);  // not seen yet
  });
  traceIs(5);
  connect(kA, {{"Topology", 3}});
  EXPECT_FALSE(processed);
  EXPECT_TRUE(groupStatus(kA, "Topology", "default")->processed());
  EXPECT_EQ(MountState::requested,
            mountStatus(kA, "Topology", "default", "topology/status")->mountState());
  expectTrace(5,
              "void Controller::MountsRegistryEntrySm::OrmMountSmDataSm::handleMountState(): "
              "topology/status connection:02:00:00:00:00:01 oldMountState:unmounted "
              "newMountState:requested");
  mounts().onMadeIs(nullptr);
}

TEST_F(MountsRegistryEntrySmConnectTest, TargetThatIsReplaced_IsWhereLaterCopiesStand) {
  group().path("topology/status", "T", "r", "/elsewhere/topology");
  connect(kA, {{"Topology", 3}});
  const Ptr<Orm::Dir> before = mountOfA().request().mountDir;
  const Ptr<Orm::Dir> elsewhere = root()->entityAs<Orm::Dir>("elsewhere");
  elsewhere->entityDel("topology");
  const Ptr<Orm::Dir> after = elsewhere->createDir("topology");
  connect(kB, {{"Topology", 3}});
  EXPECT_NE(before, after);
  EXPECT_EQ(after, mount(kB, "topology/status").request().mountDir);
}

using MountsRegistryEntrySmConnectDeathTest = MountsRegistryEntrySmConnectTest;

TEST_F(MountsRegistryEntrySmConnectDeathTest, TargetThatHasGone_StopsTheProcess) {
  group().path("topology/status", "T", "r", "/elsewhere/topology");
  connect(kA, {{"Topology", 3}});
  root()->entityDel("elsewhere");
  EXPECT_DEATH(connect(kB, {{"Topology", 3}}), HasSubstr("assertion failed: prefixDir "));
}

TEST_F(MountsRegistryEntrySmConnectDeathTest, TargetThatIsMissing_StopsTheProcess) {
  const auto made = registry()->mountEntryIs("p", "/nowhere", "T", "r");
  made->mounterIs({"Topology", "g"}, nullptr, nullptr, Orm::make<ServiceMountStatus>());
  EXPECT_DEATH(connect(kA, {{"Topology", 3}}), HasSubstr("assertion failed: prefixDir "));
}

TEST_F(MountsRegistryEntrySmConnectDeathTest, TargetThatIsNoDirectory_StopsTheProcess) {
  root()->createEntity("Topology::Status", "file");
  const auto made = registry()->mountEntryIs("p", "/file", "T", "r");
  made->mounterIs({"Topology", "g"}, nullptr, nullptr, Orm::make<ServiceMountStatus>());
  EXPECT_DEATH(connect(kA, {{"Topology", 3}}), HasSubstr("assertion failed: prefixDir "));
}

// ---- refusing and disconnecting

TEST_F(MountsRegistryEntrySmConnectTest, SystemWithoutConnectionConfig_IsTreatedAsRefused) {
  group().path("topology/status");
  traceIs(8);
  connectWithoutConfig(kA, {{"Topology", 3}});
  EXPECT_THAT(mounts().requests(), IsEmpty());
  expectTrace(5, kHandle + " Cannot mount:topology/status from:02:00:00:00:00:01");
  expectTrace(5, kDisconnect + " already unmounted:topology/status from:02:00:00:00:00:01");
  EXPECT_THAT(traced(8), Not(Contains(HasSubstr("canMountFromConnection"))));
}

TEST_F(MountsRegistryEntrySmConnectTest, RefusedSystem_IsUnmounted) {
  mountFromA();
  startTracing();
  versionIs(kA, "Topology", 0);
  expectTrace(5, kHandle + " Cannot mount:topology/status from:02:00:00:00:00:01");
  expectTrace(5, kDisconnect + " unmounting:topology/status from:02:00:00:00:00:01");
  expectTrace(8, "doDisconnectSwitch: unmount is not state-preserving");
  EXPECT_THAT(mounts().requests(), ElementsAre("unmount topology/status from 02:00:00:00:00:01"));
}

TEST_F(MountsRegistryEntrySmConnectTest, DisconnectWithoutAMount_ReportsUnmountedToTheMounters) {
  group().path("topology/status");
  connect(kA, {{"Topology", 0}});
  startTracing();
  entry().doDisconnectSwitch(systemId(kA));
  EXPECT_THAT(mounts().requests(), IsEmpty());
  EXPECT_EQ("MountsRegistryEntrySm::doDisconnectSwitch topology/status 02:00:00:00:00:01",
            traced(8).front());
  EXPECT_THAT(
      traced(5),
      testing::IsSupersetOf(
          {kDisconnect + " already unmounted:topology/status from:02:00:00:00:00:01",
           std::string("void Controller::MountsRegistryEntrySm::updateMountersStatus(const "
                       "Controller::SystemId&, Controller::MountState): topology/status mount "
                       "state:unmounted connection:02:00:00:00:00:01")}));
}

TEST_F(MountsRegistryEntrySmConnectTest, SystemThatLeaves_IsUnmountedBeforeItsStatusGoes) {
  mountFromA();
  mountOfA().reports(MountState::mounted);
  startTracing();
  disconnect(kA);
  EXPECT_THAT(mounts().requests(), ElementsAre("unmount topology/status from 02:00:00:00:00:01"));
  const std::vector<std::string> texts = traced(5);
  const auto at = [&texts](const std::string& text) {
    return std::find(texts.begin(), texts.end(), text) - texts.begin();
  };
  const auto registered = at(kHandle + " connection:02:00:00:00:00:01 registered:false");
  const auto unmounting = at(kDisconnect + " unmounting:topology/status from:02:00:00:00:00:01");
  const auto deleting =
      at("void Controller::MountsRegistryEntrySm::updateSystemStatus(const Controller::SystemId&): "
         "Deleting systemStatus for: 02:00:00:00:00:01");
  EXPECT_LT(registered, unmounting);
  EXPECT_LT(unmounting, deleting);
  EXPECT_LT(deleting, static_cast<std::ptrdiff_t>(texts.size()));
  EXPECT_EQ(nullptr, service("Topology").status().systemStatus(kA));
}

TEST_F(MountsRegistryEntrySmConnectTest, ConnectedSystem_HasItsStatusBeforeItIsMounted) {
  group().path("topology/status");
  bool known = false;
  mounts().onMadeIs([&](auto&) { known = groupStatus(kA, "Topology", "default") != nullptr; });
  connect(kA, {{"Topology", 3}});
  EXPECT_TRUE(known);
  mounts().onMadeIs(nullptr);
}

// ---- preserving

class PreservingUnmountTest : public MountsRegistryEntrySmConnectTest {
 protected:
  /// Disconnects the switch, which is remembered as inactive; what was asked of its mount.
  std::vector<std::string> leave() {
    startTracing();
    inactive(kA);
    traces().clear();
    peerTable().peerDel(systemId(kA));
    return mounts().takeRequests();
  }
  static constexpr const char* kPreserving =
      "preserving unmount topology/status from 02:00:00:00:00:01";
  static constexpr const char* kPlain = "unmount topology/status from 02:00:00:00:00:01";
};

TEST_F(PreservingUnmountTest, InactiveSystemOfAPreservingGroup_IsUnmountedPreservingly) {
  group().preserve();
  enabledIs("Topology", true);
  mountFromA();
  EXPECT_THAT(leave(), ElementsAre(kPreserving));
  expectTrace(8, "MountsRegistryEntrySm::preserveMountsOnDisconnect: 02:00:00:00:00:01");
  expectTrace(8, ": mounter for group default and service Topology has preserve=1");
  expectTrace(8, "doDisconnectSwitch: unmount is state-preserving");
  // The status of an inactive system stays.
  EXPECT_NE(nullptr, groupStatus(kA, "Topology", "default"));
}

TEST_F(PreservingUnmountTest, SystemThatIsSimplyGone_IsUnmountedPlainly) {
  group().preserve();
  enabledIs("Topology", true);
  mountFromA();
  startTracing();
  peerTable().peerDel(systemId(kA));
  EXPECT_THAT(mounts().requests(), ElementsAre(kPlain));
}

TEST_F(PreservingUnmountTest, GroupThatDoesNotPreserve_IsUnmountedPlainly) {
  enabledIs("Topology", true);
  mountFromA();
  EXPECT_THAT(leave(), ElementsAre(kPlain));
}

TEST_F(PreservingUnmountTest, ServiceThatIsDisabledOrNotConfigured_IsUnmountedPlainly) {
  group().preserve();
  mountFromA();
  EXPECT_THAT(leave(), ElementsAre(kPlain));
  startTracing();
  enabledIs("Topology", false);
  EXPECT_THAT(mounts().requests(), ElementsAre(kPlain));
}

TEST_F(PreservingUnmountTest, SystemNotInTheGroupsFilter_IsUnmountedPlainly) {
  group().preserve().systems({kB}).system(kA, false);
  enabledIs("Topology", true);
  service("Other").group("g").path("topology/status");
  mountFromA();
  EXPECT_THAT(leave(), ElementsAre(kPlain));
}

TEST_F(PreservingUnmountTest, SystemInTheGroupsFilter_IsUnmountedPreservingly) {
  group().preserve().systems({kA});
  enabledIs("Topology", true);
  mountFromA();
  EXPECT_THAT(leave(), ElementsAre(kPreserving));
}

TEST_F(PreservingUnmountTest, SecondMounterPreserves_IsEnough) {
  enabledIs("Topology", true);
  enabledIs("Other", true);
  mountFromA();
  service("Other").group("g").preserve().path("topology/status");
  EXPECT_THAT(leave(), ElementsAre(kPreserving));
  expectTrace(8, ": mounter for group g and service Other has preserve=1");
}

TEST_F(PreservingUnmountTest, ProxysRealService_IsTheOneThatMustBeEnabled) {
  proxyService("Topology-Proxy").group("default").preserve().path("topology/status");
  enabledIs("Topology", true);
  connect(kA, {{"Topology", 3}});
  EXPECT_THAT(leave(), ElementsAre(kPreserving));
}

}  // namespace
}  // namespace Controller
