#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Orm/Collection.h"
#include "Test/Orm/Things.h"

namespace {

using Orm::Ptr;
using Orm::String;
using OrmTest::fill;
using OrmTest::nameOf;
using OrmTest::Thing;
using OrmTest::Things;
using OrmTest::walked;
using testing::ElementsAre;

std::vector<std::string> iterated(const Things& things) {
  std::vector<std::string> names;
  for (const auto& thing : things) names.push_back(thing->name().str());
  return names;
}

TEST(CollectionTest, Empty_HasNothing) {
  Things things;
  EXPECT_TRUE(things.empty());
  EXPECT_EQ(things.size(), 0U);
  EXPECT_EQ(things.find("a"), nullptr);
  EXPECT_FALSE(things.has("a"));
  EXPECT_FALSE(things.take("a"));
  EXPECT_TRUE(walked(things).empty());
  EXPECT_EQ(things.begin(), things.end());
  things.clear();
  EXPECT_EQ(Kobble::bytesInUse(), 0U);
}

TEST(CollectionTest, Insert_FindsTheMemberByItsOwnKey) {
  Things things;
  const auto member = Orm::make<Thing>("a");
  EXPECT_EQ(&things.insert(member), member.get());
  EXPECT_EQ(things.find("a"), member.get());
  EXPECT_TRUE(things.has("a"));
  EXPECT_FALSE(things.has("b"));
  EXPECT_EQ(member->refCount(), 2U);
}

TEST(CollectionTest, Take_HandsTheMemberOver) {
  Things things;
  fill(things, 3);
  const Ptr<Thing> taken = things.take(nameOf(1));
  ASSERT_TRUE(taken);
  EXPECT_EQ(taken->refCount(), 1U);
  EXPECT_EQ(things.size(), 2U);
  EXPECT_FALSE(things.take(nameOf(1)));
  EXPECT_THAT(walked(things), ElementsAre("thing-0", "thing-2"));
}

TEST(CollectionTest, Take_ByTheMembersOwnKey) {
  for (const int count : {1, 3, 40}) {
    Things things;
    fill(things, count);
    for (int number = 0; number != count; ++number) {
      const String& key = things.find(nameOf(number))->name();
      EXPECT_TRUE(things.take(key));  // what is taken goes at once, its key with it
    }
    EXPECT_TRUE(things.empty());
  }
}

TEST(CollectionTest, Walk_IsInOrderOfInsertionAtAllSizes) {
  Things things;
  std::vector<std::string> expected;
  for (int number = 0; number != 200; ++number) {
    things.insert(Orm::make<Thing>(nameOf(number)));
    expected.push_back(nameOf(number).str());
    ASSERT_EQ(walked(things), expected);
    ASSERT_EQ(iterated(things), expected);
  }
}

TEST(CollectionTest, InsertedAgain_ComesLast) {
  Things things;
  fill(things, 4);
  things.insert(things.take(nameOf(1)));
  EXPECT_THAT(walked(things), ElementsAre("thing-0", "thing-2", "thing-3", "thing-1"));
}

TEST(CollectionTest, Clear_LetsAllMembersGoAndGivesTheMemoryBack) {
  const std::size_t before = Kobble::bytesInUse();
  Things things;
  fill(things, 100);
  things.clear();
  EXPECT_EQ(Kobble::liveObjects(), 0U);
  EXPECT_EQ(Kobble::bytesInUse(), before);
  fill(things, 1);
  EXPECT_THAT(walked(things), ElementsAre("thing-0"));
}

TEST(CollectionTest, LastMemberTaken_GivesTheMemoryBack) {
  const std::size_t before = Kobble::bytesInUse();
  Things things;
  fill(things, 100);
  for (int number = 0; number != 100; ++number) things.take(nameOf(number * 37 % 100));
  EXPECT_EQ(Kobble::bytesInUse(), before);
}

TEST(CollectionTest, Growth_FromNothingToTenThousandAndBack) {
  Things things;
  for (int number = 0; number != 10'000; ++number) {
    ASSERT_EQ(things.size(), static_cast<std::uint32_t>(number));
    ASSERT_FALSE(things.has(nameOf(number)));
    things.insert(Orm::make<Thing>(nameOf(number)));
    ASSERT_TRUE(things.has(nameOf(number)));
    ASSERT_TRUE(things.has(nameOf(number / 2)));
  }
  int next = 0;
  things.walk([&](const Thing& thing) { ASSERT_EQ(thing.name(), nameOf(next++)); });
  for (int number = 0; number != 10'000; ++number) {
    ASSERT_TRUE(things.take(nameOf(number)));
    ASSERT_FALSE(things.has(nameOf(number)));
    if (number % 97 == 0 && number != 9'999) {
      ASSERT_EQ((*things.begin())->name(), nameOf(number + 1));
      ASSERT_TRUE(things.has(nameOf(9'999)));
    }
  }
  EXPECT_TRUE(things.empty());
}

TEST(CollectionTest, Memory_OfATableIsSixteenBytesAMember) {
  for (const int count : {10, 1'000, 100'000}) {
    std::vector<Ptr<Thing>> made;
    for (int number = 0; number != count; ++number)
      made.push_back(Orm::make<Thing>(nameOf(number)));
    const std::size_t before = Kobble::bytesInUse();
    Things things;
    for (const auto& thing : made) things.insert(thing);
    EXPECT_LE(Kobble::bytesInUse() - before, static_cast<std::size_t>(16 * count)) << count;
  }
}

TEST(CollectionTest, Reserve_MakesRoomOnceForAllWhoAreToCome) {
  for (const int count : {1, 8, 10, 60, 3'000}) {
    std::vector<Ptr<Thing>> made;
    for (int number = 0; number != count; ++number)
      made.push_back(Orm::make<Thing>(nameOf(number)));
    Things things;
    if (count > 2) things.insert(made[0]);
    const std::size_t before = Kobble::bytesInUse();
    things.reserve(static_cast<std::uint32_t>(count));
    things.reserve(1);  // there is more room already
    const std::size_t reserved = Kobble::bytesInUse();
    EXPECT_GE(reserved - before, static_cast<std::size_t>(count > 2 ? count - 1 : count) * 8);
    for (const auto& thing : made) {
      if (!things.has(thing->name())) things.insert(thing);
      // The index of those that are many is not made before they come.
      if (things.size() <= 8) {
        EXPECT_EQ(Kobble::bytesInUse(), reserved);
      }
    }
    EXPECT_EQ(things.size(), made.size());
    for (const auto& thing : made) EXPECT_EQ(things.find(thing->name()), thing.get());
  }
}

TEST(CollectionTest, WalkOfTheOnlyMember_WhateverItDoes) {
  const auto visits = [](auto&& during) {
    Things things;
    fill(things, 1);
    int count = 0;
    things.walk([&](const Thing& thing) {
      ++count;
      during(things);
      EXPECT_EQ(thing.name(), nameOf(0));  // it is kept alive
    });
    EXPECT_EQ(count, 1);
    return things.size();
  };
  EXPECT_EQ(visits([](Things&) {}), 1U);
  EXPECT_EQ(visits([](Things& things) { things.take(nameOf(0)); }), 0U);
  EXPECT_EQ(visits([](Things& things) { things.clear(); }), 0U);
  EXPECT_EQ(visits([](Things& things) {
              for (int number = 1; number != 30; ++number)
                things.insert(Orm::make<Thing>(nameOf(number)));
            }),
            30U);
  EXPECT_EQ(visits([](Things& things) {
              things.take(nameOf(0));
              things.insert(Orm::make<Thing>(nameOf(0)));
            }),
            1U);
  EXPECT_EQ(visits([](Things& things) {
              things.insert(Orm::make<Thing>(nameOf(1)));
              things.walk([&](const Thing& thing) { things.take(thing.name()); });
            }),
            0U);
}

TEST(CollectionTest, Compaction_KeepsOrderAndMembersAndBoundsTheMemory) {
  Things things;
  constexpr int kWindow = 100;
  fill(things, kWindow);
  std::size_t most = 0;
  for (int number = kWindow; number != 5'000; ++number) {
    things.take(nameOf(number - kWindow));
    things.insert(Orm::make<Thing>(nameOf(number)));
    most = std::max(most, Kobble::bytesInUse());
    ASSERT_EQ(things.size(), static_cast<std::uint32_t>(kWindow));
    if (number % 41 != 0) continue;
    int expected = number - kWindow;
    for (const auto& thing : things) ASSERT_EQ(thing->name(), nameOf(++expected));
    ASSERT_EQ(expected, number);
  }
  // Members and names alone: 100 x (about 80 + 32); the table itself some 300 places.
  EXPECT_LT(most, 100U * 112 + 300 * 16 + 2048);
}

TEST(CollectionTest, Compaction_OfTablesOfAllSizesLosesNoMember) {
  std::mt19937 random(11);
  for (const int count : {9, 30, 100, 700, 3'000, 7'000}) {
    Things things;
    fill(things, count);
    std::vector<bool> present(static_cast<std::size_t>(count), true);
    for (int turn = 0; turn != 3 * count; ++turn) {
      const int number = static_cast<int>(random() % present.size());
      const bool grows = turn > 2 * count;
      const auto at = static_cast<std::size_t>(number);
      if (present[at] && !grows) {
        ASSERT_TRUE(things.take(nameOf(number)));
      } else if (!present[at] && (grows || turn % 5 == 0)) {
        things.insert(Orm::make<Thing>(nameOf(number)));
      } else {
        continue;
      }
      present[at] = !present[at];
    }
    for (int number = 0; number != count; ++number) {
      ASSERT_EQ(things.has(nameOf(number)), present[static_cast<std::size_t>(number)]) << count;
    }
    ASSERT_EQ(things.size(), std::count(present.begin(), present.end(), true));
  }
}

TEST(CollectionDeathTest, Insert_OfNothingStopsTheProcess) {
  Things things;
  EXPECT_DEATH(things.insert(nullptr), "assertion failed: member");
}

TEST(CollectionTest, FindWithAHint_IsAsFindWhateverHappenedMeanwhile) {
  Things things;
  std::mt19937 random(7);
  std::vector<Things::Hint> hints(40);
  const auto change = [&] {
    const String name = nameOf(static_cast<int>(random() % hints.size()));
    if (random() % 200 == 0) things.clear();
    const bool hinted = random() % 2 == 0;
    const auto taken =
        hinted ? things.take(name, hints[random() % hints.size()]) : things.take(name);
    if (taken) {
      ASSERT_EQ(taken->name(), name);
    }
    if (taken || random() % 2 == 0) return;
    things.insert(Orm::make<Thing>(name), hints[random() % hints.size()]);
  };
  const auto compare = [&] {
    for (std::size_t number = 0; number != hints.size(); ++number) {
      const String name = nameOf(static_cast<int>(number));
      ASSERT_EQ(things.find(name), things.find(name, hints[number]));
      ASSERT_EQ(things.find(name), things.find(name, hints[0])) << "a hint of any other";
    }
  };
  for (int turn = 0; turn != 2000; ++turn) {
    change();
    compare();
    if (turn % 20 != 0) continue;
    things.walk([&](const Thing&) {
      change();
      compare();
    });
  }
}

TEST(CollectionTest, TakeWithAHint_TakesTheMemberThatWasFoundOrAnyOther) {
  for (const int count : {5, 30}) {
    Things things;
    fill(things, count);
    Things::Hint hint = 0;
    ASSERT_TRUE(things.find(nameOf(3), hint));
    EXPECT_EQ(things.take(nameOf(3), hint)->name(), nameOf(3));
    EXPECT_FALSE(things.take(nameOf(3), hint));
    EXPECT_EQ(things.take(nameOf(1), hint)->name(), nameOf(1));
    EXPECT_EQ(things.size(), static_cast<std::uint32_t>(count - 2));
  }
}

TEST(CollectionTest, FindWithAHint_OneMemberAfterAnotherInTheirOrderAndNotIn) {
  for (const int count : {5, 30}) {
    Things things;
    fill(things, count);
    Things::Hint hint = 0;
    for (int number = 0; number != count; ++number) {
      ASSERT_EQ(things.find(nameOf(number), hint)->name(), nameOf(number));
      ASSERT_EQ(hint, static_cast<Things::Hint>(number));
    }
    for (int number = count; number-- != 0;) {
      ASSERT_EQ(things.find(nameOf(number), hint)->name(), nameOf(number));
    }
    EXPECT_FALSE(things.find("none", hint));
    EXPECT_EQ(hint, 0U);
  }
}

TEST(CollectionTest, ValueWithAHint_IsAsValueWhateverHappenedMeanwhile) {
  Orm::ValueCollection<std::uint32_t, std::uint32_t> values;
  Orm::ValueCollection<std::uint32_t, std::uint32_t>::Hint hint = 0;
  std::mt19937 random(7);
  for (int turn = 0; turn != 5'000; ++turn) {
    const auto key = static_cast<std::uint32_t>(random() % 40);
    if (random() % 3 == 0) {
      values.set(key, static_cast<std::uint32_t>(random()));
    } else if (random() % 3 == 0) {
      values.erase(key);
    }
    const auto asked = static_cast<std::uint32_t>(random() % 40);
    ASSERT_EQ(values.value(asked, hint), values.value(asked)) << turn;
  }
}

TEST(CollectionTest, InsertWithAHint_FindsTheMemberAtOnce) {
  Things things;
  fill(things, 20);
  Things::Hint hint = 0;
  const Thing& last = things.insert(Orm::make<Thing>("last"), hint);
  EXPECT_EQ(20U, hint);
  EXPECT_EQ(&last, things.find("last", hint));
}

TEST(CollectionTest, Probable_IsMostlyTheMemberAndLeadsThere) {
  for (const int count : {30, 100, 2000, 10'000}) {
    Things things;
    fill(things, count);
    for (int number = 0; number < count; number += 3) things.take(nameOf(number));
    for (int number = 0; number < count; number += 6) {
      things.insert(Orm::make<Thing>(nameOf(number)));  // again, beside the place it had
    }
    int others = 0;
    for (int number = 0; number != count; ++number) {
      Things::Hint hint = 0;
      const Thing* const probable = things.probable(nameOf(number), hint);
      const Thing* const present = things.find(nameOf(number));
      ASSERT_TRUE(probable || !present) << number;
      if (probable) {
        ASSERT_EQ(probable, things.findAt(hint, probable->name()));
      }
      if (probable != present) ++others;
      ASSERT_EQ(present, things.find(nameOf(number), hint)) << number;
      ASSERT_EQ(present != nullptr, static_cast<bool>(things.take(nameOf(number), hint)));
      if (present) things.insert(Orm::make<Thing>(nameOf(number)));
    }
    EXPECT_LT(others, count / 5 + 3) << count;
  }
}

TEST(CollectionTest, Probable_OfFewMembersIsNoneAndChangesNothing) {
  Things things;
  fill(things, 8);
  Things::Hint hint = 5;
  EXPECT_FALSE(things.probable(nameOf(5), hint));
  EXPECT_TRUE(things.findAt(hint, nameOf(5)));
}

TEST(CollectionTest, Probable_ThatThereIsNoneDoesNotHideOneThatComes) {
  Things things;
  fill(things, 20);
  Things::Hint hint = 3;
  EXPECT_FALSE(things.probable("late", hint));
  EXPECT_FALSE(things.find("late", hint));
  const Thing& late = things.insert(Orm::make<Thing>("late"));
  EXPECT_EQ(&late, things.find("late", hint));
}

TEST(CollectionDeathTest, Insert_UnderAKeyThatIsThereStopsTheProcess) {
  for (const int count : {3, 8, 9, 12, 30}) {  // also when the index is made, or made larger
    Things things;
    fill(things, count);
    EXPECT_DEATH(things.insert(Orm::make<Thing>(nameOf(1))), "assertion failed: !has\\( key \\)");
  }
}

TEST(CollectionDeathTest, OwnerGoneDuringAWalk_OfAnEntityStopsTheProcess) {
  // A machine outlives the walk; an entity must be held by whoever walks its collections.
  class Owner : public Orm::Entity {
   public:
    Things things;
  };
  auto owner = Orm::make<Owner>();
  fill(owner->things, 2);
  EXPECT_DEATH(owner->things.walk([&](const Thing&) { owner = nullptr; }),
               "assertion failed: walks_ == 0");
}

/// Reactors in a collection: their one owner is the collection, and retiring is how they end.
class NamedReactor : public Orm::Reactor, private Kobble::Counted<NamedReactor> {
 public:
  NamedReactor(std::uint32_t number, const Ptr<Thing>& thing) : number_(number) {
    watchedIs(thing);
  }
  std::uint32_t number() const { return number_; }
  void onAttribute(Orm::AttributeId, const Orm::Key&) override { ++told; }
  int told = 0;

 private:
  std::uint32_t number_;
};

using Reactors = Orm::Collection<Orm::Owned<NamedReactor>, &NamedReactor::number>;

TEST(CollectionTest, OwnedReactors_GoWithTheirCollection) {
  const auto thing = Orm::make<Thing>();
  {
    Reactors reactors;
    for (std::uint32_t number = 0; number != 20; ++number) {
      reactors.insert(Orm::Owned<NamedReactor>(new NamedReactor(number, thing)));
    }
    EXPECT_EQ(thing->notifieeCount(), 20U);
    EXPECT_TRUE(reactors.take(7));
    EXPECT_EQ(thing->notifieeCount(), 19U);
    EXPECT_EQ(reactors.find(8)->number(), 8U);
  }
  EXPECT_EQ(thing->notifieeCount(), 0U);
}

TEST(CollectionTest, OwnedReactors_RemovedDuringAWalkAreMarkedAndReclaimedAfterIt) {
  const auto thing = Orm::make<Thing>();
  Reactors reactors;
  for (std::uint32_t number = 0; number != 12; ++number) {
    reactors.insert(Orm::Owned<NamedReactor>(new NamedReactor(number, thing)));
  }
  reactors.walk([&](const NamedReactor& reactor) {
    reactors.take(reactor.number());
    EXPECT_TRUE(reactor.isDeleted());
    thing->valueIs(thing->value() + 1);
    EXPECT_EQ(reactor.told, static_cast<int>(reactor.number()));
  });
  EXPECT_TRUE(reactors.empty());
  EXPECT_EQ(thing->notifieeCount(), 0U);
}

}  // namespace
