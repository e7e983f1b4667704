// Collections against the plainest model there is, for thousands of random operations a seed.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Orm/Collection.h"

namespace {

using Orm::String;

/// Keys by number, of the three kinds that collections are used with.
struct StringKeys {
  using Key = String;
  static Key of(std::uint32_t number) { return String("/key/" + std::to_string(number)); }
};
struct NumberKeys {
  using Key = std::uint32_t;
  static Key of(std::uint32_t number) { return number; }
};
struct PoorKey {
  std::uint32_t number = 0;
  std::uint32_t hash() const { return number % 7 << 28 | number % 5; }  // 35 different ones
  friend bool operator==(const PoorKey&, const PoorKey&) = default;
};
struct PoorKeys {
  using Key = PoorKey;
  static Key of(std::uint32_t number) { return {number}; }
};

/// What a collection must hold: values by number, and the numbers in order of insertion.
class Model {
 public:
  struct Member {
    std::uint32_t number;
    std::uint64_t inserted;  // tells a member from a later one under the same key
    int value;
  };

  bool has(std::uint32_t number) const { return place_.contains(number); }
  int value(std::uint32_t number) const { return has(number) ? find(number)->value : 0; }

  bool set(std::uint32_t number, int value) {
    if (has(number)) return std::exchange(find(number)->value, value) != value;
    place_[number] = ++inserted_;
    members_.push_back({number, inserted_, value});
    return true;
  }
  bool erase(std::uint32_t number) {
    if (!has(number)) return false;
    members_.erase(find(number));
    place_.erase(number);
    return true;
  }
  void clear() {
    members_.clear();
    place_.clear();
  }
  bool stillThere(const Member& member) const {
    const auto found = place_.find(member.number);
    return found != place_.end() && found->second == member.inserted;
  }

  const std::vector<Member>& members() const { return members_; }

 private:
  std::vector<Member>::iterator find(std::uint32_t number) {
    const std::uint64_t inserted = place_.at(number);
    return std::lower_bound(
        members_.begin(), members_.end(), inserted,
        [](const Member& member, std::uint64_t at) { return member.inserted < at; });
  }
  std::vector<Member>::const_iterator find(std::uint32_t number) const {
    return const_cast<Model*>(this)->find(number);
  }

  std::map<std::uint32_t, std::uint64_t> place_;
  std::vector<Member> members_;
  std::uint64_t inserted_ = 0;
};

/// A collection and its model side by side.
template <class Keys>
class Duel {
 public:
  using Key = typename Keys::Key;

  Duel(std::uint32_t seed, std::uint32_t range) : random_(seed), range_(range) {}

  void operations(int count) {
    for (int turn = 0; turn != count && !testing::Test::HasFatalFailure(); ++turn) {
      // Phases of growth and of shrinking, so that all sizes are seen.
      growing_ = turn / 500 % 2 == 0;
      operation(0);
      if (turn % 50 == 0) compare();
    }
    compare();
  }

 private:
  void operation(int depth) {
    const std::uint32_t dice = pick(1000);
    const std::uint32_t number = pick(range_);
    if (dice < (growing_ ? 600U : 250U)) {
      const int value = static_cast<int>(pick(3));
      ASSERT_EQ(values_.set(Keys::of(number), value), model_.set(number, value));
    } else if (dice < 920) {
      ASSERT_EQ(values_.erase(Keys::of(number)), model_.erase(number));
    } else if (dice < 985) {
      const int* const found = values_.find(Keys::of(number));
      ASSERT_EQ(found != nullptr, model_.has(number));
      ASSERT_EQ(values_.value(Keys::of(number)), model_.value(number));
    } else if (dice < 998) {
      if (depth < 3) walk(depth + 1);
    } else {
      values_.clear();
      model_.clear();
    }
    ASSERT_EQ(values_.size(), model_.members().size());
  }

  /// Walks and does a few operations in some of the visits, walks among them.
  void walk(int depth) {
    const std::vector<Model::Member> atStart = model_.members();
    auto next = atStart.begin();
    values_.walk([&](const Key& key, int value) {
      while (next != atStart.end() && !model_.stillThere(*next)) ++next;
      ASSERT_NE(next, atStart.end());
      ASSERT_EQ(key, Keys::of(next->number));
      ASSERT_EQ(value, model_.value(next->number));
      const std::uint32_t dice = pick(16);
      if (dice == 0) {
        ASSERT_TRUE(values_.erase(key) && model_.erase(next->number));
      }
      if (dice < 2) {
        for (std::uint32_t count = pick(8); count != 0; --count) operation(depth);
      }
      ++next;
    });
    while (next != atStart.end() && !model_.stillThere(*next)) ++next;
    ASSERT_EQ(next, atStart.end());
  }

  void compare() {
    auto next = model_.members().begin();
    for (const auto& slot : values_) {
      ASSERT_NE(next, model_.members().end());
      ASSERT_EQ(slot.key, Keys::of(next->number));
      ASSERT_EQ(slot.value, next->value);
      ++next;
    }
    ASSERT_EQ(next, model_.members().end());
    for (std::uint32_t number = 0; number != range_; ++number) {
      ASSERT_EQ(values_.has(Keys::of(number)), model_.has(number)) << number;
    }
  }

  /// One of 0 to end - 1.
  std::uint32_t pick(std::uint32_t end) { return static_cast<std::uint32_t>(random_()) % end; }

  std::mt19937 random_;
  std::uint32_t range_;
  bool growing_ = true;
  Orm::ValueCollection<Key, int> values_;
  Model model_;
};

class CollectionRandomTest : public testing::TestWithParam<std::uint32_t> {
 protected:
  /// Few keys (with and without an index), and many.
  template <class Keys>
  void run() {
    for (const std::uint32_t range : {6U, 20U, 400U}) {
      Duel<Keys>(GetParam() * 1000 + range, range).operations(4'000);
    }
    EXPECT_EQ(Kobble::bytesInUse(), 0U);
  }
};

INSTANTIATE_TEST_SUITE_P(Seeds, CollectionRandomTest, testing::Range(1U, 7U),
                         testing::PrintToStringParamName());

TEST_P(CollectionRandomTest, StringKeys_AgreeWithTheModel) { run<StringKeys>(); }
TEST_P(CollectionRandomTest, NumberKeys_AgreeWithTheModel) { run<NumberKeys>(); }
TEST_P(CollectionRandomTest, KeysThatCollide_AgreeWithTheModel) { run<PoorKeys>(); }

}  // namespace
