#include <gtest/gtest.h>

#include "Platform/Orm/Key.h"
#include "Platform/Orm/String.h"

namespace {

TEST(KeyTest, Empty_IsOfNoType) {
  const Orm::Key key;
  EXPECT_FALSE(key.is<int>());
  EXPECT_FALSE(key.is<Orm::String>());
}

TEST(KeyTest, Key_GivesWhatItWasMadeFromByType) {
  const Orm::String name("name");
  const Orm::Key key(name);
  EXPECT_TRUE(key.is<Orm::String>());
  EXPECT_FALSE(key.is<std::uint32_t>());
  EXPECT_EQ(&key.as<Orm::String>(), &name);
  const Orm::Key copy(key);
  EXPECT_EQ(&copy.as<Orm::String>(), &name);
}

TEST(KeyTest, Types_OfOneSizeAreToldApart) {
  const std::uint32_t number = 3;
  const Orm::Key key(number);
  EXPECT_TRUE(key.is<std::uint32_t>());
  EXPECT_FALSE(key.is<std::int32_t>());
}

TEST(KeyDeathTest, As_AnotherTypeStopsTheProcess) {
  const std::uint32_t number = 3;
  const Orm::Key key(number);
  EXPECT_DEATH(static_cast<void>(key.as<Orm::String>()), "assertion failed: is<T>\\(\\)");
  EXPECT_DEATH(static_cast<void>(Orm::Key().as<Orm::String>()), "assertion failed: is<T>\\(\\)");
}

}  // namespace
