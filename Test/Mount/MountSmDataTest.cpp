#include <gtest/gtest.h>

#include "Platform/Mount/MountSmData.h"

namespace Controller {
namespace {

const SystemId kSystem(Pomix::EthAddr::fromValue(7));

TEST(MountSmDataTest, Text_IsEmptyInMostRecords) {
  const auto record = Orm::make<MountSmData>(kSystem, "");
  EXPECT_EQ("", record->text());
  EXPECT_EQ(kSystem, record->systemId());
  EXPECT_EQ(MountState::unmounted, record->mountState());
}

TEST(MountSmDataTest, Text_IsKeptAsLongAsItsRecord) {
  const auto first = Orm::make<MountSmData>(kSystem, "first");
  auto second = Orm::make<MountSmData>(kSystem, "second");
  EXPECT_EQ("first", first->text());
  EXPECT_EQ("second", second->text());
  second = nullptr;
  EXPECT_EQ("first", first->text());
  // Whatever stands where a record with a text stood has none of it.
  for (int count = 0; count != 10; ++count) {
    const auto other = Orm::make<MountSmData>(kSystem, "");
    EXPECT_EQ("", other->text());
  }
}

}  // namespace
}  // namespace Controller
