#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <set>
#include <utility>
#include <vector>

#include "Platform/Kobble/Kobble.h"

namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

/// Whether the block may hold any object of `size` bytes.
bool aligned(const void* block, std::size_t size) {
  return reinterpret_cast<std::uintptr_t>(block) % (size % 16 == 0 ? 16 : 8) == 0;
}

/// Runs a test with slabs as the parameter says, and leaves them as they were.
class KobbleTest : public testing::TestWithParam<bool> {
 protected:
  void SetUp() override { Kobble::slabsEnabledIs(GetParam()); }
  void TearDown() override { Kobble::slabsEnabledIs(before_); }

 private:
  const bool before_ = Kobble::slabsEnabled();
};

INSTANTIATE_TEST_SUITE_P(Kobble, KobbleTest, testing::Bool(),
                         [](const auto& slabs) { return slabs.param ? "Slabs" : "NoSlabs"; });

TEST_P(KobbleTest, Allocate_BlocksOfAllSizesAreAlignedApartAndTheCallersOwn) {
  struct Block {
    unsigned char* bytes;
    std::size_t size;
  };
  std::vector<Block> blocks;
  for (std::size_t size = 1; size != 700; ++size) {
    auto* const bytes = static_cast<unsigned char*>(Kobble::allocate(size));
    ASSERT_TRUE(aligned(bytes, size)) << size;
    std::memset(bytes, static_cast<int>(size & 0xff), size);
    blocks.push_back({bytes, size});
  }
  for (const Block& block : blocks) {
    ASSERT_TRUE(std::all_of(block.bytes, block.bytes + block.size, [&](unsigned char byte) {
      return byte == (block.size & 0xff);
    })) << block.size;
    Kobble::deallocate(block.bytes, block.size);
  }
}

