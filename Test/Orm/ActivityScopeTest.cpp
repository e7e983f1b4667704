#include <gtest/gtest.h>

#include <functional>

#include "Platform/Orm/ActivityScope.h"
#include "Test/Orm/Samples.h"

namespace {

using Orm::ActivityScope;
using OrmTest::Watcher;

/// Does what the test says when it goes.
class LastWord : public Orm::Reactor, private Kobble::Counted<LastWord> {
 public:
  explicit LastWord(std::function<void()> word) : word_(std::move(word)) {}
  ~LastWord() override { word_(); }
  void onAttribute(Orm::AttributeId, const Orm::Key&) override {}

 private:
  std::function<void()> word_;
};

TEST(ActivityScopeTest, Active_WhileAScopeIsOpen) {
  EXPECT_FALSE(ActivityScope::active());
  {
    const ActivityScope outer;
    { const ActivityScope inner; }
    EXPECT_TRUE(ActivityScope::active());
  }
  EXPECT_FALSE(ActivityScope::active());
}

TEST(ActivityScopeTest, Zombies_WaitForTheOutermostScope) {
  {
    const ActivityScope outer;
    {
      const ActivityScope inner;
      Orm::Reactor::retire(new Watcher);
      Orm::Reactor::retire(new Watcher);
    }
    EXPECT_EQ(ActivityScope::zombies(), 2U);
    EXPECT_EQ(Kobble::liveObjects(), 2U);
  }
  EXPECT_EQ(ActivityScope::zombies(), 0U);
  EXPECT_EQ(Kobble::liveObjects(), 0U);
}

TEST(ActivityScopeTest, Zombies_OfAZombieAreReclaimedInTheSameSweep) {
  int words = 0;
  {
    const ActivityScope scope;
    Orm::Reactor::retire(new LastWord([&] {
      ++words;
      Orm::Reactor::retire(new LastWord([&] {
        ++words;
        const ActivityScope nested;  // does not sweep by itself
        Orm::Reactor::retire(new LastWord([&] { ++words; }));
      }));
      EXPECT_EQ(words, 1);
    }));
  }
  EXPECT_EQ(words, 3);
  EXPECT_EQ(ActivityScope::zombies(), 0U);
}

TEST(ActivityScopeTest, Zombies_AreReclaimedWhenAnExceptionEndsTheScope) {
  try {
    const ActivityScope scope;
    Orm::Reactor::retire(new Watcher);
    throw 1;
  } catch (int) {
  }
  EXPECT_FALSE(ActivityScope::active());
  EXPECT_EQ(Kobble::liveObjects(), 0U);
}

}  // namespace
