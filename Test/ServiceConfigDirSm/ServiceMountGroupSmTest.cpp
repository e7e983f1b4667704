#include "Controllerdb/ServiceConfigDirSm/ServiceMountGroupSm.h"
#include "Test/Support/ControllerFixture.h"

namespace Controller {
namespace {

using Orm::Ptr;
using Orm::String;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

const std::string kAdd = "void Controller::ServiceMountGroupSm::addMountConfig(const String&): ";
const std::string kRemove =
    "void Controller::ServiceMountGroupSm::removeMountConfig(const String&): ";

class ServiceMountGroupSmTest : public Support::ControllerFixture {
 protected:
  ServiceMountGroupSmTest() { startConfig(); }

  const Mounter* mounter(const char* path, const char* serviceName) const {
    const MountsRegistryEntry* const entry = registry()->mountEntry(path);
    return entry ? entry->mounter(serviceName) : nullptr;
  }
  String prefix(const char* serviceName, const char* path) const {
    return service(serviceName).status().mountedPathPrefix().value(path);
  }
  ServiceMountGroupSm& machine(const char* serviceName = "Topology") const {
    return *configSm().serviceMountConfigSm().find(serviceName)->mountGroupSm().find("default");
  }
  void startTracing() {
    traces().clear();
    traceIs(8);
  }
};

// ---- adding

TEST_F(ServiceMountGroupSmTest, NewPath_GetsAnEntryAMounterAndAPrefix) {
  const auto group = service("Topology").group("default");
  startTracing();
  service("Topology").group("default").path("topology/status", "Topology::Status", "rs");
  const MountsRegistryEntry* const entry = registry()->mountEntry("topology/status");
  ASSERT_NE(nullptr, entry);
  EXPECT_EQ("/controller/mounts/topology/status", entry->targetPath());
  EXPECT_EQ("Topology::Status", entry->ormType());
  EXPECT_EQ("rs", entry->mountFlags());
  const Mounter* const made = mounter("topology/status", "Topology");
  ASSERT_NE(nullptr, made);
  EXPECT_EQ((MounterName{"Topology", "default"}), made->mounterName());
  EXPECT_EQ(group.config().mountConfig("topology/status"), made->mountConfig().get());
  EXPECT_EQ(&group.config(), made->mountGroupConfig().get());
  EXPECT_EQ(service("Topology").statusPtr(), made->serviceMountStatus());
  EXPECT_EQ("/controller/mounts/topology/status", prefix("Topology", "topology/status"));
  EXPECT_TRUE(root()->lookup("/controller/mounts/topology/status"));
  EXPECT_THAT(
      traced(5),
      ElementsAre(kAdd + " add registry entry service:Topology group:default rpath:topology/status "
                         "tpath:/controller/mounts/topology/status",
                  kAdd + " add mounter service:Topology group:default rpath:topology/status path "
                         "prefix:/controller/mounts/topology/status"));
  expectTrace(8, "ServiceMountGroupSm::handleMountConfig: topology/status");
  expectTrace(8, "ServiceMountGroupSm::canMount mountConfig genId:gen-1 controller genId:gen-1");
  expectTrace(8, "ServiceMountGroupSm::addMountConfig: topology/status");
}

TEST_F(ServiceMountGroupSmTest, ExplicitTargetPath_IsUsedUnchangedAndCreated) {
  service("Topology").group("default").path("a", "T", "r", "/elsewhere/a");
  EXPECT_EQ("/elsewhere/a", registry()->mountEntry("a")->targetPath());
  EXPECT_EQ("/elsewhere/a", prefix("Topology", "a"));
  EXPECT_TRUE(root()->lookup("elsewhere/a"));
  EXPECT_EQ(nullptr, root()->lookup("/controller/mounts/a"));
}

TEST_F(ServiceMountGroupSmTest, PrefixIsSetBeforeTheMounterIsThere) {
  const auto topology = service("Topology");
  bool mounterWasThere = true;
  Support::Recorder recorder(topology.statusPtr(), [&](Orm::AttributeId attribute, const auto&) {
    if (attribute == ServiceMountStatus::Attr::mountedPathPrefix) {
      mounterWasThere = mounter("a", "Topology") != nullptr;
    }
  });
  topology.group("default").path("a");
  EXPECT_FALSE(mounterWasThere);
}

TEST_F(ServiceMountGroupSmTest, TwoServicesOnOnePath_ShareTheFirstOnesEntryAndPlace) {
  service("Topology").group("default").path("a", "T", "r", "/first");
  startTracing();
  service("Routing").group("default").path("a", "T", "r", "/second");
  EXPECT_EQ(1U, registry()->mountEntry().size());
  EXPECT_EQ(2U, registry()->mountEntry("a")->mounter().size());
  EXPECT_EQ("/first", registry()->mountEntry("a")->targetPath());
  EXPECT_EQ("/first", prefix("Routing", "a"));
  EXPECT_EQ(nullptr, root()->lookup("/second"));
  EXPECT_THAT(traced(5),
              ElementsAre(kAdd + " dup registry entry service:Routing group:default rpath:a",
                          kAdd + " add mounter service:Routing group:default rpath:a path "
                                 "prefix:/first"));
}

using ServiceMountGroupSmDeathTest = ServiceMountGroupSmTest;

TEST_F(ServiceMountGroupSmDeathTest, OtherTypeOnAPresentPath_StopsTheProcess) {
  service("Topology").group("default").path("a", "T", "r");
  EXPECT_DEATH(service("Routing").group("default").path("a", "U", "w"),
               HasSubstr("assertion failed: mre->ormType() == mountConfig->ormcType() "));
}

TEST_F(ServiceMountGroupSmDeathTest, OtherFlagsOnAPresentPath_StopTheProcess) {
  service("Topology").group("default").path("a", "T", "r");
  EXPECT_DEATH(service("Routing").group("default").path("a", "T", "w"),
               HasSubstr("assertion failed: mre->mountFlags() == mountConfig->mountFlags() "));
}

TEST_F(ServiceMountGroupSmTest, TwoGroupsOfAServiceOnOnePath_KeepTheFirstsMounter) {
  service("Topology").group("default").path("a");
  startTracing();
  service("Topology").group("second").path("a");
  EXPECT_EQ("default", mounter("a", "Topology")->groupName());
  EXPECT_EQ(1U, registry()->mountEntry("a")->mounter().size());
  expectTrace(8, "addMountConfig Service:Topology has already requested a mount for a");
  EXPECT_THAT(traced(5),
              ElementsAre(kAdd + " dup registry entry service:Topology group:second rpath:a"));
}

// ---- removing

TEST_F(ServiceMountGroupSmTest, PathOfTwoGroupsRemovedFromEither_TakesTheServicesMounterOff) {
  for (const char* group : {"default", "second"}) {
    service("Topology").group("default").path("a");
    service("Topology").group("second").path("a");
    service("Topology").group(group).withoutPath("a");
    EXPECT_EQ(nullptr, mounter("a", "Topology")) << group;
    EXPECT_FALSE(service("Topology").status().mountedPathPrefix().has("a"));
    service("Topology").withoutGroup("default").withoutGroup("second");
  }
}

TEST_F(ServiceMountGroupSmTest, LastMounterRemoved_LeavesTheEntryInPlaceAndSaysSo) {
  service("Topology").group("default").path("a");
  startTracing();
  service("Topology").group("default").withoutPath("a");
  ASSERT_NE(nullptr, registry()->mountEntry("a"));
  EXPECT_TRUE(registry()->mountEntry("a")->mounter().empty());
  EXPECT_FALSE(service("Topology").status().mountedPathPrefix().has("a"));
  EXPECT_THAT(traced(5),
              ElementsAre(kRemove + " del registry entry: service:Topology group:default path:a",
                          kRemove + " all mounters gone path:a"));
  expectTrace(8, "ServiceMountGroupSm::removeMountConfig: a");
}

TEST_F(ServiceMountGroupSmTest, OneOfTwoMountersRemoved_TheOtherStays) {
  service("Topology").group("default").path("a");
  service("Routing").group("default").path("a");
  startTracing();
  service("Topology").group("default").withoutPath("a");
  EXPECT_NE(nullptr, mounter("a", "Routing"));
  EXPECT_THAT(traced(5),
              ElementsAre(kRemove + " del registry entry: service:Topology group:default path:a"));
}

TEST_F(ServiceMountGroupSmTest, UnknownPathRemoved_IsIgnored) {
  service("Topology").group("default");
  startTracing();
  machine().removeMountConfig("nowhere");
  EXPECT_THAT(traced(8), ElementsAre("ServiceMountGroupSm::removeMountConfig: nowhere"));
  EXPECT_THAT(traced(5), IsEmpty());
}

TEST_F(ServiceMountGroupSmTest, PathAddedAgain_UsesTheEntryThatWasLeft) {
  service("Topology").group("default").path("a", "T", "r", "/first").withoutPath("a");
  service("Topology").group("default").path("a", "T", "r", "/second");
  EXPECT_EQ("/first", prefix("Topology", "a"));
}

TEST_F(ServiceMountGroupSmTest, MessagesOfMounters_AreInTheFastTraceToo) {
  service("Topology").group("default");
  Dualog::fastTraceIs(true);
  service("Topology").group("default").path("a").withoutPath("a");
  std::vector<std::string> records;
  Zimlog::read([&](const Zimlog::Descriptor& descriptor, std::int64_t, std::string_view text) {
    EXPECT_EQ(5, descriptor.level);
    records.emplace_back(text);
  });
  EXPECT_THAT(records,
              ElementsAre(kAdd + " add registry entry service:Topology group:default rpath:a "
                                 "tpath:/controller/mounts/a",
                          kAdd + " add mounter service:Topology group:default rpath:a path "
                                 "prefix:/controller/mounts/a",
                          kRemove + " del registry entry: service:Topology group:default path:a",
                          kRemove + " all mounters gone path:a"));
  EXPECT_THAT(traces().lines(), IsEmpty());
}

// ---- generations

TEST_F(ServiceMountGroupSmTest, NoLeader_OrdinaryServiceRegistersNothing) {
  leaderIs("");
  service("Topology").group("default").path("a");
  EXPECT_EQ(nullptr, registry()->mountEntry("a"));
}

TEST_F(ServiceMountGroupSmTest, EmptyGenerationsOnBothSides_StillMountNothing) {
  leaderIs("");
  service("Topology").generation("").group("default").path("a");
  startTracing();
  EXPECT_FALSE(machine().canMount());
  EXPECT_THAT(traced(8), ElementsAre("ServiceMountGroupSm::canMount mountConfig genId: controller "
                                     "genId:"));
}

TEST_F(ServiceMountGroupSmTest, LeaderGone_OrdinaryServiceIsTakenOffAllPaths) {
  service("Topology").group("default").path("a").path("b");
  startTracing();
  leaderIs("");
  EXPECT_EQ(nullptr, mounter("a", "Topology"));
  EXPECT_EQ(nullptr, mounter("b", "Topology"));
  EXPECT_TRUE(service("Topology").status().mountedPathPrefix().empty());
  expectTrace(8, "ServiceMountGroupSm::doCleanup");
  EXPECT_THAT(traced(8), Contains(testing::StartsWith("ServiceMountGroupSm::handleLeaderGenId")));
}

TEST_F(ServiceMountGroupSmTest, NoLeader_ProxyServiceRegistersAllPaths) {
  leaderIs("");
  proxyService("Topology-Proxy").group("default").path("a").path("b");
  EXPECT_NE(nullptr, mounter("a", "Topology-Proxy"));
  leaderIs("gen-9");
  EXPECT_NE(nullptr, mounter("a", "Topology-Proxy"));
  EXPECT_NE(nullptr, mounter("b", "Topology-Proxy"));
}

TEST_F(ServiceMountGroupSmTest, AnotherLeader_MountersGoUntilTheConfigurationIsRewritten) {
  service("Topology").group("default").path("a").path("b");
  leaderIs("gen-2");
  EXPECT_EQ(nullptr, mounter("a", "Topology"));
  EXPECT_EQ(nullptr, mounter("b", "Topology"));
  EXPECT_TRUE(service("Topology").status().mountedPathPrefix().empty());
  service("Topology").generation("gen-2");
  EXPECT_NE(nullptr, mounter("a", "Topology"));
  EXPECT_NE(nullptr, mounter("b", "Topology"));
  EXPECT_EQ("/controller/mounts/a", prefix("Topology", "a"));
}

TEST_F(ServiceMountGroupSmTest, PathsChangeUnderAnOldGeneration_CountWhenItIsRewritten) {
  service("Topology").group("default").path("a").path("b");
  leaderIs("gen-2");
  startTracing();
  service("Topology").group("default").path("c").withoutPath("a");
  EXPECT_THAT(traced(5), IsEmpty());
  expectTrace(8, "ServiceMountGroupSm::handleMountConfig: a");
  EXPECT_EQ(nullptr, registry()->mountEntry("c"));
  service("Topology").generation("gen-2");
  EXPECT_EQ(nullptr, mounter("a", "Topology"));
  EXPECT_NE(nullptr, mounter("b", "Topology"));
  EXPECT_NE(nullptr, mounter("c", "Topology"));
}

TEST_F(ServiceMountGroupSmTest, SameGenerationAgain_LeavesMountersAlone) {
  service("Topology").group("default").path("a");
  const Mounter* const made = mounter("a", "Topology");
  machine().handleLeaderGenId();
  EXPECT_EQ(made, mounter("a", "Topology"));
}

TEST_F(ServiceMountGroupSmTest, InitializedAgain_OnlyTraces) {
  service("Topology").group("default").path("a");
  startTracing();
  machine().handleInitialized();
  EXPECT_THAT(traced(8), ElementsAre("ServiceMountGroupSm::handleInitialized mountConfig "
                                     "genId:gen-1 controller genId:gen-1"));
}

TEST_F(ServiceMountGroupSmTest, CleanedUpTwice_Harmless) {
  service("Topology").group("default").path("a");
  machine().doCleanup();
  machine().doCleanup();
  EXPECT_EQ(nullptr, mounter("a", "Topology"));
}

// ---- walks

TEST_F(ServiceMountGroupSmTest, PathsAddedAndRemovedByAWatcher_WalkGoesOn) {
  const auto topology = service("Topology");
  topology.generation("old").group("default").path("a").path("b").path("c");
  Support::Recorder recorder(topology.statusPtr(), [&](Orm::AttributeId, const Orm::Key& key) {
    if (key.as<String>() != "a") return;
    topology.group("default").withoutPath("b").path("d");
  });
  topology.generation("gen-1");
  EXPECT_NE(nullptr, mounter("a", "Topology"));
  EXPECT_EQ(nullptr, mounter("b", "Topology"));
  EXPECT_NE(nullptr, mounter("c", "Topology"));
  EXPECT_NE(nullptr, mounter("d", "Topology"));
}

TEST_F(ServiceMountGroupSmTest, ServiceTakenAwayByAWatcherDuringTheWalk_IsSurvived) {
  const auto topology = service("Topology");
  topology.generation("old").group("default").path("a").path("b");
  Support::Recorder recorder(topology.statusPtr(),
                             [&](auto, const auto&) { mountConfigDir()->entityDel("Topology"); });
  topology.generation("gen-1");
  EXPECT_EQ(nullptr, configSm().serviceMountConfigSm().find("Topology"));
  EXPECT_EQ(nullptr, mounter("a", "Topology"));
  EXPECT_EQ(nullptr, mounter("b", "Topology"));
  EXPECT_TRUE(topology.status().mountedPathPrefix().empty());
}

// ---- what whoever is told of a prefix wants

class PrefixToldTest : public ServiceMountGroupSmTest {
 protected:
  /// Is done when the prefix of the path "a" has come, or has gone.
  Support::Recorder::Act whenPrefix(bool there, std::function<void()> act) {
    return [this, there, act = std::move(act)](Orm::AttributeId attribute, const Orm::Key& key) {
      if (attribute != ServiceMountStatus::Attr::mountedPathPrefix) return;
      if (key.as<String>() == "a" && topology_.status().mountedPathPrefix().has("a") == there)
        act();
    };
  }
  void expectMounted(const char* path, const char* group) const {
    ASSERT_NE(nullptr, mounter(path, "Topology"));
    EXPECT_EQ(group, mounter(path, "Topology")->groupName());
    EXPECT_EQ(std::string("/controller/mounts/") + path, prefix("Topology", path));
  }

