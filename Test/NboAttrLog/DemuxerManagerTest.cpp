#include <gtest/gtest.h>

#include "Platform/NboAttrLog/DemuxerManager.h"

namespace Orm::NboAttrLog {
namespace {

class DemuxerManagerTest : public testing::Test {
 protected:
  ~DemuxerManagerTest() override { globalNboAttrLogDemuxerManagerDel(); }
};

TEST_F(DemuxerManagerTest, GlobalManager_IsMadeEmptyAndStaysUntilItIsDropped) {
  const Ptr<DemuxerManager> first = globalNboAttrLogDemuxerManager();
  EXPECT_TRUE(first->demuxer().empty());
  first->demuxerIs("standby");
  EXPECT_EQ(globalNboAttrLogDemuxerManager(), first);
  globalNboAttrLogDemuxerManagerDel();
  EXPECT_TRUE(globalNboAttrLogDemuxerManager()->demuxer().empty());
}

TEST_F(DemuxerManagerTest, Demuxers_ComeOnceAndGo) {
  const auto manager = globalNboAttrLogDemuxerManager();
  const auto standby = manager->demuxerIs("standby");
  EXPECT_EQ(manager->demuxerIs("standby"), standby);
  EXPECT_EQ(manager->demuxer("standby"), standby.get());
  manager->demuxerDel("standby");
  EXPECT_EQ(manager->demuxer("standby"), nullptr);
  manager->demuxerIs("a");
  manager->demuxerDelAll();
  EXPECT_TRUE(manager->demuxer().empty());
}

TEST_F(DemuxerManagerTest, NewDemuxer_IsNotConnectedAndInRoundZero) {
  const auto demuxer = globalNboAttrLogDemuxerManager()->demuxerIs("standby");
  EXPECT_EQ(demuxer->connectStatus(), In::Status::notConnected);
  EXPECT_EQ(demuxer->round(), 0U);
  EXPECT_EQ(demuxer->mountTable()->nextRound(), 0U);
  EXPECT_EQ(static_cast<int>(In::Status::connected), 1);
}

}  // namespace
}  // namespace Orm::NboAttrLog
