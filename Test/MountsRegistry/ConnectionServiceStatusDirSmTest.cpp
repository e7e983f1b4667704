#include <utility>

#include "Controllerdb/MountsRegistry/ConnectionServiceStatusDirSm.h"
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

constexpr const char* kA = "02:00:00:00:00:01";
constexpr const char* kNegotiation = "MountsRegistrySm::negotiatedServiceVersionForConnection";

std::string text(std::initializer_list<const char*> pieces) {
  std::string all;
  for (const char* piece : pieces) all += piece;
  return all;
}

// ---- the negotiated version

class NegotiatedVersionTest : public Support::ControllerFixture {
 protected:
  NegotiatedVersionTest() { startRegistry(); }

  std::uint32_t version(const char* service) const {
    return registrySm().negotiatedServiceVersionForConnection(service, String(kA));
  }
};

TEST_F(NegotiatedVersionTest, NegotiatedVersion_IsFoundAndTraced) {
  connect(kA, {{"Topology", 3}});
  traceIs(8);
  EXPECT_EQ(3U, version("Topology"));
  EXPECT_THAT(traced(8), ElementsAre(text({kNegotiation, " Topology ", kA}),
                                     text({kNegotiation, " negotiated service version for ", kA,
                                           " for service Topology = 3"})));
}

TEST_F(NegotiatedVersionTest, ByNameAndBySystem_AreTheSame) {
  connect(kA, {{"Topology", 3}});
  const Connection connection(*peerTable().peer(systemId(kA)));
  EXPECT_EQ(3U, registrySm().negotiatedServiceVersionForConnection("Topology", connection));
}

TEST_F(NegotiatedVersionTest, ProxyService_HasItsRealServicesVersionUnderItsOwnName) {
  connect(kA, {{"Topology", 3}});
  traceIs(8);
  EXPECT_EQ(3U, version("Topology-Proxy"));
  EXPECT_THAT(traced(8), ElementsAre(text({kNegotiation, " Topology-Proxy ", kA}),
                                     text({kNegotiation, " negotiated service version for ", kA,
                                           " for service Topology-Proxy = 3"})));
}

TEST_F(NegotiatedVersionTest, UnknownPeer_IsZeroWithoutFurtherTrace) {
  traceIs(8);
  EXPECT_EQ(0U, version("Topology"));
  EXPECT_THAT(traced(8), ElementsAre(text({kNegotiation, " Topology ", kA})));
}

TEST_F(NegotiatedVersionTest, NameThatIsNoSystemId_IsNoPeer) {
  traceIs(8);
  EXPECT_EQ(0U, registrySm().negotiatedServiceVersionForConnection("Topology", String("leaf-1")));
  EXPECT_THAT(traced(8), ElementsAre(text({kNegotiation, " Topology leaf-1"})));
}

TEST_F(NegotiatedVersionTest, DisabledService_IsZeroThoughAVersionIsNegotiated) {
  connect(kA, {{"Topology", 3}});
  serviceStatus(kA, "Topology").enabledIs(false);
  traceIs(8);
  EXPECT_EQ(0U, version("Topology"));
  EXPECT_THAT(traced(8), ElementsAre(text({kNegotiation, " Topology ", kA}),
                                     text({kNegotiation, " no version negotiated for ", kA,
                                           " for service Topology"})));
}

TEST_F(NegotiatedVersionTest, MissingServiceOrVersionStatusOrNegotiation_IsZeroAndTraced) {
  const std::string none =
      text({kNegotiation, " no version negotiated for ", kA, " for service Topology"});
  connect(kA);
  traceIs(8);
  EXPECT_EQ(0U, version("Topology"));  // no such service
  serviceStatus(kA, "Topology");
  EXPECT_EQ(0U, version("Topology"));  // no version status
  const auto status = Orm::make<ServiceVersionStatusV1>(true, false, 3U);
  serviceStatus(kA, "Topology").versionStatusIs(status);
  traces().clear();
  EXPECT_EQ(0U, version("Topology"));  // not negotiated
  expectTrace(8, none);
  status->negotiatedIs(true);
  EXPECT_EQ(3U, version("Topology"));
}

