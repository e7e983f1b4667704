#include <gtest/gtest.h>

#include <memory>

#include "Platform/Orm/ActivityScope.h"
#include "Platform/Orm/Reactor.h"
#include "Test/Orm/Samples.h"

namespace {

using Orm::Ptr;
using OrmTest::Thing;
using OrmTest::Watcher;

/// Records what a reactor with an owner does when it is pointed at a thing.
struct Owner {
  int notifierCalls = 0;
  int attributeCalls = 0;
};

class OrmThing : public Orm::ReactorOn<Thing, Owner>, private Kobble::Counted<OrmThing> {
 public:
  explicit OrmThing(Owner* owner) : ReactorOn(owner) {}
  OrmThing(Owner* owner, const Ptr<Thing>& thing) : ReactorOn(owner, thing) {}
  void onAttribute(Orm::AttributeId, const Orm::Key&) override { ++owner()->attributeCalls; }

 private:
  void onNotifier() override {
    EXPECT_NE(notifier(), nullptr);
    ++owner()->notifierCalls;
  }
};

class OtherThing : public Orm::Entity, private Kobble::Counted<OtherThing> {};

TEST(ReactorTest, Notifier_IsHeldWhileItIsWatched) {
  Watcher watcher;
  {
    const auto thing = Orm::make<Thing>();
    EXPECT_TRUE(watcher.notifierIs(thing));
    EXPECT_EQ(thing->refCount(), 2U);
  }
  ASSERT_NE(watcher.notifier(), nullptr);
  EXPECT_EQ(watcher.notifier()->notifieeCount(), 1U);
  EXPECT_TRUE(watcher.notifierIs(nullptr));
  EXPECT_EQ(watcher.notifier(), nullptr);
  EXPECT_EQ(Kobble::liveObjects(), 1U);
}

TEST(ReactorTest, MadeOnAnEntity_IsRegisteredAndSilentUntilItIsSwitchedOn) {
  const auto thing = Orm::make<Thing>();
  Owner owner;
  {
    OrmThing reactor(&owner, thing);
    EXPECT_EQ(reactor.notifier(), thing.get());
    EXPECT_EQ(thing->notifieeCount(), 1U);
    thing->valueIs(1);
    EXPECT_EQ(owner.notifierCalls, 0);
    EXPECT_EQ(owner.attributeCalls, 0);
    reactor.hasNotificationActiveIs(true);
    thing->valueIs(2);
    EXPECT_EQ(owner.attributeCalls, 1);
  }
  EXPECT_EQ(thing->notifieeCount(), 0U);
}

TEST(ReactorTest, NotifierIs_TheSameEntityKeepsThePlaceInTheOrder) {
  const auto thing = Orm::make<Thing>();
  std::string order;
  Watcher first(thing, [&](Orm::AttributeId, const Orm::Key&) { order += 'a'; });
  const Watcher second(thing, [&](Orm::AttributeId, const Orm::Key&) { order += 'b'; });
  EXPECT_FALSE(first.notifierIs(thing));
  EXPECT_EQ(thing->notifieeCount(), 2U);
  thing->valueIs(1);
  EXPECT_EQ(order, "ab");
}

TEST(ReactorTest, NotifierIs_AnotherEntityIsTheOnlyOneHeardOfFromThenOn) {
  const auto first = Orm::make<Thing>();
  const auto second = Orm::make<Thing>();
  Watcher watcher(first, {});
  watcher.notifierIs(second);
  EXPECT_EQ(first->notifieeCount(), 0U);
  EXPECT_EQ(second->notifieeCount(), 1U);
  first->valueIs(1);
  EXPECT_EQ(watcher.told(), 0);
  second->valueIs(1);
  EXPECT_EQ(watcher.told(), 1);
}

TEST(ReactorTest, NotifierIs_TheSuccessorThatOnlyTheOldEntityHolds) {
  auto first = Orm::make<Thing>("first");
  first->nextIs(Orm::make<Thing>("second"));
  Owner owner;
  OrmThing reactor(&owner);
  reactor.notifierIs(first);
  first = nullptr;
  reactor.notifierIs(reactor.notifier()->next());
  ASSERT_NE(reactor.notifier(), nullptr);
  EXPECT_EQ(reactor.notifier()->name(), "second");
  EXPECT_EQ(owner.notifierCalls, 2);
}

TEST(ReactorTest, NotifierIs_ANewEntityIsDealtWithAtOnceButNotNullNorTheSame) {
  const auto thing = Orm::make<Thing>();
  Owner owner;
  OrmThing reactor(&owner);
  reactor.notifierIs(nullptr);
  EXPECT_EQ(owner.notifierCalls, 0);
  reactor.notifierIs(thing);
  EXPECT_EQ(owner.notifierCalls, 1);
  reactor.notifierIs(thing);
  EXPECT_EQ(owner.notifierCalls, 1);
  reactor.notifierIs(nullptr);
  EXPECT_EQ(owner.notifierCalls, 1);
  reactor.notifierIs(thing);
  EXPECT_EQ(owner.notifierCalls, 2);
}

TEST(ReactorTest, NotifierIs_WithoutAnOwnerRegistersOnly) {
  const auto thing = Orm::make<Thing>();
  OrmThing reactor(nullptr);
  reactor.notifierIs(thing);
  EXPECT_EQ(thing->notifieeCount(), 1U);
}

TEST(ReactorTest, NotifierIs_OfAReactorMarkedForDeletionCallsNoHandler) {
  const auto thing = Orm::make<Thing>();
  Owner owner;
  const Orm::ActivityScope scope;
  auto* const reactor = new OrmThing(&owner);
  Orm::Reactor::retire(reactor);
  EXPECT_TRUE(reactor->isDeleted());
  reactor->notifierIs(thing);
  thing->valueIs(1);
  EXPECT_EQ(owner.notifierCalls, 0);
  EXPECT_EQ(owner.attributeCalls, 0);
}

TEST(ReactorTest, Accepted_TakesTheTypeAloneAndNullForAnyOther) {
  const Ptr<Orm::Entity const> thing = Orm::make<Thing>();
  const Ptr<Orm::Entity const> other = Orm::make<OtherThing>();
  EXPECT_EQ(Orm::accepted<Thing>(thing).get(), thing.get());
  EXPECT_FALSE(Orm::accepted<Thing>(other));
  EXPECT_FALSE(Orm::accepted<Thing>(nullptr));
}

TEST(ReactorTest, NotificationOff_IsNotToldUntilItIsOnAgain) {
  const auto thing = Orm::make<Thing>();
  Watcher watcher(thing, {});
  const Watcher other(thing, {});
  EXPECT_TRUE(watcher.hasNotificationActive());
  watcher.hasNotificationActiveIs(false);
  EXPECT_FALSE(watcher.hasNotificationActive());
  thing->valueIs(1);
  EXPECT_EQ(watcher.told(), 0);
  EXPECT_EQ(other.told(), 1);
  watcher.hasNotificationActiveIs(true);
  thing->valueIs(2);
  EXPECT_EQ(watcher.told(), 1);
}

TEST(ReactorTest, NotificationOff_TheOnlyNotifieeIsNotToldEither) {
  const auto thing = Orm::make<Thing>();
  Watcher watcher(thing, {});
  watcher.hasNotificationActiveIs(false);
  thing->valueIs(1);
  EXPECT_EQ(watcher.told(), 0);
}

TEST(ReactorTest, NotificationOn_DoesNotReviveAReactorMarkedForDeletion) {
  const auto thing = Orm::make<Thing>();
  auto* const watcher = new Watcher;
  watcher->notifierIs(thing);
  const Orm::ActivityScope scope;
  Orm::Reactor::retire(watcher);
  watcher->hasNotificationActiveIs(false);
  watcher->hasNotificationActiveIs(true);
  thing->valueIs(1);
  EXPECT_EQ(watcher->told(), 0);
}

TEST(ReactorTest, Retire_OutsideHandlersEndsTheReactorAtOnce) {
  const auto thing = Orm::make<Thing>();
  auto* const watcher = new Watcher;
  watcher->notifierIs(thing);
  EXPECT_EQ(Kobble::liveObjects(), 2U);
  Orm::Reactor::retire(watcher);
  EXPECT_EQ(Kobble::liveObjects(), 1U);
  EXPECT_EQ(thing->notifieeCount(), 0U);
}

TEST(ReactorTest, Retire_InAHandlerKeepsReactorAndEntityUntilTheOutermostScopeEnds) {
  auto* const watcher = new Watcher;
  watcher->notifierIs(Orm::make<Thing>());
  {
    const Orm::ActivityScope outer;
    {
      const Orm::ActivityScope inner;
      Orm::Reactor::retire(watcher);
    }
    EXPECT_TRUE(watcher->isDeleted());
    EXPECT_NE(watcher->notifier(), nullptr);
    EXPECT_EQ(Kobble::liveObjects(), 2U);
  }
  EXPECT_EQ(Kobble::liveObjects(), 0U);
}

TEST(OwnedTest, Owned_EndsItsReactor) {
  const auto thing = Orm::make<Thing>();
  {
    const Orm::Owned<Watcher> owned(new Watcher);
    owned->notifierIs(thing);
    EXPECT_EQ(thing->notifieeCount(), 1U);
  }
  EXPECT_EQ(thing->notifieeCount(), 0U);
}

TEST(OwnedTest, Moves_HandTheReactorOn) {
  Orm::Owned<Watcher> first(new Watcher);
  const Watcher* const watcher = first.get();
  Orm::Owned<Watcher> second(std::move(first));
  EXPECT_FALSE(first);  // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(second.get(), watcher);
  first = std::move(second);
  EXPECT_EQ(&*first, watcher);
  EXPECT_EQ(Kobble::liveObjects(), 1U);
  first = Orm::Owned<Watcher>(new Watcher);
  EXPECT_EQ(Kobble::liveObjects(), 1U);
  first = nullptr;
  EXPECT_FALSE(first);
  EXPECT_EQ(Kobble::liveObjects(), 0U);
}

}  // namespace
