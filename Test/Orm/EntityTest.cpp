#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "Platform/Orm/Entity.h"
#include "Test/Orm/Samples.h"

namespace {

using Orm::Ptr;
using OrmTest::Thing;
using OrmTest::Watcher;
using testing::ElementsAre;

TEST(EntityTest, Size_OfAnEntityIsItsDataAnd24Bytes) {
  EXPECT_EQ(sizeof(Orm::Entity), 24U);
  class OneNumber : public Orm::Entity {
   public:
    std::uint64_t number = 0;
  };
  EXPECT_EQ(sizeof(OneNumber), 32U);
}

TEST(EntityTest, Make_SwitchesNotificationOn) {
  EXPECT_TRUE(Orm::make<Thing>()->hasNotificationActive());
  EXPECT_FALSE(Ptr<Thing>(new Thing)->hasNotificationActive());
}

TEST(EntityTest, Setter_StoresAndTellsTheAttributeWithoutAKey) {
  const auto thing = Orm::make<Thing>();
  std::vector<Orm::AttributeId> told;
  const Watcher watcher(thing, [&](Orm::AttributeId attribute, const Orm::Key& key) {
    told.push_back(attribute);
    EXPECT_FALSE(key.is<Orm::String>());
    EXPECT_FALSE(key.is<int>());
  });
  thing->valueIs(3);
  thing->otherIs(4);
  thing->nextIs(Orm::make<Thing>());
  EXPECT_THAT(told, ElementsAre(Thing::Attr::value, Thing::Attr::other, Thing::Attr::next));
  EXPECT_EQ(thing->value(), 3);
}

TEST(EntityTest, Setter_OfTheValueThatIsThereTellsNobody) {
  const auto thing = Orm::make<Thing>();
  const auto next = Orm::make<Thing>();
  thing->valueIs(3);
  thing->nextIs(next);
  const Watcher watcher(thing, {});
  thing->valueIs(3);
  thing->nextIs(next);
  EXPECT_EQ(watcher.told(), 0);
  thing->valueIs(4);
  EXPECT_EQ(watcher.told(), 1);
}

TEST(EntityTest, Setter_TheNewValueIsThereWhenItIsTold) {
  const auto thing = Orm::make<Thing>();
  int seen = 0;
  const Watcher watcher(thing, [&](Orm::AttributeId, const Orm::Key&) { seen = thing->value(); });
  thing->valueIs(9);
  EXPECT_EQ(seen, 9);
}

TEST(EntityTest, Setter_OfAnotherHandleWithAnEqualEntityIsAChange) {
  const auto thing = Orm::make<Thing>();
  thing->nextIs(Orm::make<Thing>("same"));
  const Watcher watcher(thing, {});
  thing->nextIs(Orm::make<Thing>("same"));
  EXPECT_EQ(watcher.told(), 1);
}

TEST(EntityTest, HandleSetter_CountsTheNewEntityBeforeTheOldOneGoes) {
  // The new one is held by the old one alone.
  const auto thing = Orm::make<Thing>();
  thing->nextIs(Orm::make<Thing>("old"));
  thing->next()->nextIs(Orm::make<Thing>("new"));
  thing->nextIs(thing->next()->next());
  ASSERT_TRUE(thing->next());
  EXPECT_EQ(thing->next()->name(), "new");
  EXPECT_EQ(thing->next()->refCount(), 1U);
  EXPECT_EQ(Kobble::liveObjects(), 2U);
}

TEST(EntityTest, HandleSetter_TheOldEntityIsGoneWhenTheChangeIsTold) {
  const auto thing = Orm::make<Thing>();
  thing->nextIs(Orm::make<Thing>());
  const Watcher watcher(thing, [](Orm::AttributeId, const Orm::Key&) {
    EXPECT_EQ(Kobble::liveObjects(), 2U);  // the thing and its watcher
  });
  thing->nextIs(nullptr);
  EXPECT_EQ(watcher.told(), 1);
}

TEST(EntityTest, HandleSetter_LettingGoOfTheOwnOwnerWithoutNotifiees) {
  // Each holds the other; the setter takes the last handle of the entity that it works on.
  Thing* const thing = new Thing("inner");
  thing->hasNotificationActiveIs(true);
  {
    const auto owner = Orm::make<Thing>("owner");
    owner->nextIs(Ptr<Thing>(thing));
    thing->nextIs(owner);
  }
  EXPECT_EQ(Kobble::liveObjects(), 2U);
  thing->nextIs(nullptr);
  EXPECT_EQ(Kobble::liveObjects(), 0U);
}

TEST(EntityTest, HandleSetter_LettingGoOfTheOwnOwnerWhoseEndTakesTheOnlyReactor) {
  // The old value's end ends the reactor, which held the entity that the setter works on.
  class Holder : public Thing {
   public:
    std::unique_ptr<Watcher> watcher;
  };
  Thing* const thing = new Thing("watched");
  thing->hasNotificationActiveIs(true);
  int told = 0;
  {
    const auto holder = Orm::make<Holder>();
    holder->watcher = std::make_unique<Watcher>(Ptr<Thing>(thing),
                                                [&](Orm::AttributeId, const Orm::Key&) { ++told; });
    thing->nextIs(holder);
    told = 0;
  }
  EXPECT_EQ(Kobble::liveObjects(), 3U);
  thing->nextIs(nullptr);
  EXPECT_EQ(told, 0);
  EXPECT_EQ(Kobble::liveObjects(), 0U);
}

TEST(EntityTest, NotificationOff_StoresButTellsNobody) {
  const auto thing = Orm::make<Thing>();
  const Watcher watcher(thing, {});
  thing->hasNotificationActiveIs(false);
  thing->valueIs(5);
  EXPECT_EQ(thing->value(), 5);
  EXPECT_EQ(watcher.told(), 0);
  thing->hasNotificationActiveIs(true);
  EXPECT_EQ(watcher.told(), 0) << "what was not told is not told later";
  thing->valueIs(6);
  EXPECT_EQ(watcher.told(), 1);
}

TEST(EntityTest, NotificationOff_DuringANotificationEndsNothingOfThatOne) {
  const auto thing = Orm::make<Thing>();
  const Watcher first(
      thing, [&](Orm::AttributeId, const Orm::Key&) { thing->hasNotificationActiveIs(false); });
  const Watcher second(thing, {});
  thing->valueIs(1);
  EXPECT_EQ(second.told(), 1);
  thing->valueIs(2);
  EXPECT_EQ(first.told(), 1);
  EXPECT_EQ(second.told(), 1);
}

TEST(EntityTest, Notifiees_AreToldInOrderOfRegistration) {
  const auto thing = Orm::make<Thing>();
  std::vector<int> order;
  std::vector<std::unique_ptr<Watcher>> watchers;
  for (int at = 0; at != 40; ++at) {
    watchers.push_back(std::make_unique<Watcher>(
        thing, [&order, at](Orm::AttributeId, const Orm::Key&) { order.push_back(at); }));
    EXPECT_EQ(thing->notifieeCount(), watchers.size());
    order.clear();
    thing->valueIs(at + 1);
    std::vector<int> expected;
    for (int each = 0; each <= at; ++each) expected.push_back(each);
    EXPECT_EQ(order, expected);
  }
}

TEST(EntityTest, Notifiees_OrderSurvivesRemovalsAndComesAnewWhenRegisteredAgain) {
  const auto thing = Orm::make<Thing>();
  std::vector<int> order;
  std::vector<std::unique_ptr<Watcher>> watchers;
  for (int at = 0; at != 6; ++at) {
    watchers.push_back(std::make_unique<Watcher>(
        thing, [&order, at](Orm::AttributeId, const Orm::Key&) { order.push_back(at); }));
  }
  watchers[1].reset();
  watchers[3].reset();
  watchers[0]->notifierIs(nullptr);
  watchers[0]->notifierIs(thing);
  thing->valueIs(1);
  EXPECT_THAT(order, ElementsAre(2, 4, 5, 0));
  EXPECT_EQ(thing->notifieeCount(), 4U);
}

TEST(EntityTest, FirstNotifiee_TakesNoMemory) {
  const auto thing = Orm::make<Thing>();
  Watcher watcher;
  const std::size_t before = Kobble::bytesInUse();
  watcher.notifierIs(thing);
  EXPECT_EQ(Kobble::bytesInUse(), before);
  watcher.notifierIs(nullptr);
  EXPECT_EQ(Kobble::bytesInUse(), before);
}

TEST(EntityTest, ManyNotifiees_GiveTheirMemoryBackWhenTheyGo) {
  const auto thing = Orm::make<Thing>();
  const std::size_t before = Kobble::bytesInUse();
  {
    std::vector<Watcher> watchers(100);
    for (Watcher& watcher : watchers) watcher.notifierIs(thing);
    EXPECT_GT(Kobble::bytesInUse(), before);
  }
  EXPECT_EQ(thing->notifieeCount(), 0U);
  EXPECT_EQ(Kobble::bytesInUse(), before);
}

TEST(EntityTest, Notification_TakesNoMemory) {
  const auto thing = Orm::make<Thing>();
  std::size_t during = 0;
  const Watcher first(thing,
                      [&](Orm::AttributeId, const Orm::Key&) { during = Kobble::bytesInUse(); });
  const Watcher second(thing, {});
  const std::size_t before = Kobble::bytesInUse();
  thing->valueIs(1);
  EXPECT_EQ(during, before);
  EXPECT_EQ(Kobble::bytesInUse(), before);
}

TEST(EntityTest, Notifiees_ThatComeAndGoForLongDoNotGrowTheList) {
  const auto thing = Orm::make<Thing>();
  const Watcher first(thing, {});
  const Watcher second(thing, {});
  Watcher guest;
  guest.notifierIs(thing);
  guest.notifierIs(nullptr);
  const std::size_t before = Kobble::bytesInUse();
  for (int round = 0; round != 1000; ++round) {
    guest.notifierIs(thing);
    guest.notifierIs(nullptr);
  }
  EXPECT_LE(Kobble::bytesInUse(), before + 64);
  thing->valueIs(1);
  EXPECT_EQ(first.told() + second.told(), 2);
}

TEST(EntityDeathTest, ThatGoesUnderAReactor_StopsTheProcess) {
  const auto thing = Orm::make<Thing>();
  const Watcher watcher(thing, {});
  // Handles keep an entity alive under its reactors: who breaks that is found out.
  EXPECT_DEATH(thing->~Thing(), "assertion failed: notifiees_ == 0");
}

}  // namespace
