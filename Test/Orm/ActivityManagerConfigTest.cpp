#include <gtest/gtest.h>

#include <memory>

#include "Platform/Orm/ActivityManagerConfig.h"

namespace {

using Orm::ActivityManagerConfig;

class ActivityManagerConfigTest : public testing::Test {
 protected:
  void TearDown() override { ActivityManagerConfig::instanceIs(nullptr); }
};

TEST_F(ActivityManagerConfigTest, Instance_IsMadeOnRealTimeThatBeginsAtZero) {
  const auto& clock = ActivityManagerConfig::instance()->clock();
  EXPECT_NE(dynamic_cast<const Orm::RealTime*>(&clock->time()), nullptr);
  EXPECT_GE(clock->now(), 0);
  EXPECT_LT(clock->now(), 60);
  EXPECT_EQ(ActivityManagerConfig::instance()->clock(), clock);
}

TEST_F(ActivityManagerConfigTest, InstanceIs_AHostSetsTheClock) {
  const auto clock = Orm::make<Orm::Clock>(std::make_unique<Orm::VirtualTime>(7));
  ActivityManagerConfig::instanceIs(clock);
  EXPECT_EQ(ActivityManagerConfig::instance()->clock(), clock);
  EXPECT_EQ(ActivityManagerConfig::instance()->clock()->now(), 7);
}

TEST_F(ActivityManagerConfigTest, InstanceIs_NullDropsTheSingletonAndItsClock) {
  ActivityManagerConfig::instance();
  EXPECT_EQ(Kobble::liveObjects(), 2U);
  ActivityManagerConfig::instanceIs(nullptr);
  EXPECT_EQ(Kobble::liveObjects(), 0U);
}

}  // namespace