TEST_F(NegotiatedVersionTest, MissingClientStatusOrServiceStatusDirectory_IsZero) {
  peerTable().peerIs(systemId(kA), address(systemId(kA)));
  EXPECT_EQ(0U, version("Topology"));
  oobStatus()->clientStatusIs(address(systemId(kA)), systemId(kA));
  traceIs(8);
  EXPECT_EQ(0U, version("Topology"));
  expectTrace(8, text({kNegotiation, " no version negotiated for ", kA, " for service Topology"}));
}

TEST_F(NegotiatedVersionTest, NotReportedButNegotiated_IsTheVersion) {
  connect(kA);
  serviceStatus(kA, "Topology").versionStatusIs(Orm::make<ServiceVersionStatusV1>(false, true, 3U));
  EXPECT_EQ(3U, version("Topology"));
}

TEST_F(NegotiatedVersionTest, NoPeerTable_IsZero) {
  connect(kA, {{"Topology", 3}});
  oobStatus()->peerTableIs(nullptr);
  EXPECT_EQ(0U, version("Topology"));
}

TEST_F(NegotiatedVersionTest, Remembered_FollowsEverythingThatItLeadsThrough) {
  const auto remembered = [this] {
    return registrySm().negotiatedVersion("Topology", Connection(systemId(kA)));
  };
  EXPECT_EQ(0U, remembered());
  connect(kA, {{"Topology", 3}});
  EXPECT_EQ(3U, remembered());
  EXPECT_EQ(0U, registrySm().negotiatedVersion("Routing", Connection(systemId(kA))));
  EXPECT_EQ(0U,
            registrySm().negotiatedVersion("Topology", Connection(systemId("02:00:00:00:00:02"))));
  EXPECT_EQ(3U, remembered());

  ServiceStatusV1& service = serviceStatus(kA, "Topology");
  service.enabledIs(false);
  EXPECT_EQ(0U, remembered());
  service.enabledIs(true);
  EXPECT_EQ(3U, remembered());
  const auto version = Orm::make<ServiceVersionStatusV1>(true, true, 4U);
  service.versionStatusIs(version);
  EXPECT_EQ(4U, remembered());
  version->versionIs(5);
  EXPECT_EQ(5U, remembered());
  version->negotiatedIs(false);
  EXPECT_EQ(0U, remembered());
  version->negotiatedIs(true);
  EXPECT_EQ(5U, remembered());

  ControllerOob::ClientStatus& client = *oobStatus()->clientStatus(address(systemId(kA)));
  const Orm::Ptr<ServiceStatusDir> dir = client.serviceStatusDir();
  const Orm::Ptr<ServiceStatusV1> held(&service);
  dir->serviceDel("Topology");
  EXPECT_EQ(0U, remembered());
  dir->serviceIs(held);
  EXPECT_EQ(5U, remembered());
  dir->serviceDelAll();
  EXPECT_EQ(0U, remembered());
  dir->serviceIs(held);
  EXPECT_EQ(5U, remembered());
  client.serviceStatusDirIs(nullptr);
  EXPECT_EQ(0U, remembered());
  client.serviceStatusDirIs(dir);
  EXPECT_EQ(5U, remembered());
  oobStatus()->clientStatusDel(address(systemId(kA)));
  EXPECT_EQ(0U, remembered());
  oobStatus()->clientStatusIs(address(systemId(kA)), systemId(kA))->serviceStatusDirIs(dir);
  EXPECT_EQ(5U, remembered());

  const Orm::Ptr<Peer> peer = peerTable().peer(systemId(kA));
  peerTable().peerDel(systemId(kA));
  EXPECT_EQ(0U, remembered());
  peerTable().peerIs(peer);
  EXPECT_EQ(5U, remembered());
  registrySm().peerTableIs(Orm::make<PeerTable>());
  EXPECT_EQ(0U, remembered());
  registrySm().peerTableIs(oobStatus()->peerTable());
  EXPECT_EQ(5U, remembered());
  oobStatus()->peerTableIs(nullptr);
  EXPECT_EQ(0U, remembered());
}

