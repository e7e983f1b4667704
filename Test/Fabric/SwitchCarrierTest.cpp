#include "Fabric/SwitchCarrier.h"
#include "Test/Fabric/CarrierFixture.h"

namespace Fabric {
namespace {

using Controller::ServiceStatusV1;
using Controller::ServiceVersionStatusV1;
using FabricTest::Lines;
using Orm::Ptr;
using testing::ElementsAre;
using testing::IsEmpty;

class SwitchCarrierTest : public FabricTest::CarrierFixture {
 protected:
  void watchOob() {
    recorder().watch("oob", world().oobStatus(), {"peerTable", "clientStatus", "inactive"});
    recorder().watch("peers", world().peerTable(), {"peer"});
  }
  void watchClientStatus(const char* system) {
    recorder().watch("client", clientStatus(system), {"name", "serviceStatusDir"});
  }
  Ptr<Controller::ServiceStatusDir> serviceStatusDir(const char* system) const {
    return clientStatus(system)->serviceStatusDir();
  }
  Ptr<ServiceStatusV1> serviceStatus(const char* system, const char* service) const {
    return serviceStatusDir(system)->service(service);
  }
  void watchServices(const char* system) {
    const auto dir = serviceStatusDir(system);
    recorder().watch("services", dir, {"service"});
    for (const Ptr<ServiceStatusV1>& status : dir->service()) watchService(status);
  }
  void watchService(const Ptr<ServiceStatusV1>& status) {
    const std::string name = status->serviceName().str();
    recorder().watch(name, status, {"enabled", "versionStatus"});
    if (status->versionStatus()) {
      recorder().watch(name + ".status", status->versionStatus(),
                       {"reported", "negotiated", "version"});
    }
  }
};

TEST_F(SwitchCarrierTest, SwitchAtStart_HasItsEntities) {
  start(R"(switches: {"02:00:00:00:00:01": {name: leaf1, connected: true, inactive: true,
                      services: {T: 3, U: {enabled: false}, V: {negotiated: false, version: 4}}}})");
  EXPECT_EQ(clientStatus(kLeaf1)->name(), "leaf1");
  EXPECT_EQ(clientStatus(kLeaf1)->clientAddress(), peer(kLeaf1)->clientAddress());
  EXPECT_TRUE(peer(kLeaf1)->connectionConfig());
  EXPECT_TRUE(world().oobStatus()->inactive().has(idOf(kLeaf1)));
  const auto t = serviceStatus(kLeaf1, "T");
  EXPECT_TRUE(t->enabled());
  EXPECT_TRUE(t->versionStatus()->reported());
  EXPECT_TRUE(t->versionStatus()->negotiated());
  EXPECT_EQ(t->versionStatus()->version(), 3U);
  EXPECT_FALSE(serviceStatus(kLeaf1, "U")->enabled());
  EXPECT_FALSE(serviceStatus(kLeaf1, "U")->versionStatus());
  EXPECT_FALSE(serviceStatus(kLeaf1, "V")->versionStatus()->negotiated());
}

TEST_F(SwitchCarrierTest, SwitchAtStart_IsNotConnectedUnlessItSaysSo) {
  start(R"(switches: {"02:00:00:00:00:01": {}})");
  EXPECT_TRUE(clientStatus(kLeaf1));
  EXPECT_EQ(clientStatus(kLeaf1)->name(), "");
  EXPECT_TRUE(serviceStatusDir(kLeaf1));
  EXPECT_FALSE(peer(kLeaf1));
  EXPECT_TRUE(world().oobStatus()->inactive().empty());
}

TEST_F(SwitchCarrierTest, ClientAddresses_AreDistinctAndTheSameEachTime) {
  start(R"(switches: {"02:00:00:00:00:01": {count: 300}})");
  EXPECT_EQ(world().oobStatus()->clientStatus().size(), 300U);
  EXPECT_EQ(clientStatus("02:00:00:00:01:00")->clientAddress(),
            clientAddressOf(idOf("02:00:00:00:01:00")));
  EXPECT_NE(clientAddressOf(idOf("02:00:00:00:01:00")), clientAddressOf(idOf("02:00:00:00:00:01")));
}

TEST_F(SwitchCarrierTest, NewSwitch_GetsClientStatusThenInactiveThenPeer) {
  start("switches: {}");
  watchOob();
  recorder().watch("seen", world().peerTable(), {"peer"}, [this] {
    return clientStatus(kLeaf1)->name().str() +
           (serviceStatus(kLeaf1, "T") ? " with T" : " without T") +
           (peer(kLeaf1)->connectionConfig() ? " reachable" : " unreachable");
  });
  EXPECT_THAT(changes(R"(switches: {"02:00:00:00:00:01": {connected: true, inactive: true,
                         services: {T: 3}, reachable: false, name: leaf1}})"),
              ElementsAre("oob.clientStatus[address]", "oob.inactive[02:00:00:00:00:01]",
                          "peers.peer[02:00:00:00:00:01]",
                          "seen.peer[02:00:00:00:00:01] leaf1 with T unreachable"));
}

