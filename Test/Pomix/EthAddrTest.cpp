#include <gtest/gtest.h>

#include <set>

#include "Platform/Pomix/EthAddr.h"

namespace {

using Pomix::EthAddr;

std::string textOf(const EthAddr& address) {
  std::string text;
  address.appendTo(text);
  return text;
}

TEST(EthAddrTest, Parse_ReadsEitherCaseAndWritesLowerCase) {
  const auto address = EthAddr::parse("0A:1b:2C:3d:4E:5f");
  ASSERT_TRUE(address);
  EXPECT_EQ(address->value(), 0x0a1b2c3d4e5fU);
  EXPECT_EQ(textOf(*address), "0a:1b:2c:3d:4e:5f");
}

TEST(EthAddrTest, Parse_TakesNothingButAWholeAddress) {
  for (const char* text :
       {"", "00", "00:00:00:00:00", "00:00:00:00:00:0", "00:00:00:00:00:000",
        "00:00:00:00:00:00:", "00:00:00:00:00:00:00", ":00:00:00:00:00:0", "00-00-00-00-00-00",
        "00:00:00:00:00:0g", "g0:00:00:00:00:00", " 0:00:00:00:00:00", "00:00:00:00:00 00",
        "0000.0000.0000aaa", "+0:00:00:00:00:00", "0x:00:00:00:00:00"}) {
    EXPECT_FALSE(EthAddr::parse(text)) << text;
  }
}

TEST(EthAddrTest, FromValue_TakesTheLowestSixBytes) {
  EXPECT_EQ(textOf(EthAddr::fromValue(0xffff'0102'0304'0506U)), "01:02:03:04:05:06");
  EXPECT_EQ(EthAddr::fromValue(0xffff'0102'0304'0506U).value(), 0x0102'0304'0506U);
  EXPECT_EQ(textOf(EthAddr()), "00:00:00:00:00:00");
}

TEST(EthAddrTest, Comparison_FollowsTheBytes) {
  const EthAddr low = EthAddr::fromValue(0x00ff'ffff'ffffU);
  const EthAddr high = EthAddr::fromValue(0x0100'0000'0000U);
  EXPECT_LT(low, high);
  EXPECT_GT(high, low);
  EXPECT_EQ(low, EthAddr::fromValue(0x00ff'ffff'ffffU));
  EXPECT_NE(low, high);
}

TEST(EthAddrTest, Comparison_SeesEachByte) {
  const EthAddr none;
  for (unsigned byte = 0; byte != 6; ++byte) {
    const EthAddr one = EthAddr::fromValue(std::uint64_t{0x80} << byte * 8);
    EXPECT_NE(none, one) << byte;
    EXPECT_LT(none, one) << byte;
    EXPECT_EQ(one, EthAddr::fromValue(one.value())) << byte;
  }
}

/// How many of 2048 places a thousand addresses take, `distance` apart. By chance they are 790.
std::size_t placesTaken(std::uint64_t first, std::uint32_t distance) {
  std::set<std::uint32_t> places;
  for (std::uint64_t number = 0; number != 1000; ++number) {
    // What tables begin their searches with.
    places.insert(EthAddr::fromValue(first + number * distance).hash() >> 16 & 0x7ff);
  }
  return places.size();
}

TEST(EthAddrTest, Hash_SpreadsAddressesAtRegularDistances) {
  for (const std::uint32_t distance :
       {1U,  2U,  3U,   4U,   5U,   7U,   8U,    10U,   16U,   32U,
        48U, 64U, 100U, 128U, 256U, 512U, 1000U, 1024U, 4096U, 65536U}) {
    EXPECT_GT(placesTaken(0x001c'7300'0000U, distance), 600U) << distance;
    EXPECT_GT(placesTaken(0x0200'0000'0000U, distance), 600U) << distance;
    EXPECT_GT(placesTaken(0x444c'a812'3456U, distance), 600U) << distance;
  }
  EXPECT_EQ(EthAddr::fromValue(7).hash(), EthAddr::fromValue(7).hash());
}

}  // namespace
