#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "Platform/Orm/Collection.h"
#include "Test/Orm/Samples.h"

namespace {

using Orm::Ptr;
using Orm::String;
using Orm::ValueCollection;
using OrmTest::Thing;
using testing::ElementsAre;
using testing::Pair;

template <class K, class V>
std::vector<std::pair<K, V>> walked(const ValueCollection<K, V>& values) {
  std::vector<std::pair<K, V>> all;
  values.walk([&](const K& key, const V& value) { all.emplace_back(key, value); });
  return all;
}

/// Two numbers, of which the hash knows the first alone.
struct Poor {
  int first = 0;
  int second = 0;
  std::uint32_t hash() const { return static_cast<std::uint32_t>(first); }
  friend bool operator==(const Poor&, const Poor&) = default;
};

TEST(ValueCollectionTest, Set_TellsWhetherAnythingChanged) {
  ValueCollection<String, int> values;
  EXPECT_TRUE(values.set("a", 1));
  EXPECT_FALSE(values.set("a", 1));
  EXPECT_TRUE(values.set("a", 2));
  EXPECT_TRUE(values.set("b", 0));
  EXPECT_THAT(walked(values), ElementsAre(Pair("a", 2), Pair("b", 0)));
}

TEST(ValueCollectionTest, Value_OfAnAbsentKeyIsTheTypesOwn) {
  ValueCollection<std::uint32_t, bool> values;
  EXPECT_FALSE(values.value(3));
  EXPECT_EQ(values.find(3), nullptr);
  values.set(3, false);
  EXPECT_FALSE(values.value(3));
  ASSERT_NE(values.find(3), nullptr);
  EXPECT_TRUE(values.has(3));
}

TEST(ValueCollectionTest, Erase_TellsWhetherThereWasOne) {
  ValueCollection<String, bool> values;
  values.set("a", false);
  EXPECT_TRUE(values.erase("a"));
  EXPECT_FALSE(values.erase("a"));
  EXPECT_TRUE(values.empty());
}

TEST(ValueCollectionTest, OverwrittenValue_KeepsItsPlaceInTheWalk) {
  ValueCollection<String, int> values;
  values.set("a", 1);
  values.set("b", 1);
  values.set("a", 5);
  EXPECT_THAT(walked(values), ElementsAre(Pair("a", 5), Pair("b", 1)));
}

TEST(ValueCollectionTest, OverwrittenDuringAWalk_IsVisitedWithTheNewValue) {
  ValueCollection<String, int> values;
  for (const char* key : {"a", "b", "c"}) values.set(key, 0);
  std::vector<int> seen;
  values.walk([&](const String& key, int value) {
    seen.push_back(value);
    values.set("c", 7);
    values.set(key, 9);
    EXPECT_EQ(value, seen.back()) << "the visited pair is a copy";
  });
  EXPECT_THAT(seen, ElementsAre(0, 0, 7));
  EXPECT_THAT(walked(values), ElementsAre(Pair("a", 9), Pair("b", 9), Pair("c", 9)));
}

TEST(ValueCollectionTest, CurrentPairErasedDuringAWalk_TheVisitedCopyStays) {
  ValueCollection<String, String> values;
  for (int number = 0; number != 20; ++number) {
    values.set(String(std::to_string(number)), String("value of " + std::to_string(number)));
  }
  int visited = 0;
  values.walk([&](const String& key, const String& value) {
    values.erase(key);
    for (int more = 0; more != 5; ++more) {
      values.set(String({"new ", key.view(), std::to_string(more)}), "x");  // moves the pairs
    }
    EXPECT_EQ(key, std::to_string(visited));
    EXPECT_EQ(value, "value of " + std::to_string(visited));
    ++visited;
  });
  EXPECT_EQ(visited, 20);
  EXPECT_EQ(values.size(), 100U);
}

TEST(ValueCollectionTest, Handles_AreHeldAndLetGo) {
  ValueCollection<String, Ptr<Thing>> values;
  const auto thing = Orm::make<Thing>();
  values.set("a", thing);
  EXPECT_FALSE(values.set("a", thing));
  EXPECT_EQ(thing->refCount(), 2U);
  EXPECT_TRUE(values.set("a", Orm::make<Thing>()));
  EXPECT_EQ(thing->refCount(), 1U);
  values.erase("a");
  EXPECT_EQ(Kobble::liveObjects(), 1U);
}

TEST(ValueCollectionDeathTest, Handles_ThatAreNullStopTheProcess) {
  ValueCollection<String, Ptr<Thing>> values;
  EXPECT_DEATH(values.set("a", nullptr), "assertion failed: storable\\( value \\)");
  values.set("a", Orm::make<Thing>());
  EXPECT_DEATH(values.set("a", nullptr), "assertion failed: storable\\( value \\)");
}

TEST(ValueCollectionTest, PoorHash_KeysThatCollideAreToldApart) {
  ValueCollection<Poor, int> values;
  for (int second = 0; second != 300; ++second) {
    for (int first = 0; first != 3; ++first) {
      values.set({first, second}, first * 1000 + second);
    }
  }
  EXPECT_EQ(values.size(), 900U);
  for (int second = 0; second < 300; second += 2) {
    for (int first = 0; first != 3; ++first) EXPECT_TRUE(values.erase({first, second}));
  }
  for (int second = 0; second != 300; ++second) {
    for (int first = 0; first != 3; ++first) {
      ASSERT_EQ(values.has({first, second}), second % 2 != 0);
      if (second % 2 != 0) {
        ASSERT_EQ(values.value({first, second}), first * 1000 + second);
      }
    }
  }
  EXPECT_FALSE(values.has({3, 1}));
}

TEST(ValueCollectionTest, Numbers_AreKeysOfAllSizes) {
  ValueCollection<std::uint32_t, std::uint32_t> values;
  const auto keyOf = [](std::uint32_t number) { return number * 0x01000193U; };  // 0 and all bits
  for (std::uint32_t number = 0; number != 10'000; ++number) values.set(keyOf(number), number);
  for (std::uint32_t number = 0; number != 10'000; ++number) {
    ASSERT_EQ(values.value(keyOf(number)), number);
    ASSERT_FALSE(values.has(keyOf(number + 10'000)));
  }
  values.set(~0U, 1);
  EXPECT_TRUE(values.has(~0U));
}

TEST(ValueCollectionTest, HashOfNumbers_SpreadsNeighboursInTheTopBits) {
  std::vector<bool> taken(4096);
  std::size_t different = 0;
  for (std::uint32_t number = 0; number != 1000; ++number) {
    const std::uint32_t top = Orm::hashOf(number) >> 20;
    different += taken[top] ? 0U : 1U;
    taken[top] = true;
  }
  EXPECT_GT(different, 800U);
}

}  // namespace
