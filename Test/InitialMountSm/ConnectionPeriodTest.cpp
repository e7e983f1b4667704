#include <gtest/gtest.h>

#include "Controllerdb/InitialMountSm/ConnectionPeriod.h"
#include "Test/Support/Recorder.h"

namespace Controller {
namespace {

TEST(ConnectionPeriodTest, Complete_StartsFalseAndTellsOfEachChange) {
  const auto period = Orm::make<ConnectionPeriod>();
  const Support::Recorder recorder(period);
  EXPECT_FALSE(period->complete());
  period->completeIs(false);
  EXPECT_EQ(recorder.told(), 0U);
  period->completeIs(true);
  EXPECT_TRUE(period->complete());
  EXPECT_EQ(recorder.told(ConnectionPeriod::Attr::complete), 1U);
  period->completeIs(true);
  EXPECT_EQ(recorder.told(), 1U);
}

}  // namespace
}  // namespace Controller