TEST_F(NegotiatedVersionTest, Remembered_IsTracedAsIfItWereLookedUp) {
  connect(kA, {{"Topology", 3}});
  const Connection connection(systemId(kA));
  EXPECT_EQ(3U, registrySm().negotiatedVersion("Topology", connection));
  traceIs(8);
  for (int i = 0; i != 2; ++i) {
    EXPECT_EQ(3U, registrySm().negotiatedVersion("Topology", connection));
    EXPECT_THAT(traced(8), testing::SizeIs(2U * static_cast<unsigned>(i + 1)));
  }
}

// ---- the connection machine

class ConnectionServiceStatusDirSmTest : public Support::ControllerFixture {
 protected:
  ConnectionServiceStatusDirSmTest() {
    start();
    service("Topology").group("default").path("topology");
    service("Routing").group("default").path("routing");
    proxyService("Topology-Proxy").group("default").path("proxied");
  }

  std::string decided(const char* path) const {
    return text({"MountsRegistryEntrySm::handleSwitchConnection ", path, " Peer:", kA});
  }
  std::size_t decisions(const char* path) const { return timesTraced(8, decided(path)); }
  void startTracing() {
    traces().clear();
    traceIs(8);
  }
};

TEST_F(ConnectionServiceStatusDirSmTest, VersionOfOneService_ReevaluatesItsEntriesAlone) {
  connect(kA, {{"Topology", 0}, {"Routing", 3}});
  startTracing();
  versionIs(kA, "Topology", 3);
  EXPECT_EQ(1U, decisions("topology"));
  EXPECT_EQ(1U, decisions("proxied"));
  EXPECT_EQ(0U, decisions("routing"));
  EXPECT_TRUE(isMounting(kA, "topology"));
  EXPECT_TRUE(isMounting(kA, "proxied"));
  expectTrace(8, text({"MountsRegistrySm::handleServiceVersion Topology ", kA}));
  expectTrace(8, text({"MountsRegistrySm::handleServiceSwitchConnection ", kA, " Topology"}));
}

TEST_F(ConnectionServiceStatusDirSmTest, VersionOfAService_ReevaluatesWhatItPublishes) {
  for (const char* name : {"Topology", "Topology-Proxy", "Routing"}) {
    registry()->publishEntryIs(String({"/of-", name}), "remote", "T", false, name, nullptr,
                               nullptr);
  }
  connect(kA, {{"Topology", 0}, {"Routing", 3}});
  startTracing();
  versionIs(kA, "Topology", 3);
  const std::string decision = "PublishRegistryEntrySm::handleSwitchConnection /of-";
  EXPECT_EQ(1U, timesTraced(8, decision + "Topology " + kA));
  EXPECT_EQ(1U, timesTraced(8, decision + "Topology-Proxy " + kA));
  EXPECT_EQ(0U, timesTraced(8, decision + "Routing " + kA));
}

TEST_F(ConnectionServiceStatusDirSmTest, EntryWithTwoMountersOfTheService_IsDecidedOnce) {
  proxyService("Topology-Proxy").group("default").path("topology");
  connect(kA, {{"Topology", 0}});
  startTracing();
  versionIs(kA, "Topology", 3);
  EXPECT_EQ(1U, decisions("topology"));
}

TEST_F(ConnectionServiceStatusDirSmTest, ServiceOfTheProxysName_IsNoMountersService) {
  connect(kA);
  startTracing();
  registrySm().handleServiceSwitchConnection(systemId(kA), "Topology-Proxy");
  EXPECT_THAT(traced(8), ElementsAre(text({"MountsRegistrySm::handleServiceSwitchConnection ", kA,
                                           " Topology-Proxy"})));
}

