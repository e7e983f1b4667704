#include "Fabric/Carrier.h"
#include "Platform/Fennix/Node.h"
#include "Test/Fabric/CarrierFixture.h"

namespace Fabric {
namespace {

using Fennix::Node;
using Orm::Ptr;
using testing::ElementsAre;
using testing::IsEmpty;

class CarrierTest : public FabricTest::CarrierFixture {
 protected:
  std::string typeAt(const char* path) const {
    const Ptr<Orm::Entity> there = entity(path);
    if (!there) return "none";
    if (const auto node = Orm::dynamicCast<Node>(there)) return node->typeName().str();
    return "Orm::Dir";
  }
};

// ---- controller

TEST_F(CarrierTest, ControllerAtStart_HasLeaderAndHeartbeat) {
  start("controller: {leader: gen-1, heartbeat: 2.5}");
  EXPECT_EQ(world().controllerdbStatus()->leaderGenId(), "gen-1");
  EXPECT_EQ(world().heartbeatConfig()->heartbeatInterval(), 2.5);
}

TEST_F(CarrierTest, Leader_IsChangedAndRemoved) {
  start("controller: {leader: gen-1}");
  recorder().watch("status", world().controllerdbStatus(), {"leaderGenId"});
  EXPECT_THAT(changes("controller: {leader: gen-1}"), IsEmpty());
  EXPECT_THAT(changes("controller: {leader: gen-2}"), ElementsAre("status.leaderGenId"));
  EXPECT_EQ(world().controllerdbStatus()->leaderGenId(), "gen-2");
  EXPECT_THAT(changes("controller: {leader: null}"), ElementsAre("status.leaderGenId"));
  EXPECT_EQ(world().controllerdbStatus()->leaderGenId(), "");
}

TEST_F(CarrierTest, Heartbeat_ComesWholeIsChangedInPlaceAndGoes) {
  start("controller: {}");
  recorder().watch("oob", world().oobConfig(), {"heartbeatConfig"}, [this] {
    return world().heartbeatConfig()
               ? Orm::stringForm(world().heartbeatConfig()->heartbeatInterval())
               : "none";
  });
  EXPECT_THAT(changes("controller: {heartbeat: 3}"), ElementsAre("oob.heartbeatConfig 3"));
  recorder().watch("heartbeat", world().heartbeatConfig(), {"interval"});
  EXPECT_THAT(changes("controller: {heartbeat: 4}"), ElementsAre("heartbeat.interval"));
  EXPECT_THAT(changes("controller: {heartbeat: null}"), ElementsAre("oob.heartbeatConfig none"));
}

TEST_F(CarrierTest, ControllerBlockRemoved_PutsTheDefaultsBack) {
  start("controller: {leader: gen-1, heartbeat: 2}");
  recorder().watch("status", world().controllerdbStatus(), {"leaderGenId"});
  recorder().watch("oob", world().oobConfig(), {"heartbeatConfig"});
  EXPECT_THAT(changes("controller: null"),
              ElementsAre("status.leaderGenId", "oob.heartbeatConfig"));
}

// ---- entities

TEST_F(CarrierTest, Entities_StandWithTheDirectoriesAboveThem) {
  start("entities: {/a/b/c: Some::Type, /a/d: 'Orm::Dir'}");
  EXPECT_EQ(typeAt("/a/b/c"), "Some::Type");
  EXPECT_EQ(typeAt("/a/b"), "Orm::Dir");
  EXPECT_EQ(typeAt("/a/d"), "Orm::Dir");
}

TEST_F(CarrierTest, Entity_ComesAndGoes) {
  start("entities: {/a: 'Orm::Dir'}");
  watchDir("a", Orm::dynamicCast<Fennix::Dir>(entity("/a")));
  EXPECT_THAT(changes("entities: {/a/b: X}"), ElementsAre("a.entity[b]"));
  EXPECT_THAT(changes("entities: {/a/b: X}"), IsEmpty());
  EXPECT_THAT(changes("entities: {/a/b: null}"), ElementsAre("a.entity[b]"));
  EXPECT_EQ(typeAt("/a/b"), "none");
}

TEST_F(CarrierTest, EntityOfAnotherType_IsRemovedAndAddedAgain) {
  start("entities: {/a/b: X}");
  watchDir("a", Orm::dynamicCast<Fennix::Dir>(entity("/a")));
  EXPECT_THAT(changes("entities: {/a/b: Y}"), ElementsAre("a.entity[b]", "a.entity[b]"));
  EXPECT_EQ(typeAt("/a/b"), "Y");
}

TEST_F(CarrierTest, DirectoryThatIsNotEmpty_StaysForWhatIsInIt) {
  start("entities: {/a: 'Orm::Dir', /a/b: X, /c: 'Orm::Dir'}");
  apply("entities: {/a: null, /c: null}");
  EXPECT_EQ(typeAt("/a/b"), "X");
  EXPECT_EQ(typeAt("/c"), "none");
}

TEST_F(CarrierTest, EntityWhereSomethingStandsAlready_IsTakenAsItIs) {
  start("controller: {registryDir: /r/m}\nentities: {/r: X}");
  EXPECT_EQ(typeAt("/r"), "Orm::Dir");
  apply("entities: {/r: Y}");
  apply("entities: {/r: null}");
  EXPECT_EQ(typeAt("/r"), "Orm::Dir");
}

TEST_F(CarrierTest, EntityBelowWhatIsNoDirectory_IsNotMade) {
  start("entities: {/a: 'Orm::Dir'}");
  Orm::dynamicCast<Fennix::Dir>(entity("/a"))->createEntity("Mounted", "b");
  apply("entities: {/a/b/c: X}");
  EXPECT_EQ(typeAt("/a/b/c"), "none");
  EXPECT_EQ(typeAt("/a/b"), "Mounted");
  apply("entities: {/a/b/c: null}");
  EXPECT_EQ(typeAt("/a/b"), "Mounted");
}

// ---- the whole

TEST_F(CarrierTest, BlocksOfAPatch_GoInThePatchsOrder) {
  start("services: {T: {}}");
  recorder().watch("status", world().controllerdbStatus(), {"leaderGenId"});
  recorder().watch("services", world().serviceConfigDir(), {"service"});
  recorder().watch("peers", world().peerTable(), {"peer"});
  watchDir("root", world().rootDir());
  EXPECT_THAT(changes("{switches: {'02:00:00:00:00:01': {connected: true}}, entities: {/x: X},"
                      " services: {U: {}, T: null}, controller: {leader: g}}"),
              ElementsAre("peers.peer[02:00:00:00:00:01]", "root.entity[x]", "services.service[U]",
                          "services.service[T]", "status.leaderGenId"));
}

TEST_F(CarrierTest, AttributeLog_ChangesNoEntity) {
  start("attrlog: {standby: {}}");
  watchDir("root", world().rootDir());
  EXPECT_THAT(changes("attrlog: {standby: {sync: never}, other: {}}"), IsEmpty());
}

}  // namespace
}  // namespace Fabric
