#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <deque>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "Platform/Orm/String.h"
#include "Platform/Zimlog/Zimlog.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr Zimlog::Descriptor kPlain{"Test/Plain", 10, 5, "", "%s"};
constexpr Zimlog::Descriptor kSigned{"Test/Signed", 20, 5, "void f()", "a %s, b %s."};
constexpr Zimlog::Descriptor kBare{"Test/Bare", 30, 5, "void g()", "no arguments"};

enum class Colour { red, green };
void appendTo(std::string& out, Colour colour) { out += colour == Colour::red ? "red" : "green"; }

struct Point {
  int x;
  int y;
  void appendTo(std::string& out) const { out += std::to_string(x) + "/" + std::to_string(y); }
};

/// The texts of what is in the ring.
std::vector<std::string> texts() {
  std::vector<std::string> all;
  Zimlog::read([&](const Zimlog::Descriptor&, std::int64_t, std::string_view text) {
    all.emplace_back(text);
  });
  return all;
}

/// Leaves recording off.
class ZimlogTest : public testing::Test {
 protected:
  void TearDown() override {
    Zimlog::enabledIs(false);
    Zimlog::stampSourceIs(nullptr);
  }
};

TEST_F(ZimlogTest, Off_UntilItIsSwitchedOn) {
  EXPECT_FALSE(Zimlog::enabled());
  Zimlog::enabledIs(true);
  EXPECT_TRUE(Zimlog::enabled());
  EXPECT_THAT(texts(), IsEmpty());
  EXPECT_EQ(Zimlog::lost(), 0U);
}

TEST_F(ZimlogTest, Records_AreReadInOrderWithTheirDescriptors) {
  Zimlog::enabledIs(true);
  Zimlog::record(kSigned, 1, "two");
  Zimlog::record(kBare);
  Zimlog::record(kPlain, "three");
  std::vector<const Zimlog::Descriptor*> descriptors;
  Zimlog::read([&](const Zimlog::Descriptor& descriptor, std::int64_t stamp, std::string_view) {
    descriptors.push_back(&descriptor);
    EXPECT_EQ(stamp, 0) << "no source, no stamp";
  });
  EXPECT_THAT(texts(), ElementsAre("void f(): a 1, b two.", "void g(): no arguments", "three"));
  EXPECT_THAT(descriptors, ElementsAre(&kSigned, &kBare, &kPlain));
  EXPECT_THAT(texts(), testing::SizeIs(3)) << "reading takes nothing away";
}

TEST_F(ZimlogTest, Stamps_ComeFromTheirSource) {
  static std::int64_t now;
  Zimlog::enabledIs(true);
  Zimlog::stampSourceIs([] { return now; });
  for (const std::int64_t stamp : {std::int64_t{7}, std::int64_t{-1}, INT64_MAX}) {
    now = stamp;
    Zimlog::record(kBare);
  }
  std::vector<std::int64_t> stamps;
  Zimlog::read([&](const Zimlog::Descriptor&, std::int64_t stamp, std::string_view) {
    stamps.push_back(stamp);
  });
  EXPECT_THAT(stamps, ElementsAre(7, -1, INT64_MAX));
}

TEST_F(ZimlogTest, Arguments_OfAllKindsHaveTheirStringForm) {
  Zimlog::enabledIs(true);
  Zimlog::record(kPlain, std::numeric_limits<std::uint64_t>::max());
  Zimlog::record(kPlain, std::numeric_limits<std::int64_t>::min());
  Zimlog::record(kPlain, std::int8_t{-5});
  Zimlog::record(kPlain, std::uint16_t{65535});
  Zimlog::record(kPlain, true);
  Zimlog::record(kPlain, 'x');
  Zimlog::record(kPlain, 2.5);
  Zimlog::record(kPlain, std::string("string"));
  Zimlog::record(kPlain, std::string_view("view"));
  Zimlog::record(kPlain, Orm::String("shared"));
  Zimlog::record(kPlain, "");
  Zimlog::record(kPlain, Colour::green);
  Zimlog::record(kPlain, Point{1, 2});
  EXPECT_THAT(texts(),
              ElementsAre("18446744073709551615", "-9223372036854775808", "-5", "65535", "true",
                          "x", "2.5", "string", "view", "shared", "", "green", "1/2"));
}