TEST_F(ConnectionServiceStatusDirSmTest, NewServiceStatus_DecidesItsEntriesOnce) {
  connect(kA);
  startTracing();
  const auto status = Orm::make<ServiceStatusV1>("Topology");
  status->enabledIs(true);
  status->versionStatusIs(Orm::make<ServiceVersionStatusV1>(true, true, 3U));
  serviceStatusDir(kA).serviceIs(status);
  EXPECT_EQ(1U, decisions("topology"));
  EXPECT_EQ(1U, timesTraced(8, text({"MountsRegistrySm::handleServiceVersion Topology ", kA})));
  expectTrace(
      8, text({"ConnectionServiceStatusDirSm::handleEnabled", kA, ": Topology enabled: true"}));
  expectTrace(8, text({"ConnectionServiceStatusDirSm::handleVersionStatus Topology ", kA}));
}

TEST_F(ConnectionServiceStatusDirSmTest, ServicesPresentWhenThePeerComes_AreDecidedOnceEach) {
  traceIs(8);
  connect(kA, {{"Topology", 3}, {"Routing", 4}});
  EXPECT_EQ(1U, decisions("topology"));
  EXPECT_EQ(1U, decisions("routing"));
  EXPECT_THAT(mounts().takeRequests(),
              ElementsAre(text({"mount topology from ", kA}), text({"mount proxied from ", kA}),
                          text({"mount routing from ", kA})));
}

TEST_F(ConnectionServiceStatusDirSmTest, ReportedButNotNegotiated_ReevaluatesWithVersionZero) {
  connect(kA, {{"Topology", 3}});
  startTracing();
  serviceStatus(kA, "Topology").versionStatusIs(Orm::make<ServiceVersionStatusV1>(true, false, 3U));
  EXPECT_EQ(1U, decisions("topology"));
  EXPECT_THAT(traced(5), Contains(HasSubstr(text({" no version negotiated:", kA}))));
  EXPECT_THAT(mounts().requests(), Contains(text({"unmount topology from ", kA})));
}

TEST_F(ConnectionServiceStatusDirSmTest, NotReported_ReevaluatesNothing) {
  connect(kA);
  startTracing();
  const auto status = Orm::make<ServiceVersionStatusV1>(false, true, 3U);
  serviceStatus(kA, "Topology").versionStatusIs(status);
  EXPECT_EQ(0U, decisions("topology"));
  status->reportedIs(true);
  EXPECT_EQ(1U, decisions("topology"));
}

TEST_F(ConnectionServiceStatusDirSmTest, EachAttributeOfTheVersionStatus_Reevaluates) {
  connect(kA);
  const auto status = Orm::make<ServiceVersionStatusV1>(true, false, 3U);
  serviceStatus(kA, "Topology").versionStatusIs(status);
  startTracing();
  status->negotiatedIs(true);
  EXPECT_EQ(1U, decisions("topology"));
  status->versionIs(4);
  EXPECT_EQ(2U, decisions("topology"));
  status->versionIs(4);
  EXPECT_EQ(2U, decisions("topology"));
  status->reportedIs(false);  // and then it counts as nothing new
  EXPECT_EQ(2U, decisions("topology"));
}

TEST_F(ConnectionServiceStatusDirSmTest, ReplacedVersionStatus_IsFollowedAndTheOldOneIsNot) {
  connect(kA);
  const auto first = Orm::make<ServiceVersionStatusV1>(true, true, 3U);
  serviceStatus(kA, "Topology").versionStatusIs(first);
  const auto second = Orm::make<ServiceVersionStatusV1>(true, true, 4U);
  serviceStatus(kA, "Topology").versionStatusIs(second);
  EXPECT_EQ(0U, first->notifieeCount());
  startTracing();
  first->versionIs(9);
  EXPECT_EQ(0U, decisions("topology"));
  second->versionIs(9);
  EXPECT_EQ(1U, decisions("topology"));
}

