// Walks of a collection, which may change meanwhile.

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Orm/Collection.h"
#include "Test/Orm/Things.h"

namespace {

using Orm::String;
using OrmTest::fill;
using OrmTest::nameOf;
using OrmTest::Thing;
using OrmTest::Things;
using OrmTest::walked;

/// Walks of 5 members (no index) and of 60 (an index), with changes meanwhile.
class CollectionWalkTest : public testing::TestWithParam<int> {
 protected:
  void SetUp() override { fill(things_, GetParam()); }

  /// Walks, and calls change(number) with the number of each member that is visited.
  template <class Change>
  std::vector<int> walk(Change&& change) {
    std::vector<int> visited;
    things_.walk([&](const Thing& thing) {
      visited.push_back(std::stoi(thing.name().substr(6).str()));
      change(visited.back());
    });
    return visited;
  }

  std::vector<int> numbers(int from, int to) const {
    std::vector<int> all;
    for (int number = from; number < to; ++number) all.push_back(number);
    return all;
  }

  const int count_ = GetParam();
  Things things_;
};

INSTANTIATE_TEST_SUITE_P(Collection, CollectionWalkTest, testing::Values(5, 8, 9, 60),
                         testing::PrintToStringParamName());

TEST_P(CollectionWalkTest, CurrentMemberRemoved_IsAliveWhileItIsVisited) {
  things_.walk([&](const Thing& thing) {
    const String name = thing.name();
    things_.take(name);
    EXPECT_EQ(thing.name(), name);
    EXPECT_FALSE(things_.has(name));
  });
  EXPECT_TRUE(things_.empty());
}

TEST_P(CollectionWalkTest, EarlierMemberRemoved_EachOfTheOthersIsVisitedOnce) {
  EXPECT_EQ(walk([&](int number) { things_.take(nameOf(number - 1)); }), numbers(0, count_));
  EXPECT_EQ(things_.size(), 1U);
}

TEST_P(CollectionWalkTest, LaterMemberRemoved_IsNotVisited) {
  std::vector<int> expected;
  for (int number = 0; number < count_; number += 2) expected.push_back(number);
  EXPECT_EQ(walk([&](int number) { things_.take(nameOf(number + 1)); }), expected);
  EXPECT_EQ(things_.size(), expected.size());
}

TEST_P(CollectionWalkTest, LastMemberRemovedByTheFirst_IsNotVisited) {
  EXPECT_EQ(walk([&](int) { things_.take(nameOf(count_ - 1)); }), numbers(0, count_ - 1));
}

TEST_P(CollectionWalkTest, NewMembers_AreNotVisitedButThereAfterwards) {
  EXPECT_EQ(walk([&](int number) { things_.insert(Orm::make<Thing>(nameOf(1000 + number))); }),
            numbers(0, count_));
  EXPECT_EQ(things_.size(), 2U * static_cast<unsigned>(count_));
  for (int number = 0; number != count_; ++number) {
    EXPECT_TRUE(things_.has(nameOf(number)));
    EXPECT_TRUE(things_.has(nameOf(1000 + number)));
  }
}

TEST_P(CollectionWalkTest, MemberReplacedUnderItsKey_TheNewOneIsNotVisited) {
  std::vector<int> expected{0};
  for (int number = 3; number < count_; ++number) expected.push_back(number);
  EXPECT_EQ(walk([&](int number) {
              if (number != 0) return;
              for (const int later : {1, 2}) {
                things_.take(nameOf(later));
                things_.insert(Orm::make<Thing>(nameOf(later)));
              }
            }),
            expected);
  EXPECT_EQ(things_.size(), static_cast<unsigned>(count_));
}

TEST_P(CollectionWalkTest, EverythingCleared_EndsTheWalkAndLeavesAnEmptyCollection) {
  EXPECT_EQ(walk([&](int number) {
              if (number == 2) things_.clear();
              EXPECT_EQ(things_.has(nameOf(number)), number < 2);
            }),
            numbers(0, 3));
  EXPECT_TRUE(things_.empty());
  EXPECT_EQ(Kobble::liveObjects(), 0U);
  EXPECT_EQ(Kobble::bytesInUse(), 0U);
}

TEST_P(CollectionWalkTest, EverythingClearedAndFilledAnew_TheNewMembersAreNotVisited) {
  EXPECT_EQ(walk([&](int number) {
              if (number != 1) return;
              things_.clear();
              fill(things_, 30);
              EXPECT_EQ(things_.size(), 30U);
              EXPECT_TRUE(things_.has(nameOf(29)));
              EXPECT_TRUE(things_.take(nameOf(29)));
            }),
            numbers(0, 2));
  EXPECT_EQ(things_.size(), 29U);
  int next = 0;
  for (const auto& thing : things_) EXPECT_EQ(thing->name(), nameOf(next++));
  EXPECT_EQ(next, 29);
}

TEST_P(CollectionWalkTest, MembersTakenOneByOneDuringTheWalk_CanComeAnew) {
  EXPECT_EQ(walk([&](int number) {
              if (number != 0) return;
              for (int each = 0; each != count_; ++each) things_.take(nameOf(each));
              EXPECT_TRUE(things_.empty());
              EXPECT_TRUE(walked(things_).empty());
              fill(things_, count_);
            }),
            numbers(0, 1));
  EXPECT_EQ(things_.size(), static_cast<unsigned>(count_));
}

TEST_P(CollectionWalkTest, NestedWalks_EachVisitsWhatIsThereWhenItBegins) {
  std::vector<std::size_t> inner;
  EXPECT_EQ(walk([&](int number) {
              things_.take(nameOf(number));
              things_.insert(Orm::make<Thing>(nameOf(1000 + number)));
              inner.push_back(walked(things_).size());
              things_.walk([&](const Thing&) {
                things_.take(nameOf(2000 + number));
                things_.insert(Orm::make<Thing>(nameOf(2000 + number)));
              });
              things_.take(nameOf(2000 + number));
            }),
            numbers(0, count_));
  EXPECT_EQ(inner, std::vector<std::size_t>(static_cast<std::size_t>(count_),
                                            static_cast<std::size_t>(count_)));
  int next = 1000;
  for (const auto& thing : things_) EXPECT_EQ(thing->name(), nameOf(next++));
}

TEST_P(CollectionWalkTest, ClearedInANestedWalk_BothWalksEnd) {
  EXPECT_EQ(walk([&](int) { things_.walk([&](const Thing&) { things_.clear(); }); }),
            numbers(0, 1));
  EXPECT_TRUE(things_.empty());
}

TEST_P(CollectionWalkTest, AnExceptionEndsTheWalkAndLeavesTheCollectionUsable) {
  EXPECT_THROW(walk([&](int number) {
                 things_.take(nameOf(number));
                 if (number == 2) throw 1;
               }),
               int);
  EXPECT_EQ(walk([](int) {}), numbers(3, count_));
  fill(things_, 3);
  EXPECT_EQ(things_.size(), static_cast<unsigned>(count_));
}

/// A thing that does what the test says when it goes.
class LastWill : public Thing {
 public:
  LastWill(String name, std::function<void()> will)
      : Thing(std::move(name)), will_(std::move(will)) {}
  ~LastWill() override { will_(); }

