#include <gtest/gtest.h>

#include "Platform/Orm/ActivityScope.h"
#include "Platform/Orm/Collection.h"
#include "Platform/Orm/Sm.h"
#include "Test/Orm/Samples.h"

namespace {

using Orm::ActivityScope;
using Orm::Ptr;
using OrmTest::Machine;
using OrmTest::Thing;
using OrmTest::Watcher;

TEST(SmTest, LastHandle_OutsideHandlersEndsTheMachineAtOnce) {
  const auto thing = Orm::make<Thing>();
  auto machine = Orm::make<Machine>("a", thing);
  machine = nullptr;
  EXPECT_EQ(Kobble::liveObjects(), 1U);
  EXPECT_EQ(thing->notifieeCount(), 0U);
}

TEST(SmTest, LetGoInItsOwnHandler_ItsMemoryStaysUntilTheHandlerHasReturned) {
  const auto thing = Orm::make<Thing>();
  auto machine = Orm::make<Machine>("self", thing);
  machine->handlerIs([&machine](Machine& self) {
    machine = nullptr;
    EXPECT_TRUE(self.isDeleted());
    EXPECT_EQ(self.name(), "self");
    EXPECT_EQ(ActivityScope::zombies(), 1U);
  });
  thing->valueIs(1);
  EXPECT_EQ(Kobble::liveObjects(), 1U);
  EXPECT_EQ(thing->notifieeCount(), 0U);
}

TEST(SmTest, LetGoInANestedHandler_ItsMemoryStaysUntilTheOutermostScopeEnds) {
  const auto outer = Orm::make<Thing>();
  const auto middle = Orm::make<Thing>();
  const auto inner = Orm::make<Thing>();
  auto machine = Orm::make<Machine>("inner", inner);
  machine->handlerIs([&](Machine&) { machine = nullptr; });
  const Machine* const raw = machine.get();
  const auto stillThere = [raw] {
    EXPECT_TRUE(raw->isDeleted());
    EXPECT_EQ(raw->name(), "inner");
    EXPECT_EQ(raw->handled(), 1);
  };
  const Watcher first(outer, [&](Orm::AttributeId, const Orm::Key&) {
    middle->valueIs(1);
    stillThere();
    inner->valueIs(2);  // is not handled any more
    stillThere();
  });
  const Watcher second(middle, [&](Orm::AttributeId, const Orm::Key&) {
    inner->valueIs(1);
    stillThere();
  });
  outer->valueIs(1);
  EXPECT_EQ(Kobble::liveObjects(), 5U);  // three things, two watchers
}

TEST(SmTest, MarkedForDeletion_IsNotToldByTheNotificationUnderWay) {
  const auto thing = Orm::make<Thing>();
  auto later = Ptr<Machine>();
  const Watcher first(thing, [&](Orm::AttributeId, const Orm::Key&) { later = nullptr; });
  later = Orm::make<Machine>("later", thing);
  int handled = -1;
  const Machine* const raw = later.get();
  const Watcher last(thing, [&](Orm::AttributeId, const Orm::Key&) { handled = raw->handled(); });
  thing->valueIs(1);
  EXPECT_EQ(handled, 0);
}

TEST(SmTest, MarkedForDeletion_HandlesThatComeAndGoDoNotMarkItTwice) {
  const auto thing = Orm::make<Thing>();
  auto machine = Orm::make<Machine>("a", thing);
  machine->handlerIs([&machine](Machine& self) {
    machine = nullptr;
    { const Ptr<Machine> again(&self); }
    { const Ptr<Machine> andAgain(&self); }
    EXPECT_EQ(ActivityScope::zombies(), 1U);
  });
  thing->valueIs(1);
  EXPECT_EQ(Kobble::liveObjects(), 1U);
}

TEST(SmDeathTest, MarkedForDeletion_AHandleThatOutlivesTheScopeStopsTheProcess) {
  const auto thing = Orm::make<Thing>();
  Ptr<Machine> kept;
  auto machine = Orm::make<Machine>("a", thing);
  machine->handlerIs([&](Machine& self) {
    machine = nullptr;
    kept = Ptr<Machine>(&self);
  });
  EXPECT_DEATH(thing->valueIs(1), "assertion failed: refCount\\(\\) == 0");
}

/// A parent whose children stand in a collection under their names.
class Parent : public Orm::Sm, private Kobble::Counted<Parent> {
 public:
  Orm::Collection<Ptr<Machine>, &Machine::name> children;
  void hasNotificationActiveIs(bool active) override {
    for (const auto& child : children) child->hasNotificationActiveIs(active);
  }
};

TEST(SmTest, ParentLetGoInAChildsHandler_BothStayUntilTheHandlerHasReturned) {
  const auto thing = Orm::make<Thing>();
  auto parent = Orm::make<Parent>();
  Parent* const raw = parent.get();
  for (const char* name : {"a", "b", "c"}) {
    parent->children.insert(Orm::make<Machine>(name, thing, [&](Machine& self) {
      EXPECT_EQ(self.name(), "b");
      parent = nullptr;
      EXPECT_TRUE(raw->isDeleted());
      EXPECT_FALSE(self.isDeleted()) << "its parent still holds it";
      EXPECT_EQ(raw->children.size(), 3U);
    }));
  }
  raw->children.find("a")->handlerIs({});
  const Ptr<Machine> last(raw->children.find("c"));
  thing->valueIs(1);
  EXPECT_EQ(last->handled(), 0) << "switched off together with its parent";
  EXPECT_EQ(Kobble::liveObjects(), 2U);  // the thing and the last child
}

TEST(SmTest, ChildRemovedByItsOwnHandlerWhileTheParentWalksItsChildren) {
  const auto thing = Orm::make<Thing>();
  auto parent = Orm::make<Parent>();
  for (const char* name : {"a", "b", "c"}) {
    parent->children.insert(Orm::make<Machine>(
        name, thing, [&](Machine& self) { parent->children.take(self.name()); }));
  }
  std::string walked;
  parent->children.walk([&](const Machine& child) {
    if (walked.empty()) thing->valueIs(1);
    walked += child.name().view();
  });
  EXPECT_EQ(walked, "a");
  EXPECT_TRUE(parent->children.empty());
  parent = nullptr;
  EXPECT_EQ(Kobble::liveObjects(), 1U);
}

TEST(SmTest, ParentLetGoWhileItWalksItsChildren_TheWalkGoesOn) {
  const auto thing = Orm::make<Thing>();
  auto parent = Orm::make<Parent>();
  for (const char* name : {"a", "b", "c"}) {
    parent->children.insert(Orm::make<Machine>(name, thing));
  }
  std::string walked;
  parent->children.walk([&](const Machine& child) {
    parent = nullptr;
    walked += child.name().view();
  });
  EXPECT_EQ(walked, "abc");
  EXPECT_EQ(Kobble::liveObjects(), 1U);
}

}  // namespace
