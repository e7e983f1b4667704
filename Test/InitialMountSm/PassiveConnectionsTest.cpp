#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Controllerdb/InitialMountSm/PassiveConnections.h"
#include "Platform/NboAttrLog/ConnectionDir.h"

namespace Controller {
namespace {

using Orm::NboAttrLog::Connection;
using Orm::NboAttrLog::ConnectionDir;
using Orm::NboAttrLog::ConnectionStatus;
using Orm::NboAttrLog::Mode;
using testing::ElementsAre;
using testing::IsEmpty;

class PassiveConnectionsTest : public testing::Test {
 protected:
  ~PassiveConnectionsTest() override { ConnectionDir::instanceDel(); }

  static Orm::Ptr<Connection> add(const char* name, Mode mode, bool active) {
    const auto connection = ConnectionDir::instance()->connectionIs(name);
    connection->modeIs(mode);
    connection->statusIs(Orm::make<ConnectionStatus>());
    connection->status()->activeIs(active);
    return connection;
  }
  static std::vector<std::string> passive() {
    std::vector<std::string> names;
    getPassiveConnectionsList(names);
    return names;
  }
};

TEST_F(PassiveConnectionsTest, NoConnection_GivesNone) { EXPECT_THAT(passive(), IsEmpty()); }

TEST_F(PassiveConnectionsTest, OnlyTheThirdModeCounts) {
  add("first", static_cast<Mode>(0), true);
  add("second", static_cast<Mode>(1), true);
  add("third", static_cast<Mode>(2), true);
  EXPECT_THAT(passive(), ElementsAre("third"));
}

TEST_F(PassiveConnectionsTest, OnlyAFlagThatIsSetCounts) {
  const auto connection = add("standby", Mode::passive, false);
  EXPECT_THAT(passive(), IsEmpty());
  connection->status()->activeIs(true);
  EXPECT_THAT(passive(), ElementsAre("standby"));
}

TEST_F(PassiveConnectionsTest, ConnectionWithoutStatus_IsSkipped) {
  add("standby", Mode::passive, true)->statusIs(nullptr);
  EXPECT_THAT(passive(), IsEmpty());
}

TEST_F(PassiveConnectionsTest, Names_AreAppendedInTheOrderOfTheDirectory) {
  add("z", Mode::passive, true);
  add("a", Mode::passive, true);
  add("m", Mode::passive, true);
  std::vector<std::string> names = {"what was there"};
  getPassiveConnectionsList(names);
  EXPECT_THAT(names, ElementsAre("what was there", "z", "a", "m"));
}

}  // namespace
}  // namespace Controller
