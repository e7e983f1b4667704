#include <gtest/gtest.h>

#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "Platform/Orm/Ptr.h"
#include "Platform/Orm/String.h"

namespace {

using Orm::Ptr;

class Base : public Orm::PtrInterface, private Kobble::Counted<Base> {
 public:
  int number() const { return number_; }
  void numberIs(int number) { number_ = number; }

 private:
  int number_ = 0;
};

class Derived : public Base {
 public:
  Ptr<Derived> other;
};

/// Does not go when its last handle does.
class Kept : public Orm::PtrInterface {
 public:
  mutable int lastRefs = 0;

 protected:
  void onLastRef() const override { ++lastRefs; }
};

static_assert(sizeof(Ptr<Base>) == sizeof(void*));
static_assert(std::is_nothrow_move_constructible_v<Ptr<Base>>);
static_assert(std::is_nothrow_move_assignable_v<Ptr<Base>>);
static_assert(std::is_convertible_v<Ptr<Base>, Ptr<Base const>>);
static_assert(!std::is_convertible_v<Ptr<Base const>, Ptr<Base>>);
static_assert(!std::is_convertible_v<Ptr<Base>, Ptr<Derived>>);
static_assert(!std::is_convertible_v<Ptr<Base>, bool>);
static_assert(std::is_same_v<decltype(*std::declval<Ptr<Base const>>()), const Base&>);

/// Runs a test with counting as the parameter says (true: atomically).
class PtrTest : public testing::TestWithParam<bool> {
 protected:
  void SetUp() override { Orm::threadSafePtrsIs(GetParam()); }
  void TearDown() override { Orm::threadSafePtrsIs(false); }
};

INSTANTIATE_TEST_SUITE_P(Ptr, PtrTest, testing::Bool(),
                         [](const auto& safe) { return safe.param ? "ThreadSafe" : "Plain"; });

TEST_P(PtrTest, Null_IsAValue) {
  const Ptr<Base> null;
  const Ptr<Base> fromNull(nullptr);
  EXPECT_FALSE(null);
  EXPECT_EQ(null, nullptr);
  EXPECT_EQ(null, fromNull);
  EXPECT_EQ(null.get(), nullptr);
  Ptr<Base> copy(null);
  copy = null;
  EXPECT_FALSE(copy);
  EXPECT_FALSE(Ptr<Base>(static_cast<Base*>(nullptr)));
}

TEST_P(PtrTest, Copies_CountAndTheLastOneDestroys) {
  Ptr<Base> first(new Base);
  EXPECT_EQ(first->refCount(), 1U);
  {
    const Ptr<Base> second(first);
    const Ptr<Base const> third(second);
    EXPECT_EQ(first->refCount(), 3U);
    EXPECT_EQ(third, first);
  }
  EXPECT_EQ(first->refCount(), 1U);
  EXPECT_EQ(Kobble::liveObjects(), 1U);
  first = nullptr;
  EXPECT_EQ(Kobble::liveObjects(), 0U);
}

TEST_P(PtrTest, Moves_LeaveTheCountAndNull) {
  Ptr<Derived> first(new Derived);
  Ptr<Derived> second(std::move(first));
  EXPECT_FALSE(first);  // NOLINT(bugprone-use-after-move)
  const Ptr<Base> third(std::move(second));
  EXPECT_FALSE(second);  // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(third->refCount(), 1U);
}

TEST_P(PtrTest, Assignment_ToItselfKeepsTheObject) {
  Ptr<Base> ptr(new Base);
  Ptr<Base>& same = ptr;
  ptr = same;
  EXPECT_EQ(ptr->refCount(), 1U);
  ptr = std::move(same);
  ASSERT_TRUE(ptr);
  EXPECT_EQ(ptr->refCount(), 1U);
}

TEST_P(PtrTest, Assignment_CountsTheNewObjectBeforeTheOldOneGoes) {
  // The new object is held by the old one alone.
  Ptr<Derived> head(new Derived);
  head->other = Ptr<Derived>(new Derived);
  head->other->numberIs(7);
  head = head->other;
  EXPECT_EQ(head->number(), 7);
  EXPECT_EQ(head->refCount(), 1U);
  EXPECT_EQ(Kobble::liveObjects(), 1U);
}

TEST_P(PtrTest, Assignment_FromADerivedHandle) {
  const Ptr<Derived> derived(new Derived);
  Ptr<Base const> base;
  base = derived;
  EXPECT_EQ(base.get(), derived.get());
  EXPECT_EQ(derived->refCount(), 2U);
}

TEST_P(PtrTest, DynamicCast_GivesTheObjectOrNull) {
  const Ptr<Base> derived(new Derived);
  const Ptr<Base> base(new Base);
  EXPECT_EQ(Orm::dynamicCast<Derived>(derived).get(), derived.get());
  EXPECT_FALSE(Orm::dynamicCast<Derived>(base));
  EXPECT_FALSE(Orm::dynamicCast<Derived>(Ptr<Base>()));
  EXPECT_EQ(derived->refCount(), 1U);
}

TEST_P(PtrTest, OnLastRef_DecidesWhatHappens) {
  Kept kept;
  { const Ptr<Kept> ptr(&kept); }
  EXPECT_EQ(kept.lastRefs, 1);
  { const Ptr<Kept> again(&kept); }
  EXPECT_EQ(kept.lastRefs, 2);
}

TEST_P(PtrTest, LongChain_OfHandlesToItself_Goes) {
  Ptr<Derived> head;
  for (int length = 0; length != 1000; ++length) {
    Ptr<Derived> next(new Derived);
    next->other = std::move(head);
    head = std::move(next);
  }
  EXPECT_EQ(Kobble::liveObjects(), 1000U);
  head = nullptr;
  EXPECT_EQ(Kobble::liveObjects(), 0U);
}

TEST(PtrThreadsTest, ThreadSafe_CountsFromManyThreadsAreRight) {
  Orm::threadSafePtrsIs(true);
  const Ptr<Base> object(new Base);
  const Orm::String text("shared by all threads");
  constexpr int kThreads = 4;
  constexpr int kRounds = 20'000;
  std::vector<std::thread> threads;
  std::vector<std::vector<Ptr<Base const>>> kept(kThreads);
  for (int at = 0; at != kThreads; ++at) {
    threads.emplace_back([&object, &text, &mine = kept[static_cast<std::size_t>(at)]] {
      for (int round = 0; round != kRounds; ++round) {
        Ptr<Base const> copy(object);
        const Ptr<Base const> second(copy);
        const Orm::String textCopy(text);
        if (round % 1000 == 0) mine.push_back(std::move(copy));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(object->refCount(), 1U + kThreads * kRounds / 1000);
  kept.clear();
  EXPECT_EQ(object->refCount(), 1U);
  EXPECT_EQ(text, "shared by all threads");
  Orm::threadSafePtrsIs(false);
}

TEST(PtrThreadsTest, ThreadSafe_TheSwitchReadsAsItWasSet) {
  EXPECT_FALSE(Orm::threadSafePtrs());
  Orm::threadSafePtrsIs(true);
  EXPECT_TRUE(Orm::threadSafePtrs());
  Orm::threadSafePtrsIs(false);
  EXPECT_FALSE(Orm::threadSafePtrs());
}

}  // namespace
