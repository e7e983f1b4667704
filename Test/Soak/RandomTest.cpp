#include <gtest/gtest.h>

#include <set>

#include "Soak/Random.h"

namespace Soak {
namespace {

TEST(SoakRandomTest, ASeedGivesTheSameNumbersEverywhere) {
  Random random(1);
  EXPECT_EQ(random.next(), 10451216379200822465U);
  EXPECT_EQ(random.next(), 13757245211066428519U);
  EXPECT_EQ(Random(2).next(), Random(2).next());
  EXPECT_NE(Random(2).next(), Random(3).next());
}

TEST(SoakRandomTest, EveryNumberOfARangeComes) {
  Random random(7);
  std::set<std::size_t> seen;
  for (int times = 0; times != 200; ++times) seen.insert(random.from(3, 6));
  EXPECT_EQ(seen, (std::set<std::size_t>{3, 4, 5, 6}));
}

TEST(SoakRandomTest, PickTakesOneOfTheChoices) {
  Random random(9);
  const std::vector<int> choices = {4, 8, 15};
  std::set<int> seen;
  for (int times = 0; times != 100; ++times) seen.insert(random.pick(choices));
  EXPECT_EQ(seen, (std::set<int>{4, 8, 15}));
}

}  // namespace
}  // namespace Soak
