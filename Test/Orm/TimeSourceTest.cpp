#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "Platform/Orm/TimeSource.h"

namespace {

using Orm::kNeverTick;
using Orm::tickOf;

TEST(TimeSourceTest, TickOf_RoundsToWholeMicroseconds) {
  EXPECT_EQ(tickOf(0), 0);
  EXPECT_EQ(tickOf(1), 1'000'000);
  EXPECT_EQ(tickOf(0.000'001), 1);
  EXPECT_EQ(tickOf(0.000'000'4), 0);
  EXPECT_EQ(tickOf(0.000'000'6), 1);
  EXPECT_EQ(tickOf(-1.5), -1'500'000);
  EXPECT_EQ(tickOf(1'700'000'000.123'456), 1'700'000'000'123'456);
}

TEST(TimeSourceTest, TickOf_RoundsHalfAwayFromZeroAtAnySize) {
  std::mt19937_64 random(1);
  for (double scale = 1e-8; scale < 9e12; scale *= 3) {
    for (int turn = 0; turn != 200; ++turn) {
      const double whole = static_cast<double>(random()) * 0x1p-64 * scale;
      const double halves = std::floor(whole * 2e6) * 0.5e-6;
      for (const double time : {whole, halves, std::nextafter(halves, 0.0), -whole, -halves}) {
        ASSERT_EQ(tickOf(time), static_cast<Orm::Tick>(std::round(time * 1e6))) << time;
      }
    }
  }
}

TEST(TimeSourceTest, TickOf_SumsThatDifferInTheLastBitsAreEqual) {
  EXPECT_NE(0.1 + 0.2, 0.3);
  EXPECT_EQ(tickOf(0.1 + 0.2), tickOf(0.3));
  double sum = 0;
  for (int count = 0; count != 1000; ++count) sum += 0.001;
  EXPECT_NE(sum, 1.0);
  EXPECT_EQ(tickOf(sum), tickOf(1.0));
}

TEST(TimeSourceTest, TickOf_WhatNoTickReachesIsNever) {
  EXPECT_EQ(tickOf(Orm::kNever), kNeverTick);
  EXPECT_EQ(tickOf(std::numeric_limits<double>::quiet_NaN()), kNeverTick);
  EXPECT_EQ(tickOf(std::numeric_limits<double>::max()), kNeverTick);
  EXPECT_EQ(tickOf(1e13), kNeverTick);
  EXPECT_LT(tickOf(9e12), kNeverTick);
}

TEST(TimeSourceTest, TickOf_WhatLiesBeforeAllTicksIsTheFirst) {
  EXPECT_EQ(tickOf(-Orm::kNever), INT64_MIN);
  EXPECT_EQ(tickOf(-1e300), INT64_MIN);
}

TEST(TimeSourceTest, SecondsOf_GivesTheTimeBack) {
  for (const double time : {0.0, 0.3, 12.5, 299.999999, 86'400.000001}) {
    EXPECT_EQ(Orm::secondsOf(tickOf(time)), time);
  }
}

TEST(VirtualTimeTest, Time_MovesOnlyWhenItIsWaitedForAndNeverBack) {
  Orm::VirtualTime time(2.5);
  EXPECT_EQ(time.now(), 2'500'000);
  time.waitUntil(3'000'000);
  EXPECT_EQ(time.now(), 3'000'000);
  time.waitUntil(1);
  EXPECT_EQ(time.now(), 3'000'000);
}

TEST(RealTimeTest, Time_BeginsAtItsStartAndGoesOn) {
  Orm::RealTime time(1000);
  const Orm::Tick first = time.now();
  EXPECT_GE(first, tickOf(1000));
  EXPECT_LT(first, tickOf(1060));
  time.waitUntil(first + 3'000);
  EXPECT_GE(time.now(), first + 3'000);
  const Orm::Tick second = time.now();
  time.waitUntil(first);  // has passed
  EXPECT_GE(time.now(), second);
}

TEST(RealTimeTest, Time_MayBeginCenturiesFromNow) {
  // A start that the machine's clock, which counts nanoseconds, could not hold.
  for (const double start : {1e11, -1e11}) {
    Orm::RealTime time(start);
    const Orm::Tick first = time.now();
    EXPECT_GE(first, tickOf(start));
    EXPECT_LT(first, tickOf(start) + 60 * Orm::kTicksPerSecond);
    time.waitUntil(first + 2'000);
    EXPECT_GE(time.now(), first + 2'000);
  }
}

}  // namespace
