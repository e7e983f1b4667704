// Who is told what when reactors and entities come and go during nested notifications.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Orm/ActivityScope.h"
#include "Platform/Orm/MutatorReinstantiatingError.h"
#include "Test/Orm/Samples.h"

namespace {

using Orm::Ptr;
using OrmTest::Thing;
using OrmTest::Watcher;
using testing::ElementsAre;

/// Three things, each changed by a reactor on the one before, and a reactor more on each.
class NotificationTest : public testing::Test {
 protected:
  Ptr<Thing> first_ = Orm::make<Thing>("first");
  Ptr<Thing> second_ = Orm::make<Thing>("second");
  Ptr<Thing> third_ = Orm::make<Thing>("third");

  static std::unique_ptr<Watcher> on(const Ptr<Thing>& thing, std::function<void()> what) {
    return std::make_unique<Watcher>(
        thing, [what = std::move(what)](Orm::AttributeId, const Orm::Key&) { what(); });
  }
};

TEST_F(NotificationTest, AllReactorsAndHandlesGoThreeDeep_EntitiesGoWhenTheirNotificationsReturn) {
  std::vector<std::unique_ptr<Watcher>> watchers;
  std::string log;
  Thing* const first = first_.get();
  Thing* const second = second_.get();
  watchers.push_back(on(first_, [&] {
    log += "a";
    second->valueIs(1);
    EXPECT_EQ(Kobble::liveObjects(), 1U) << "only the first thing, whose notification runs";
  }));
  watchers.push_back(on(first_, [&] { log += "!"; }));
  watchers.push_back(on(second_, [&] {
    log += "b";
    third_->valueIs(1);
    EXPECT_EQ(Kobble::liveObjects(), 2U);
    EXPECT_EQ(second->name(), "second");
    EXPECT_EQ(first->name(), "first");
  }));
  watchers.push_back(on(second_, [&] { log += "!"; }));
  watchers.push_back(on(third_, [&] {
    log += "c";
    watchers.clear();
    first_ = second_ = third_ = nullptr;
    EXPECT_EQ(Kobble::liveObjects(), 3U);
  }));
  watchers.push_back(on(third_, [&] { log += "!"; }));
  first->valueIs(1);
  EXPECT_EQ(log, "abc");
  EXPECT_EQ(Kobble::liveObjects(), 0U);
}

TEST_F(NotificationTest, OnlyReactorAndLastHandleGo_TheEntityGoesDuringItsNotification) {
  std::unique_ptr<Watcher> watcher;
  Thing* const first = first_.get();
  second_ = third_ = nullptr;
  watcher = on(first_, [&] {
    watcher = nullptr;
    first_ = nullptr;
  });
  first->valueIs(1);
  EXPECT_EQ(Kobble::liveObjects(), 0U);
}

TEST_F(NotificationTest, LastHandleGoes_TheReactorsThatAreLeftAreToldAllTheSame) {
  std::string log;
  Thing* const first = first_.get();
  auto a = on(first_, [&] {
    log += "a";
    first_ = nullptr;
  });
  auto b = on(first_, [&] {
    log += "b";
    EXPECT_EQ(first->name(), "first");
  });
  first->valueIs(1);
  EXPECT_EQ(log, "ab");
  first->valueIs(2);
  EXPECT_EQ(log, "abab");
  a = nullptr;
  EXPECT_EQ(first->notifieeCount(), 1U);
  b = nullptr;
  EXPECT_EQ(Kobble::liveObjects(), 2U);  // the second and the third thing
}

TEST_F(NotificationTest, NewReactor_IsNotToldOfTheCurrentChangeWhereverItIsRegistered) {
  for (const int place : {0, 1, 2}) {
    std::string log;
    std::vector<std::unique_ptr<Watcher>> news;
    std::vector<std::unique_ptr<Watcher>> watchers;
    for (int at = 0; at != 3; ++at) {
      watchers.push_back(on(first_, [&, at] {
        log += static_cast<char>('0' + at);
        if (at != place) return;
        // Enough of them for the list to move while it is walked.
        for (int count = 0; count != 20; ++count) {
          news.push_back(on(first_, [&] { log += "n"; }));
        }
      }));
    }
    first_->valueIs(first_->value() + 1);
    EXPECT_EQ(log, "012");
    watchers.clear();
    log.clear();
    first_->valueIs(first_->value() + 1);
    EXPECT_EQ(log, std::string(20, 'n'));
  }
}

TEST_F(NotificationTest, NewReactor_OfASoleReactorsHandlerIsNotToldOfTheCurrentChange) {
  std::string log;
  std::unique_ptr<Watcher> later;
  const auto sole = on(first_, [&] {
    log += "a";
    if (!later) later = on(first_, [&] { log += "b"; });
  });
  first_->valueIs(1);
  EXPECT_EQ(log, "a");
  first_->valueIs(2);
  EXPECT_EQ(log, "aab");
}

TEST_F(NotificationTest, NewReactor_IsToldOfANestedChangeThatBeginsAfterItCame) {
  std::string log;
  std::unique_ptr<Watcher> later;
  const auto early = on(first_, [&] {
    log += "a";
    if (later) return;
    later = on(first_, [&] { log += "n"; });
    first_->otherIs(1);
  });
  const auto second = on(first_, [&] { log += "b"; });
  first_->valueIs(1);
  EXPECT_EQ(log, "aabnb");
}

TEST_F(NotificationTest, NewReactor_InThePlaceOfOneThatWentIsNotToldOfTheCurrentChange) {
  std::string log;
  std::unique_ptr<Watcher> replaced;
  const auto early = on(first_, [&] {
    log += "a";
    replaced = on(first_, [&] { log += "n"; });
  });
  replaced = on(first_, [&] { log += "b"; });
  const auto last = on(first_, [&] { log += "c"; });
  first_->valueIs(1);
  EXPECT_EQ(log, "ac");
  first_->valueIs(2);
  EXPECT_EQ(log, "acac") << "replaced again by the first";
}

TEST_F(NotificationTest, SoleReactorReplacedInItsOwnHandler_TheNewOneIsToldFromTheNextChangeOn) {
  std::string log;
  std::unique_ptr<Watcher> sole;
  sole = on(first_, [&] {
    log += "a";
    sole = on(first_, [&] { log += "b"; });
  });
  first_->valueIs(1);
  EXPECT_EQ(log, "a");
  first_->valueIs(2);
  EXPECT_EQ(log, "ab");
  EXPECT_EQ(first_->notifieeCount(), 1U);
}

TEST_F(NotificationTest, NestedChangeOfTheSameAttribute_EachPassSeesTheValueThatIsThere) {
  std::vector<std::string> seen;
  const auto a = on(first_, [&] {
    seen.push_back("a" + std::to_string(first_->value()));
    if (first_->value() < 3) first_->valueIs(first_->value() + 1);
  });
  const auto b = on(first_, [&] { seen.push_back("b" + std::to_string(first_->value())); });
  first_->valueIs(1);
  EXPECT_THAT(seen, ElementsAre("a1", "a2", "a3", "b3", "b3", "b3"));
}

TEST_F(NotificationTest, SwitchedOffDuringANotification_IsToldAgainOnceItIsOn) {
  std::string log;
  std::unique_ptr<Watcher> b;
  const auto a = on(first_, [&] {
    log += "a";
    b->hasNotificationActiveIs(first_->value() > 1);
  });
  b = on(first_, [&] { log += "b"; });
  first_->valueIs(1);
  EXPECT_EQ(log, "a");
  first_->valueIs(2);
  EXPECT_EQ(log, "aab");
}

TEST_F(NotificationTest, Exception_PassesThroughNestedNotificationsAndLeavesTheListsIntact) {
  std::string log;
  std::unique_ptr<Watcher> victim;
  Orm::Owned<Watcher> retired(new Watcher);
  bool raise = true;
  const auto outer = on(first_, [&] {
    log += "a";
    second_->valueIs(second_->value() + 1);
  });
  const auto outerRest = on(first_, [&] { log += "A"; });
  const auto middle = on(second_, [&] {
    log += "b";
    third_->valueIs(third_->value() + 1);
  });
  const auto middleRest = on(second_, [&] { log += "B"; });
  const auto inner = on(third_, [&] {
    log += "c";
    if (!raise) return;
    victim = nullptr;
    retired = nullptr;
    throw Orm::MutatorReinstantiatingError("path");
  });
  victim = on(first_, [&] { log += "v"; });
  retired->notifierIs(first_);
  try {
    first_->valueIs(1);
    FAIL() << "nothing was raised";
  } catch (const Orm::MutatorReinstantiatingError& error) {
    EXPECT_EQ(error.attribute(), "path");
  }
  EXPECT_EQ(log, "abc");
  EXPECT_FALSE(Orm::ActivityScope::active());
  EXPECT_EQ(Orm::ActivityScope::zombies(), 0U);
  EXPECT_EQ(first_->value(), 1);
  EXPECT_EQ(third_->value(), 1);
  EXPECT_EQ(first_->notifieeCount(), 2U);

  log.clear();
  raise = false;
  first_->valueIs(2);
  EXPECT_EQ(log, "abcBA");
}

TEST_F(NotificationTest, Exception_OfASoleReactorPassesThrough) {
  const auto sole = on(first_, [] { throw Orm::MutatorReinstantiatingError("flags"); });
  EXPECT_THROW(first_->valueIs(1), Orm::MutatorReinstantiatingError);
  EXPECT_FALSE(Orm::ActivityScope::active());
  EXPECT_THROW(first_->valueIs(2), Orm::MutatorReinstantiatingError);
}

TEST_F(NotificationTest, RepointedToTheNestedEntityAndBack_HearsBothFromTheNextChangeOn) {
  std::string log;
  std::unique_ptr<Watcher> wanderer;
  const auto a = on(first_, [&] {
    log += "a";
    if (first_->value() != 1) return;
    wanderer->notifierIs(second_);
    second_->valueIs(1);
    wanderer->notifierIs(first_);
  });
  wanderer = on(first_, [&] { log += "w"; });
  const auto c = on(first_, [&] { log += "c"; });
  first_->valueIs(1);
  EXPECT_EQ(log, "awc") << "told by the second thing, not told of the first thing's change";
  first_->valueIs(2);
  EXPECT_EQ(log, "awcacw") << "registered last";
}

TEST_F(NotificationTest, ManyReactorsGoAndCome_TheListGivesItsMemoryBack) {
  const std::size_t before = Kobble::bytesInUse();
  {
    std::vector<std::unique_ptr<Watcher>> guests;
    const auto host = on(first_, [&] {
      for (int count = 0; count != 50; ++count) {
        guests.push_back(on(first_, [] {}));
        if (count % 2 != 0) guests[guests.size() - 2] = nullptr;
      }
    });
    const auto other = on(first_, [] {});
    for (int value = 1; value != 20; ++value) first_->valueIs(value);
    EXPECT_EQ(first_->notifieeCount(), 2 + 19 * 25U);
  }
  EXPECT_EQ(first_->notifieeCount(), 0U);
  EXPECT_EQ(Kobble::bytesInUse(), before);
}

}  // namespace