  const Support::MountService topology_ = service("Topology");
};

TEST_F(PrefixToldTest, GateOpenedAgainWhenItGoes_PathHasAMounterAgain) {
  topology_.group("default").path("a").path("b");
  const Support::Recorder recorder(topology_.statusPtr(),
                                   whenPrefix(false, [this] { leaderIs("gen-1"); }));
  leaderIs("gen-2");
  expectMounted("a", "default");
  expectMounted("b", "default");
}

TEST_F(PrefixToldTest, PathPutBackWhenItGoes_HasAMounterOfTheNewConfiguration) {
  topology_.group("default").path("a");
  const Support::Recorder recorder(
      topology_.statusPtr(), whenPrefix(false, [this] { topology_.group("default").path("a"); }));
  topology_.group("default").withoutPath("a");
  expectMounted("a", "default");
  EXPECT_EQ(topology_.group("default").config().mountConfig("a"),
            mounter("a", "Topology")->mountConfig().get());
}

TEST_F(PrefixToldTest, AnotherGroupAsksWhenItComes_AndHasThePath) {
  const Support::Recorder recorder(
      topology_.statusPtr(), whenPrefix(true, [this] { topology_.group("second").path("a"); }));
  topology_.group("default").path("a");
  expectMounted("a", "second");
}

TEST_F(PrefixToldTest, GroupBroughtBackWhenItGoes_HasAllItsPaths) {
  topology_.group("default").path("a").path("b");
  bool once = true;
  const Support::Recorder recorder(topology_.statusPtr(), whenPrefix(false, [&] {
                                     if (!std::exchange(once, false)) return;
                                     topology_.group("default").path("a").path("b");
                                   }));
  topology_.withoutGroup("default");
  for (const char* path : {"a", "b"}) {
    expectMounted(path, "default");
    EXPECT_EQ(&topology_.group("default").config(),
              mounter(path, "Topology")->mountGroupConfig().get());
  }
}

TEST_F(PrefixToldTest, LeaderChangedWhileAProxysGroupGoes_BringsNothingBack) {
  const auto proxy = proxyService("Topology-Proxy");
  proxy.group("default").path("a").path("b");
  const Support::Recorder recorder(proxy.statusPtr(), [this](auto, const auto&) {
    leaderIs(controllerdbStatus()->leaderGenId() == "gen-2" ? "gen-1" : "gen-2");
  });
  proxy.withoutGroup("default");
  EXPECT_EQ(nullptr, mounter("a", "Topology-Proxy"));
  EXPECT_EQ(nullptr, mounter("b", "Topology-Proxy"));
  EXPECT_TRUE(proxy.status().mountedPathPrefix().empty());
}

}  // namespace
}  // namespace Controller