TEST_F(ZimlogTest, Arguments_OfEachSizeAreKeptWhole) {
  Zimlog::enabledIs(true);
  for (std::size_t size = 0; size != 40; ++size) {
    Zimlog::record(kSigned, std::string(size, 'x'), size);
  }
  const auto all = texts();
  for (std::size_t size = 0; size != 40; ++size) {
    EXPECT_EQ(all[size],
              "void f(): a " + std::string(size, 'x') + ", b " + std::to_string(size) + ".");
  }
}

TEST_F(ZimlogTest, Arguments_AreCopiedWhenTheyAreRecorded) {
  Zimlog::enabledIs(true);
  std::string text("before");
  Zimlog::record(kPlain, text);
  text = "after!";
  EXPECT_THAT(texts(), ElementsAre("before"));
}

TEST_F(ZimlogTest, Arguments_ThatLookLikePlaceholdersAreText) {
  Zimlog::enabledIs(true);
  Zimlog::record(kSigned, "%s", "%s%s");
  EXPECT_THAT(texts(), ElementsAre("void f(): a %s, b %s%s."));
}

/// Counts how often it was put into words.
struct Plain {
  static constexpr bool kPlainValue = true;
  int number = 0;
  void appendTo(std::string& out) const {
    ++said;
    out += "plain " + std::to_string(number);
  }
  static inline int said = 0;
};

TEST_F(ZimlogTest, PlainValues_ArePutIntoWordsWhenTheyAreRead) {
  Zimlog::enabledIs(true);
  Plain value{7};
  Plain::said = 0;
  Zimlog::record(kSigned, value, "text");
  value.number = 8;
  EXPECT_EQ(Plain::said, 0);
  EXPECT_THAT(texts(), ElementsAre("void f(): a plain 7, b text."));
  EXPECT_EQ(Plain::said, 1);
}

TEST_F(ZimlogTest, SeveralArgumentsThatArePutIntoWords_KeepApart) {
  Zimlog::enabledIs(true);
  for (int turn = 0; turn != 3; ++turn) {
    Zimlog::record(kSigned, Point{turn, 2}, Point{3, 4});
  }
  EXPECT_THAT(texts(), ElementsAre("void f(): a 0/2, b 3/4.", "void f(): a 1/2, b 3/4.",
                                   "void f(): a 2/2, b 3/4."));
}

/// Records a message of its own while it is put into another.
struct Chatty {
  void appendTo(std::string& out) const {
    Zimlog::record(kPlain, "inner");
    out += "outer";
  }
};

TEST_F(ZimlogTest, ARecordWithinAnArgumentsStringForm_ComesFirst) {
  Zimlog::enabledIs(true);
  Zimlog::record(kPlain, Chatty());
  EXPECT_THAT(texts(), ElementsAre("inner", "outer"));
}

TEST_F(ZimlogTest, SwitchedOff_WhatWasRecordedCanBeRead) {
  Zimlog::enabledIs(true);
  Zimlog::record(kBare);
  Zimlog::enabledIs(false);
  EXPECT_FALSE(Zimlog::enabled());
  EXPECT_THAT(texts(), testing::SizeIs(1));
  Zimlog::enabledIs(true);
  EXPECT_THAT(texts(), IsEmpty());
}

TEST_F(ZimlogTest, Full_TheOldestGoAndAreCounted) {
  Zimlog::enabledIs(true, 1000);
  for (int number = 0; number != 100; ++number) Zimlog::record(kPlain, number);
  const auto all = texts();
  ASSERT_FALSE(all.empty());
  EXPECT_EQ(Zimlog::lost(), 100 - all.size());
  for (std::size_t at = 0; at != all.size(); ++at) {
    EXPECT_EQ(all[at], std::to_string(100 - all.size() + at));
  }
  EXPECT_GE(all.size(), 20U);  // a record of a number takes 40 bytes
  Zimlog::enabledIs(true, 1000);
  EXPECT_EQ(Zimlog::lost(), 0U);
}