TEST_F(ConnectionServiceStatusDirSmTest, ServiceStatusThatIsReplacedUnseen_IsFollowedInstead) {
  connect(kA, {{"Topology", 3}});
  const auto services = oobStatus()->clientStatusOfSystem(systemId(kA))->serviceStatusDir();
  const Orm::Ptr<ServiceStatusV1> old(services->service("Topology"));
  services->hasNotificationActiveIs(false);
  services->serviceDel("Topology");
  services->hasNotificationActiveIs(true);
  const auto replaced = Orm::make<ServiceStatusV1>("Topology");
  replaced->enabledIs(true);
  replaced->versionStatusIs(Orm::make<ServiceVersionStatusV1>(true, true, 3U));
  services->serviceIs(replaced);
  EXPECT_EQ(0U, old->notifieeCount());
  EXPECT_EQ(1U, replaced->notifieeCount());
  mounts().takeRequests();
  replaced->enabledIs(false);
  EXPECT_THAT(mounts().takeRequests(), ElementsAre(text({"unmount topology from ", kA}),
                                                   text({"unmount proxied from ", kA})));
}

TEST_F(ConnectionServiceStatusDirSmTest, ServiceReinsertedWithinItsOwnNotification_IsFollowedOnce) {
  const auto services = Orm::make<ServiceStatusDir>();
  bool done = false;
  Support::Recorder first(services, [&](Orm::AttributeId, const auto&) {
    if (std::exchange(done, true)) return;
    services->serviceDel("Topology");
    services->serviceIs("Topology");
  });
  const SystemId system = systemId(kA);
  oobStatus()->clientStatusIs(address(system), system)->serviceStatusDirIs(services);
  peerTable().peerIs(system, address(system));
  services->serviceIs("Topology");
  EXPECT_TRUE(done);
  EXPECT_EQ(1U, services->service("Topology")->notifieeCount());
}

TEST_F(ConnectionServiceStatusDirSmTest, VersionHandledByTheConnectionsName_IsTheSame) {
  connect(kA, {{"Topology", 3}, {"Routing", 3}});
  startTracing();
  registrySm().handleServiceVersion("Topology", kA);
  EXPECT_EQ(1U, decisions("topology"));
  EXPECT_EQ(0U, decisions("routing"));
}

TEST_F(ConnectionServiceStatusDirSmTest, ServiceDisabled_ReevaluatesAndUnmounts) {
  connect(kA, {{"Topology", 3}});
  mounts().takeRequests();
  startTracing();
  serviceStatus(kA, "Topology").enabledIs(false);
  expectTrace(
      8, text({"ConnectionServiceStatusDirSm::handleEnabled", kA, ": Topology enabled: false"}));
  EXPECT_THAT(mounts().takeRequests(), ElementsAre(text({"unmount topology from ", kA}),
                                                   text({"unmount proxied from ", kA})));
}

TEST_F(ConnectionServiceStatusDirSmTest, ServiceGone_CleansUpAndReevaluatesWithoutIt) {
  connect(kA, {{"Topology", 3}});
  mounts().takeRequests();
  startTracing();
  serviceStatusDir(kA).serviceDel("Topology");
  expectTrace(8, "ConnectionServiceStatusDirSm::doCleanup");
  EXPECT_EQ(1U, decisions("topology"));
  EXPECT_THAT(mounts().takeRequests(), ElementsAre(text({"unmount topology from ", kA}),
                                                   text({"unmount proxied from ", kA})));
}

TEST_F(ConnectionServiceStatusDirSmTest, VersionArrived_PathsOfTheSystemCountAsProcessed) {
  connect(kA, {{"Topology", 3}});
  const auto& processed =
      publishStatus()->system(systemId(kA))->registeredPublishedPathsProcessed();
  EXPECT_TRUE(processed.value("Topology"));
  EXPECT_FALSE(processed.has("Routing"));
  serviceStatus(kA, "Routing").versionStatusIs(Orm::make<ServiceVersionStatusV1>(true, false, 0U));
  EXPECT_TRUE(processed.value("Routing"));
}

