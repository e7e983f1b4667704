#include <gtest/gtest.h>

#include "Platform/NboAttrLog/ConnectionDir.h"

namespace Orm::NboAttrLog {
namespace {

class ConnectionDirTest : public testing::Test {
 protected:
  ~ConnectionDirTest() override { ConnectionDir::instanceDel(); }
};

TEST_F(ConnectionDirTest, Instance_IsMadeEmptyAndStaysUntilItIsDropped) {
  const Ptr<ConnectionDir> first = ConnectionDir::instance();
  EXPECT_TRUE(first->connection().empty());
  first->connectionIs("standby");
  EXPECT_EQ(ConnectionDir::instance(), first);
  ConnectionDir::instanceDel();
  EXPECT_TRUE(ConnectionDir::instance()->connection().empty());
}

TEST_F(ConnectionDirTest, Connections_ComeOnceAndGo) {
  const auto dir = ConnectionDir::instance();
  const auto standby = dir->connectionIs("standby");
  EXPECT_EQ(standby->name(), "standby");
  EXPECT_EQ(dir->connectionIs("standby"), standby);
  EXPECT_EQ(dir->connection("standby"), standby.get());
  dir->connectionDel("standby");
  EXPECT_EQ(dir->connection("standby"), nullptr);
  dir->connectionIs("a");
  dir->connectionIs("b");
  dir->connectionDelAll();
  EXPECT_TRUE(dir->connection().empty());
}

TEST_F(ConnectionDirTest, NewConnection_HasNeitherModeNorStatus) {
  const auto connection = ConnectionDir::instance()->connectionIs("standby");
  EXPECT_EQ(connection->mode(), Mode::none);
  EXPECT_EQ(connection->status(), nullptr);
  connection->statusIs(make<ConnectionStatus>());
  EXPECT_FALSE(connection->status()->active());
}

TEST(ModeTest, Values_AreThoseOfThePlatform) {
  EXPECT_EQ(static_cast<int>(Mode::none), 0);
  EXPECT_EQ(static_cast<int>(Mode::active), 1);
  EXPECT_EQ(static_cast<int>(Mode::passive), 2);
}

}  // namespace
}  // namespace Orm::NboAttrLog