 private:
  std::function<void()> will_;
};

TEST_P(CollectionWalkTest, AMemberThatGoesChangesTheCollectionWhileItIsCleared) {
  for (const bool duringAWalk : {false, true}) {
    Things things;
    for (int number = 0; number != count_; ++number) {
      things.insert(Orm::make<LastWill>(nameOf(number), [&things, number] {
        things.take(nameOf(number + 1));
        EXPECT_FALSE(things.has(nameOf(number)));
        things.insert(Orm::make<Thing>(nameOf(1000 + number)));
      }));
    }
    if (duringAWalk) {
      things.walk([&](const Thing&) {
        things.clear();
        EXPECT_EQ(things.size(), static_cast<unsigned>(count_ - 1)) << "the visited one is held";
        EXPECT_TRUE(things.has(nameOf(1001)));
      });
    } else {
      things.clear();
    }
    EXPECT_EQ(things.size(), static_cast<unsigned>(count_)) << "what came when the others went";
    for (const auto& thing : things) {
      EXPECT_EQ(things.find(thing->name()), thing.get());
      EXPECT_GE(std::stoi(thing->name().substr(6).str()), 1000);
    }
    for (int number = 0; number != count_; ++number) EXPECT_FALSE(things.has(nameOf(number)));
    things.clear();
    EXPECT_TRUE(things.empty());
  }
}

}  // namespace