TEST_F(ZimlogTest, Full_ARingOfWholeRecordsIsUsedToItsEnd) {
  Zimlog::enabledIs(true, 10 * 40);
  for (int number = 0; number != 35; ++number) {
    Zimlog::record(kPlain, number);
    ASSERT_EQ(texts().size(), static_cast<std::size_t>(std::min(number + 1, 10)));
  }
}

TEST_F(ZimlogTest, LargerThanTheRing_IsLostAndDisturbsNothing) {
  Zimlog::enabledIs(true, 200);
  Zimlog::record(kPlain, "first");
  Zimlog::record(kPlain, std::string(1000, 'x'));
  Zimlog::record(kPlain, "second");
  EXPECT_THAT(texts(), ElementsAre("first", "second"));
  EXPECT_EQ(Zimlog::lost(), 1U);
}

TEST_F(ZimlogTest, TinyRings_LoseWhatDoesNotFit) {
  for (std::size_t capacity = 0; capacity != 200; ++capacity) {
    Zimlog::enabledIs(true, capacity);
    for (int number = 0; number != 20; ++number) Zimlog::record(kPlain, number);
    const auto all = texts();
    ASSERT_EQ(all.size() + Zimlog::lost(), 20U) << capacity;
    if (!all.empty()) {
      ASSERT_EQ(all.back(), "19") << capacity;
    }
    ASSERT_EQ(all.empty(), capacity <= 32) << capacity;
  }
}

TEST_F(ZimlogTest, Placeholders_AreCounted) {
  static_assert(Zimlog::placeholders("") == 0);
  static_assert(Zimlog::placeholders("%s") == 1);
  static_assert(Zimlog::placeholders("a %s b %s%s %d %") == 3);
  std::string out("head ");
  int next = 0;
  Zimlog::fill(out, "<%s|%s>%", [&](std::string& to) { to += std::to_string(++next); });
  EXPECT_EQ(out, "head <1|2>%");
}

class ZimlogRandomTest : public testing::TestWithParam<std::uint32_t> {
 protected:
  void TearDown() override { Zimlog::enabledIs(false); }
};

INSTANTIATE_TEST_SUITE_P(Seeds, ZimlogRandomTest, testing::Range(1U, 9U),
                         testing::PrintToStringParamName());

TEST_P(ZimlogRandomTest, Ring_HoldsTheLatestRecordsAndNothingElse) {
  std::mt19937 random(GetParam());
  const auto pick = [&random](std::size_t end) { return random() % end; };
  for (int ring = 0; ring != 20; ++ring) {
    const std::size_t capacity = 100 + pick(3000);
    const std::size_t longest = 1 + pick(capacity);
    Zimlog::enabledIs(true, capacity);
    std::deque<std::string> recorded;
    std::uint64_t tooLarge = 0;
    for (int turn = 0; turn != 300; ++turn) {
      const std::string text =
          std::to_string(turn) + std::string(pick(longest), static_cast<char>('a' + turn % 26));
      const std::uint64_t lostBefore = Zimlog::lost();
      const auto before = texts();
      Zimlog::record(kPlain, text);
      const auto all = texts();
      // A record takes a head of 32 bytes, 4 for its argument's size and the text.
      const auto bytesOf = [](const std::string& one) { return (32 + 4 + one.size() + 7) / 8 * 8; };
      const std::size_t bytes = bytesOf(text);
      if (bytes > (capacity + 7) / 8 * 8) {
        ++tooLarge;
        ASSERT_EQ(all, before);
        ASSERT_EQ(Zimlog::lost(), lostBefore + 1);
        continue;
      }
      recorded.push_back(text);
      ASSERT_FALSE(all.empty());
      ASSERT_EQ(all.size() + Zimlog::lost(), recorded.size() + tooLarge);
      ASSERT_TRUE(std::equal(all.rbegin(), all.rend(), recorded.rbegin()));
      // Wrapping wastes less than a record at the ring's end, and some more go than must.
      std::size_t kept = 0;
      for (const std::string& each : all) kept += bytesOf(each);
      const std::size_t gone = recorded.size() - all.size();
      if (gone != 0) {
        const std::size_t oldestGone = bytesOf(recorded[gone - 1]);
        ASSERT_GT(kept + oldestGone + longest + 64 + 8, capacity);
      }
    }
  }
}

}  // namespace