TEST_F(SwitchCarrierTest, RunThatComes_AppearsSwitchBySwitch) {
  start("switches: {}");
  recorder().watch("peers", world().peerTable(), {"peer"});
  EXPECT_THAT(changes(R"(switches: {"02:00:00:00:00:01": {count: 2, connected: true}})"),
              ElementsAre("peers.peer[02:00:00:00:00:01]", "peers.peer[02:00:00:00:00:02]"));
}

TEST_F(SwitchCarrierTest, Disconnected_LeavesThePeerTableAndKeepsItsClientStatus) {
  start(R"(switches: {"02:00:00:00:00:01": {connected: true}})");
  watchOob();
  EXPECT_THAT(changes(R"(switches: {"02:00:00:00:00:01": {connected: false}})"),
              ElementsAre("peers.peer[02:00:00:00:00:01]"));
  EXPECT_TRUE(clientStatus(kLeaf1));
  EXPECT_THAT(changes(R"(switches: {"02:00:00:00:00:01": {connected: null}})"), IsEmpty());
  EXPECT_THAT(changes(R"(switches: {"02:00:00:00:00:01": {connected: true}})"),
              ElementsAre("peers.peer[02:00:00:00:00:01]"));
  EXPECT_TRUE(peer(kLeaf1)->connectionConfig());
  EXPECT_THAT(changes(R"(switches: {"02:00:00:00:00:01": {connected: true}})"), IsEmpty());
}

TEST_F(SwitchCarrierTest, SwitchThatGoes_LosesPeerThenInactiveThenClientStatus) {
  start(R"(switches: {"02:00:00:00:00:01": {connected: true, inactive: true}})");
  watchOob();
  EXPECT_THAT(changes(R"(switches: {"02:00:00:00:00:01": null})"),
              ElementsAre("peers.peer[02:00:00:00:00:01]", "oob.inactive[02:00:00:00:00:01]",
                          "oob.clientStatus[address]"));
}

TEST_F(SwitchCarrierTest, Pattern_IsCarriedSwitchBySwitchInDocumentOrder) {
  start(R"(switches: {"02:00:00:00:00:02": {}, "02:00:00:00:00:01": {}})");
  watchOob();
  EXPECT_THAT(changes(R"(switches: {"*": {connected: true, inactive: true}})"),
              ElementsAre("peers.peer[02:00:00:00:00:02]", "oob.inactive[02:00:00:00:00:02]",
                          "peers.peer[02:00:00:00:00:01]", "oob.inactive[02:00:00:00:00:01]"));
}

TEST_F(SwitchCarrierTest, Reachable_IsCarriedToThePeerAlone) {
  start(R"(switches: {"02:00:00:00:00:01": {connected: true, inactive: true}})");
  watchOob();
  recorder().watch("peer", peer(kLeaf1), {"connectionConfig"});
  EXPECT_THAT(changes(R"(switches: {"02:00:00:00:00:01": {reachable: false}})"),
              ElementsAre("peer.connectionConfig"));
  EXPECT_FALSE(peer(kLeaf1)->connectionConfig());
  EXPECT_THAT(changes(R"(switches: {"02:00:00:00:00:01": {reachable: null}})"),
              ElementsAre("peer.connectionConfig"));
  EXPECT_TRUE(peer(kLeaf1)->connectionConfig());
  EXPECT_THAT(changes(R"(switches: {"02:00:00:00:00:01": {reachable: true}})"), IsEmpty());
}

TEST_F(SwitchCarrierTest, ReachableOfASwitchThatIsNotConnected_CountsWhenItConnects) {
  start(R"(switches: {"02:00:00:00:00:01": {}})");
  apply(R"(switches: {"02:00:00:00:00:01": {reachable: false}})");
  apply(R"(switches: {"02:00:00:00:00:01": {connected: true}})");
  EXPECT_FALSE(peer(kLeaf1)->connectionConfig());
}