TEST_P(KobbleTest, BytesInUse_CountsWhatCallersAskedForAndWholeSlots) {
  const std::size_t before = Kobble::bytesInUse();
  void* const small = Kobble::allocate(17);
  const std::size_t one = GetParam() ? 24 : 17;
  EXPECT_EQ(Kobble::bytesInUse(), before + one);
  void* const large = Kobble::allocate(100'000);
  EXPECT_EQ(Kobble::bytesInUse(), before + 100'000 + one);
  Kobble::deallocate(small, 17);
  EXPECT_EQ(Kobble::bytesInUse(), before + 100'000);
  Kobble::deallocate(large, 100'000);
  EXPECT_EQ(Kobble::bytesInUse(), before);
}

TEST_P(KobbleTest, Allocate_NothingGivesABlockOfItsOwn) {
  void* const first = Kobble::allocate(0);
  void* const second = Kobble::allocate(0);
  EXPECT_NE(first, nullptr);
  EXPECT_NE(first, second);
  Kobble::deallocate(first, 0);
  Kobble::deallocate(second, 0);
  EXPECT_EQ(Kobble::bytesInUse(), 0U);
}

TEST_P(KobbleTest, Allocate_MoreThanAChunkOfOneClassGoesOn) {
  std::set<void*> blocks;
  constexpr std::size_t kBlocks = 3 * Kobble::kChunkSize / Kobble::kLargestSlot;
  for (std::size_t count = 0; count != kBlocks; ++count) {
    void* const block = Kobble::allocate(Kobble::kLargestSlot);
    std::memset(block, 0x5a, Kobble::kLargestSlot);
    ASSERT_TRUE(blocks.insert(block).second);
  }
  for (void* block : blocks) Kobble::deallocate(block, Kobble::kLargestSlot);
}

TEST_P(KobbleTest, Allocate_ManyChunksOfTwoClassesDoNotOverlap) {
  struct Block {
    std::uint32_t* words;
    std::size_t size;
  };
  constexpr std::size_t kBytes = std::size_t{20} << 20;
  std::vector<Block> blocks;
  std::size_t taken = 0;
  for (std::uint32_t number = 0; taken < kBytes; ++number) {
    const std::size_t size = number % 2 == 0 ? Kobble::kLargestSlot : 48;
    auto* const words = static_cast<std::uint32_t*>(Kobble::allocate(size));
    ASSERT_TRUE(aligned(words, size));
    std::fill_n(words, size / sizeof(std::uint32_t), number);
    blocks.push_back({words, size});
    taken += size;
  }
  std::uint32_t number = 0;
  for (const Block& block : blocks) {
    ASSERT_TRUE(std::all_of(block.words, block.words + block.size / sizeof(std::uint32_t),
                            [number](std::uint32_t word) { return word == number; }));
    ++number;
    Kobble::deallocate(block.words, block.size);
  }
}

TEST_P(KobbleTest, RandomUse_NoBlockIsDisturbedByAnother) {
  struct Block {
    unsigned char* bytes;
    std::size_t size;
    unsigned char fill;
  };
  std::mt19937 random(20);
  std::vector<Block> blocks;
  const std::size_t before = Kobble::bytesInUse();
  std::size_t inUse = 0;
  const auto counted = [](std::size_t size) {
    const bool inSlab = GetParam() && size <= Kobble::kLargestSlot;
    return inSlab ? (size + Kobble::kStep - 1) / Kobble::kStep * Kobble::kStep : size;
  };
  const auto give = [&](std::size_t at) {
    const Block block = blocks[at];
    ASSERT_TRUE(std::all_of(block.bytes, block.bytes + block.size,
                            [&](unsigned char byte) { return byte == block.fill; }));
    Kobble::deallocate(block.bytes, block.size);
    inUse -= counted(block.size);
    blocks[at] = blocks.back();
    blocks.pop_back();
  };
  for (int turn = 0; turn != 20'000; ++turn) {
    if (blocks.empty() || random() % 100 < 55) {
      const std::size_t size = 1 + random() % 600;
      auto* const bytes = static_cast<unsigned char*>(Kobble::allocate(size));
      blocks.push_back({bytes, size, static_cast<unsigned char>(random())});
      std::memset(bytes, blocks.back().fill, size);
      inUse += counted(size);
    } else {
      give(random() % blocks.size());
    }
    if (turn % 500 == 0) {
      ASSERT_EQ(Kobble::bytesInUse(), before + inUse);
    }
  }
  while (!blocks.empty()) give(blocks.size() - 1);
}

TEST_P(KobbleTest, SlabsEnabledIs_WithABlockInUse_StopsTheProcess) {
  void* const block = Kobble::allocate(24);
  EXPECT_DEATH(Kobble::slabsEnabledIs(!GetParam()),
               "Kobble: slabs cannot be switched while blocks are in use");
  Kobble::slabsEnabledIs(GetParam());  // what they are already is no switch
  EXPECT_EQ(Kobble::slabsEnabled(), GetParam());
  Kobble::deallocate(block, 24);
}

/// Tests of what only slabs do.
class KobbleSlabsTest : public testing::Test {
 protected:
  void SetUp() override { Kobble::slabsEnabledIs(true); }
  void TearDown() override { Kobble::slabsEnabledIs(before_); }

 private:
  const bool before_ = Kobble::slabsEnabled();
};

TEST_F(KobbleSlabsTest, Deallocate_TheNextBlockOfTheSameClassTakesTheSlot) {
  void* const block = Kobble::allocate(17);
  Kobble::deallocate(block, 17);
  void* const otherClass = Kobble::allocate(16);
  void* const sameClass = Kobble::allocate(24);
  EXPECT_NE(otherClass, block);
  EXPECT_EQ(sameClass, block);
  Kobble::deallocate(otherClass, 16);
  Kobble::deallocate(sameClass, 24);
}

TEST_F(KobbleSlabsTest, Allocate_TheBlockThatCameBackLastGoesFirst) {
  constexpr std::size_t kBlocks = 1000;
  std::mt19937 random(4);
  for (const std::size_t size : {8U, 16U, 40U, 56U, 64U, 72U, 256U, 512U}) {
    std::vector<void*> blocks(kBlocks);
    for (void*& block : blocks) block = Kobble::allocate(size);
    std::shuffle(blocks.begin(), blocks.end(), random);
    for (void* const block : blocks) {
      std::memset(block, 0xff, size);  // what was in it is not taken for what is kept there
      Kobble::deallocate(block, size);
    }
    // Some come and go where one page ends and another begins, too.
    for (std::size_t out = 1; out <= 70; ++out) {
      for (std::size_t at = 0; at != out; ++at) {
        ASSERT_EQ(Kobble::allocate(size), blocks[kBlocks - 1 - at]) << size;
      }
      for (std::size_t at = out; at-- != 0;) Kobble::deallocate(blocks[kBlocks - 1 - at], size);
    }
    for (std::size_t at = kBlocks; at-- != 0;) {
      ASSERT_EQ(Kobble::allocate(size), blocks[at]) << size;
    }
    for (void* const block : blocks) Kobble::deallocate(block, size);
  }
}

TEST_F(KobbleSlabsTest, Allocate_SlotsThatDivideACacheLineLieInOneEach) {
  for (const std::size_t size : {8U, 16U, 32U, 64U}) {
    std::vector<void*> blocks(3 * Kobble::kChunkSize / size);
    for (void*& block : blocks) {
      block = Kobble::allocate(size);
      ASSERT_EQ(reinterpret_cast<std::uintptr_t>(block) % size, 0U) << size;
    }
    for (void* const block : blocks) Kobble::deallocate(block, size);
  }
}

TEST_F(KobbleSlabsTest, Allocate_FreshSlotsLieOneBehindTheOther) {
  // Slots that were freed come first, in any order; then those of a fresh chunk.
  constexpr std::size_t kSize = 480;
  constexpr std::size_t kMostBlocks = 100'000;
  std::vector<char*> blocks{static_cast<char*>(Kobble::allocate(kSize))};
  std::size_t inARow = 1;
  while (inARow != Kobble::kChunkSize / kSize && blocks.size() != kMostBlocks) {
    blocks.push_back(static_cast<char*>(Kobble::allocate(kSize)));
    inARow = blocks.back() == blocks.end()[-2] + kSize ? inARow + 1 : 1;
  }
  EXPECT_LT(blocks.size(), kMostBlocks);
  for (char* block : blocks) Kobble::deallocate(block, kSize);
}

TEST_F(KobbleSlabsTest, Allocate_ABlockOfAFreedSlotMayBeWrittenWhole) {
  for (int round = 0; round != 3; ++round) {
    void* const block = Kobble::allocate(33);
    std::memset(block, 0xff, 40);  // the whole slot of its class
    Kobble::deallocate(block, 33);
  }
}

#if KOBBLE_POISONS
using KobbleDeathTest = KobbleTest;

INSTANTIATE_TEST_SUITE_P(Kobble, KobbleDeathTest, testing::Bool(),
                         [](const auto& slabs) { return slabs.param ? "Slabs" : "NoSlabs"; });

TEST_P(KobbleDeathTest, Deallocate_ReadingTheBlockAfterwardsIsReported) {
  auto* const block = static_cast<volatile char*>(Kobble::allocate(40));
  Kobble::deallocate(const_cast<char*>(block), 40);
  EXPECT_DEATH(static_cast<void>(block[8]),
               GetParam() ? "use-after-poison" : "heap-use-after-free");
}

TEST_F(KobbleSlabsTest, Allocate_ReadingTheFreeSlotBehindTheBlockIsReported) {
  constexpr std::size_t kSize = 16 * 21;
  auto* const block = static_cast<volatile char*>(Kobble::allocate(kSize));
  EXPECT_DEATH(static_cast<void>(block[kSize]), "use-after-poison");
  Kobble::deallocate(const_cast<char*>(block), kSize);
}
#endif

class Apple : private Kobble::Counted<Apple> {};
class Pear : private Kobble::Counted<Pear> {};
class SmallPear : public Pear {};
template <class T>
class Basket : private Kobble::Counted<Basket<T>> {
 public:
  T content{};
};

std::vector<std::pair<std::string, std::size_t>> counts() {
  std::vector<std::pair<std::string, std::size_t>> all;
  for (const auto& type : Kobble::liveTypes()) all.emplace_back(type.name, type.live);
  return all;
}

TEST(KobbleCountedTest, LiveTypes_TellsEachTypeThatLivesByName) {
  EXPECT_EQ(Kobble::liveObjects(), 0U);
  EXPECT_TRUE(Kobble::liveTypes().empty());
  {
    const SmallPear pear;
    const Apple first;
    const Apple second;
    EXPECT_THAT(counts(), ElementsAre(std::pair("(anonymous namespace)::Apple", 2U),
                                      std::pair("(anonymous namespace)::Pear", 1U)));
    EXPECT_EQ(Kobble::liveObjects(), 3U);
  }
  EXPECT_TRUE(Kobble::liveTypes().empty());
}

TEST(KobbleCountedTest, Copies_CountAsObjects) {
  const Apple first;
  Apple copy(first);
  EXPECT_EQ(Kobble::liveObjects(), 2U);
  copy = first;
  EXPECT_EQ(Kobble::liveObjects(), 2U);
  const Apple moved(std::move(copy));
  EXPECT_EQ(Kobble::liveObjects(), 3U);
}

TEST(KobbleCountedTest, Templates_AreCountedByTheirArguments) {
  const Basket<int> ints;
  const Basket<char> chars[2];
  EXPECT_THAT(counts(), UnorderedElementsAre(std::pair("(anonymous namespace)::Basket<int>", 1U),
                                             std::pair("(anonymous namespace)::Basket<char>", 2U)));
}

TEST(KobbleCountedTest, Counted_AddsNoBytes) {
  struct Plain {
    int content;
  };
  EXPECT_EQ(sizeof(Basket<int>), sizeof(Plain));
}

}  // namespace