TEST_F(ConnectionServiceStatusDirSmTest, NoRecordOfTheSystem_NothingIsSet) {
  connect(kA, {{"Topology", 0}});
  publishStatus()->systemDel(systemId(kA));
  versionIs(kA, "Topology", 3);
  EXPECT_EQ(nullptr, publishStatus()->system(systemId(kA)));
  EXPECT_TRUE(isMounting(kA, "topology"));
}

TEST_F(ConnectionServiceStatusDirSmTest, PeerGone_ConnectionIsDecidedOnceMoreAndNotPerService) {
  connect(kA, {{"Topology", 3}, {"Routing", 3}});
  startTracing();
  peerTable().peerDel(systemId(kA));
  expectTrace(8, text({"ConnectionServiceStatusDirSm::doCleanup ", kA}));
  EXPECT_EQ(1U, timesTraced(8, text({"MountsRegistrySm::handleSwitchConnection ", kA})));
  EXPECT_EQ(1U, decisions("topology"));
  EXPECT_EQ(1U, decisions("routing"));
  EXPECT_EQ(0U, serviceStatus(kA, "Topology").notifieeCount());
  EXPECT_EQ(0U, serviceStatusDir(kA).notifieeCount());
}

TEST_F(ConnectionServiceStatusDirSmTest, CleanedUpTwice_Harmless) {
  connect(kA, {{"Topology", 3}});
  const auto machine = registrySm().connectionServiceStatusDirSmIs(kA, nullptr);
  startTracing();
  machine->doCleanup();
  machine->doCleanup();
  EXPECT_EQ(1U, timesTraced(8, text({"MountsRegistrySm::handleSwitchConnection ", kA})));
  versionIs(kA, "Topology", 4);
  EXPECT_EQ(1U, decisions("topology"));  // by the clean-up alone
}

TEST_F(ConnectionServiceStatusDirSmTest, DecisionThatDisconnectsTheSwitch_IsSurvived) {
  const auto topology = service("Topology");
  Support::Recorder recorder(topology.statusPtr(), [&](Orm::AttributeId attribute, const auto&) {
    if (attribute == ServiceMountStatus::Attr::systemStatus && peerTable().peer(systemId(kA))) {
      peerTable().peerDel(systemId(kA));
    }
  });
  connect(kA);
  versionIs(kA, "Topology", 3);
  EXPECT_EQ(nullptr, registrySm().connectionServiceStatusDirSm().find(kA));
  EXPECT_EQ(0U, topology.status().systemStatus().size());
}

TEST_F(ConnectionServiceStatusDirSmTest, ServiceThatGoesBeforeItsTurn_IsDecidedWithoutIt) {
  service("Other").group("default").versions({2}).path("shared");
  service("First").group("default").versions({7}).path("shared");
  const Support::Recorder recorder(
      service("Other").status().systemStatusIs(kA)->serviceMountGroupStatusIs("default"),
      [&](auto, const auto&) { serviceStatusDir(kA).serviceDel("Other"); });
  connect(kA, {{"First", 1}, {"Other", 2}});
  EXPECT_EQ(nullptr, serviceStatusDir(kA).service("Other"));
  EXPECT_EQ(Admission::versionNotInFilter, entrySm("shared").admission(systemId(kA)));
}

class WithoutPublishStatusDeathTest : public Support::ControllerFixture {};

TEST_F(WithoutPublishStatusDeathTest, VersionArrives_StopsTheProcess) {
  const auto registrySm = mountsRegistrySmFactory(registry(), oobStatus(), heartbeatConfig(),
                                                  root(), nullptr, serviceConfigDir());
  connect(kA);
  EXPECT_DEATH(versionIs(kA, "Topology", 3), HasSubstr("mrSm->controllerdbPublishStatus() "));
}

}  // namespace
}  // namespace Controller
