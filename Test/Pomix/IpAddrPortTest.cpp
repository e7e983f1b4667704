#include <gtest/gtest.h>

#include "Platform/Pomix/IpAddrPort.h"

namespace {

using Pomix::IpAddr;
using Pomix::IpAddrPort;

template <class T>
std::string textOf(const T& value) {
  std::string text;
  value.appendTo(text);
  return text;
}

IpAddr v6(std::uint8_t first, std::uint8_t last) {
  std::array<std::uint8_t, 16> bytes{};
  bytes[0] = first;
  bytes[1] = 0x01;
  bytes[15] = last;
  return IpAddr::fromV6(bytes);
}

TEST(IpAddrTest, Version4_IsDottedDecimal) {
  const IpAddr address = IpAddr::fromV4(0x0aff0001U);
  EXPECT_TRUE(address.isV4());
  EXPECT_EQ(textOf(address), "10.255.0.1");
}

TEST(IpAddrTest, Version6_IsEightGroups) {
  const IpAddr address = v6(0xfd, 0xab);
  EXPECT_FALSE(address.isV4());
  EXPECT_EQ(textOf(address), "fd01:0:0:0:0:0:0:ab");
  EXPECT_EQ(textOf(IpAddr()), "0:0:0:0:0:0:0:0");
}

TEST(IpAddrTest, Version4_IsItsMappedVersion6) {
  std::array<std::uint8_t, 16> bytes{};
  bytes[10] = bytes[11] = 0xff;
  bytes[12] = 10;
  bytes[15] = 9;
  EXPECT_EQ(IpAddr::fromV6(bytes), IpAddr::fromV4(0x0a000009U));
  EXPECT_TRUE(IpAddr::fromV6(bytes).isV4());
  bytes[11] = 0;
  EXPECT_FALSE(IpAddr::fromV6(bytes).isV4());
}

TEST(IpAddrPortTest, Text_PutsVersion6InBrackets) {
  EXPECT_EQ(textOf(IpAddrPort(IpAddr::fromV4(0x01020304U), 65535)), "1.2.3.4:65535");
  EXPECT_EQ(textOf(IpAddrPort(v6(0xfd, 1), 80)), "[fd01:0:0:0:0:0:0:1]:80");
}

TEST(IpAddrPortTest, Comparison_IsByAddressThenPort) {
  const IpAddr low = IpAddr::fromV4(1);
  const IpAddr high = IpAddr::fromV4(2);
  EXPECT_LT(IpAddrPort(low, 9), IpAddrPort(high, 1));
  EXPECT_LT(IpAddrPort(low, 1), IpAddrPort(low, 9));
  EXPECT_EQ(IpAddrPort(low, 9), IpAddrPort(low, 9));
  EXPECT_EQ(IpAddrPort(low, 9).hash(), IpAddrPort(low, 9).hash());
  EXPECT_NE(IpAddrPort(low, 9).hash(), IpAddrPort(low, 8).hash());
  EXPECT_NE(IpAddrPort(low, 9).hash(), IpAddrPort(high, 9).hash());
}

}  // namespace
