#include <gtest/gtest.h>

#include <random>

#include "Platform/Orm/Collection.h"
#include "Platform/Orm/LastAsked.h"
#include "Test/Orm/Samples.h"

namespace {

using Orm::Ptr;
using Orm::String;
using OrmTest::Thing;

using Things = Orm::Collection<Ptr<Thing>, &Thing::name>;
using Numbers = Orm::ValueCollection<String, int>;

TEST(LastAskedTest, Find_IsAsTheCollectionsWhateverComesAndGoes) {
  std::minstd_rand random(1);
  Things things;
  Orm::LastAsked<Things> lastAsked;
  for (int turn = 0; turn != 20'000; ++turn) {
    // Few enough names for most of what is asked to have been asked just before.
    const String name(std::to_string(random() % (turn < 10'000 ? 3 : 20)));
    switch (random() % 8) {
      case 0:
        if (things.has(name)) break;
        lastAsked.memberComes();
        things.insert(Orm::make<Thing>(name));
        break;
      case 1:
        things.take(name);
        break;
      case 2:
        if (lastAsked.find(things, name)) things.take(name, lastAsked.hint());
        EXPECT_FALSE(things.has(name));
        break;
      case 3:
        if (turn % 50 == 0) things.clear();
        break;
      default:
        ASSERT_EQ(lastAsked.find(things, name), things.find(name)) << turn;
    }
  }
}

TEST(LastAskedTest, TheEmptyKey_IsAKeyAsAnyOther) {
  Numbers numbers;
  Orm::LastAsked<Numbers> lastAsked;
  EXPECT_EQ(lastAsked.find(numbers, String()), nullptr);
  EXPECT_EQ(lastAsked.find(numbers, String()), nullptr);
  lastAsked.memberComes();
  numbers.set(String(), 7);
  ASSERT_NE(lastAsked.find(numbers, String()), nullptr);
  EXPECT_EQ(*lastAsked.find(numbers, String()), 7);
}

}  // namespace