TEST_F(SwitchCarrierTest, ReachableAndConnectedInOnePatch_GoInThePatchsOrder) {
  start(R"(switches: {"02:00:00:00:00:01": {}, "02:00:00:00:00:02": {}})");
  recorder().watch("peers", world().peerTable(), {"peer"}, [this] {
    const auto* found = peer(kLeaf1) ? peer(kLeaf1) : peer(kLeaf2);
    return found->connectionConfig() ? "reachable" : "unreachable";
  });
  EXPECT_THAT(changes(R"(switches: {"02:00:00:00:00:02": {connected: true, reachable: false}})"),
              ElementsAre("peers.peer[02:00:00:00:00:02] reachable"));
  EXPECT_FALSE(peer(kLeaf2)->connectionConfig());
  EXPECT_THAT(changes(R"(switches: {"02:00:00:00:00:01": {reachable: false, connected: true}})"),
              ElementsAre("peers.peer[02:00:00:00:00:01] unreachable"));
}

TEST_F(SwitchCarrierTest, ChangesOfASwitch_GoInThePatchsOrder) {
  start(R"(switches: {"02:00:00:00:00:01": {name: leaf1, services: {T: 3}}})");
  watchOob();
  watchClientStatus(kLeaf1);
  watchServices(kLeaf1);
  EXPECT_THAT(
      changes(R"(switches: {leaf1: {inactive: true, services: {T: 4}, name: x, connected: true}})"),
      ElementsAre("oob.inactive[02:00:00:00:00:01]", "T.status.version", "client.name",
                  "peers.peer[02:00:00:00:00:01]"));
  EXPECT_THAT(changes(R"(switches: {x: {connected: false, name: null, inactive: false}})"),
              ElementsAre("peers.peer[02:00:00:00:00:01]", "client.name",
                          "oob.inactive[02:00:00:00:00:01]"));
}

TEST_F(SwitchCarrierTest, ServiceStatusThatComes_IsSeenWhole) {
  start(R"(switches: {"02:00:00:00:00:01": {}})");
  recorder().watch("services", serviceStatusDir(kLeaf1), {"service"}, [this] {
    const auto status = serviceStatus(kLeaf1, "T");
    return std::string(status->enabled() ? "enabled" : "disabled") + " " +
           Orm::stringForm(status->versionStatus()->version());
  });
  EXPECT_THAT(changes(R"(switches: {"02:00:00:00:00:01": {services: {T: 3}}})"),
              ElementsAre("services.service[T] enabled 3"));
}

TEST_F(SwitchCarrierTest, ServiceStatus_IsChangedInThePatchsOrder) {
  start(R"(switches: {"02:00:00:00:00:01": {services: {T: 3, U: 1}}})");
  watchServices(kLeaf1);
  EXPECT_THAT(changes(R"(switches: {"02:00:00:00:00:01": {services: {
                         U: {version: 2, enabled: false}, T: {negotiated: false}}}})"),
              ElementsAre("U.status.version", "U.enabled", "T.status.negotiated"));
  EXPECT_THAT(changes(R"(switches: {"02:00:00:00:00:01": {services: {
                         T: {reported: false, negotiated: null}, U: 2}}})"),
              ElementsAre("T.status.reported", "T.status.negotiated", "U.enabled"));
  EXPECT_THAT(changes(R"(switches: {"02:00:00:00:00:01": {services: {U: null, T: 3}}})"),
              ElementsAre("services.service[U]", "T.status.reported"));
}

TEST_F(SwitchCarrierTest, VersionStatusThatComes_IsSeenWhole) {
  start(R"(switches: {"02:00:00:00:00:01": {services: {T: {enabled: true}}}})");
  const auto status = serviceStatus(kLeaf1, "T");
  recorder().watch("T", status, {"enabled", "versionStatus"}, [status] {
    const Ptr<ServiceVersionStatusV1 const> version = status->versionStatus();
    if (!version) return std::string("none");
    return Orm::stringForm(version->version()) + (version->negotiated() ? "" : " not negotiated");
  });
  EXPECT_THAT(changes(R"(switches: {"02:00:00:00:00:01": {services: {
                         T: {version: 5, negotiated: false}}}})"),
              ElementsAre("T.versionStatus 5 not negotiated"));
  EXPECT_THAT(changes(R"(switches: {"02:00:00:00:00:01": {services: {T: {version: null}}}})"),
              ElementsAre("T.versionStatus none"));
  EXPECT_THAT(changes(R"(switches: {"02:00:00:00:00:01": {services: {T: {negotiated: true}}}})"),
              IsEmpty());
}

TEST_F(SwitchCarrierTest, ServicesRemovedAltogether_GoOneByOne) {
  start(R"(switches: {"02:00:00:00:00:01": {services: {T: 3, U: 1}}})");
  watchServices(kLeaf1);
  EXPECT_THAT(changes(R"(switches: {"02:00:00:00:00:01": {services: null}})"),
              ElementsAre("services.service[T]", "services.service[U]"));
}

}  // namespace
}  // namespace Fabric
