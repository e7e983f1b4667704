#include "Fabric/AttrlogCarrier.h"
#include "Platform/NboAttrLog/ConnectionDir.h"
#include "Platform/NboAttrLog/DemuxerManager.h"
#include "Platform/Orm/ActivityLoop.h"
#include "Test/Fabric/CarrierFixture.h"

namespace Fabric {
namespace {

using Orm::NboAttrLog::Connection;
using Orm::NboAttrLog::ConnectionDir;
using Orm::NboAttrLog::Demuxer;
using Orm::NboAttrLog::Mode;
using Orm::NboAttrLog::In::Status;

class AttrlogCarrierTest : public FabricTest::CarrierFixture {
 protected:
  static Connection* connection(const char* name) {
    return ConnectionDir::instance()->connection(name);
  }
  static Demuxer* demuxer(const char* name) {
    return Orm::globalNboAttrLogDemuxerManager()->demuxer(name);
  }
  /// Asks for the next round.
  static void ask(const char* name) {
    Orm::MountTable& table = *demuxer(name)->mountTable();
    table.nextRoundIs(table.nextRound() + 1);
  }
  void run(Orm::Seconds seconds) {
    const Orm::Ptr<Orm::Clock>& clock = mounts().clock();
    Orm::ActivityLoop(clock).run(clock->now() + seconds);
  }
};

TEST_F(AttrlogCarrierTest, Connection_HasTheDefaultsOfTheDocument) {
  start("attrlog: {standby: {}}");
  ASSERT_NE(connection("standby"), nullptr);
  EXPECT_EQ(connection("standby")->mode(), Mode::passive);
  EXPECT_TRUE(connection("standby")->status()->active());
  ASSERT_NE(demuxer("standby"), nullptr);
  EXPECT_EQ(demuxer("standby")->connectStatus(), Status::connected);
  ask("standby");
  EXPECT_EQ(demuxer("standby")->round(), 1U);
}

TEST_F(AttrlogCarrierTest, Connection_IsWhatTheDocumentSays) {
  start("attrlog: {a: {passive: false, active: false, connected: false}, b: {demuxer: false}}");
  EXPECT_EQ(connection("a")->mode(), Mode::active);
  EXPECT_FALSE(connection("a")->status()->active());
  EXPECT_EQ(demuxer("a")->connectStatus(), Status::notConnected);
  EXPECT_NE(connection("b"), nullptr);
  EXPECT_EQ(demuxer("b"), nullptr);
}

TEST_F(AttrlogCarrierTest, EachMember_IsPatchedInPlace) {
  start("attrlog: {standby: {}}");
  const Orm::Ptr<Connection> before(connection("standby"));
  const Orm::Ptr<Demuxer> demuxerBefore(demuxer("standby"));
  apply("attrlog: {standby: {passive: false, active: false, connected: false}}");
  EXPECT_EQ(connection("standby"), before.get());
  EXPECT_EQ(demuxer("standby"), demuxerBefore.get());
  EXPECT_EQ(before->mode(), Mode::active);
  EXPECT_FALSE(before->status()->active());
  EXPECT_EQ(demuxerBefore->connectStatus(), Status::notConnected);
  apply("attrlog: {standby: {passive: null, active: null, connected: null}}");
  EXPECT_EQ(before->mode(), Mode::passive);
  EXPECT_TRUE(before->status()->active());
  EXPECT_EQ(demuxerBefore->connectStatus(), Status::connected);
}

TEST_F(AttrlogCarrierTest, Demuxer_ComesAndGoes) {
  start("attrlog: {standby: {sync: 2}}");
  ask("standby");
  apply("attrlog: {standby: {demuxer: false}}");
  EXPECT_EQ(demuxer("standby"), nullptr);
  EXPECT_EQ(mounts().clock()->armedTimers(), 0U);
  apply("attrlog: {standby: {connected: false, sync: 0}}");
  apply("attrlog: {standby: {demuxer: true}}");
  ASSERT_NE(demuxer("standby"), nullptr);
  EXPECT_EQ(demuxer("standby")->connectStatus(), Status::notConnected);
  EXPECT_EQ(demuxer("standby")->round(), 0U);
  ask("standby");
  EXPECT_EQ(demuxer("standby")->round(), 1U);
}

TEST_F(AttrlogCarrierTest, Connection_ComesAndGoesWithItsDemuxer) {
  start("attrlog: {standby: {}}");
  apply("attrlog: {standby: null, other: {sync: never}}");
  EXPECT_EQ(connection("standby"), nullptr);
  EXPECT_EQ(demuxer("standby"), nullptr);
  EXPECT_NE(connection("other"), nullptr);
  EXPECT_NE(demuxer("other"), nullptr);
  apply("attrlog: null");
  EXPECT_TRUE(ConnectionDir::instance()->connection().empty());
  EXPECT_TRUE(Orm::globalNboAttrLogDemuxerManager()->demuxer().empty());
}

TEST_F(AttrlogCarrierTest, Round_IsReachedAfterTheDelay) {
  start("attrlog: {standby: {sync: 3.5}}");
  ask("standby");
  run(3.499999);
  EXPECT_EQ(demuxer("standby")->round(), 0U);
  run(0.000001);
  EXPECT_EQ(demuxer("standby")->round(), 1U);
}

TEST_F(AttrlogCarrierTest, RoundsThatOverlap_AreEachReachedAtTheirTime) {
  start("attrlog: {standby: {sync: 3}}");
  ask("standby");
  run(1);
  ask("standby");
  run(2);
  EXPECT_EQ(demuxer("standby")->round(), 1U);
  run(1);
  EXPECT_EQ(demuxer("standby")->round(), 2U);
}

TEST_F(AttrlogCarrierTest, RoundThatWasNeverToBeReached_StaysSoAndTheNextIsReached) {
  start("attrlog: {standby: {sync: never}}");
  ask("standby");
  run(1000);
  EXPECT_EQ(demuxer("standby")->round(), 0U);
  apply("attrlog: {standby: {sync: 1}}");
  run(1000);
  EXPECT_EQ(demuxer("standby")->round(), 0U);
  ask("standby");
  run(1);
  EXPECT_EQ(demuxer("standby")->round(), 2U);
}

TEST_F(AttrlogCarrierTest, LaterRoundReachedFirst_IsNotGoneBackFrom) {
  start("attrlog: {standby: {sync: 5}}");
  ask("standby");
  apply("attrlog: {standby: {sync: 0}}");
  ask("standby");
  EXPECT_EQ(demuxer("standby")->round(), 2U);
  run(10);
  EXPECT_EQ(demuxer("standby")->round(), 2U);
}

TEST_F(AttrlogCarrierTest, WhatTheProcessHad_IsReplacedAndNothingStays) {
  ConnectionDir::instance()->connectionIs("earlier");
  Orm::globalNboAttrLogDemuxerManager()->demuxerIs("earlier");
  {
    AttrlogCarrier carrier(mounts().clock());
    EXPECT_EQ(connection("earlier"), nullptr);
    EXPECT_EQ(demuxer("earlier"), nullptr);
    const Value empty{Object()};
    carrier.carry("standby", Value(), empty, empty);
    EXPECT_NE(demuxer("standby"), nullptr);
  }
  EXPECT_TRUE(ConnectionDir::instance()->connection().empty());
  EXPECT_TRUE(Orm::globalNboAttrLogDemuxerManager()->demuxer().empty());
  ConnectionDir::instanceDel();
  Orm::globalNboAttrLogDemuxerManagerDel();
}

}  // namespace
}  // namespace Fabric
