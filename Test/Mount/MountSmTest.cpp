#include <gtest/gtest.h>

#include "Platform/Mount/MountSm.h"

namespace Controller {
namespace {

/// What a mount is asked for with, and the values that it refers to.
struct Asked {
  MountRequest request() const {
    return {.systemId = systemId,
            .connectionConfig = connectionConfig,
            .heartbeatConfig = heartbeatConfig,
            .remoteRoot = remoteRoot,
            .remotePath = path,
            .mountDir = dir,
            .mountName = name,
            .ormType = type,
            .mountFlags = flags,
            .retries = 0,
            .timeout = 0,
            .mountSmData = data};
  }

  SystemId systemId{Pomix::EthAddr::fromValue(1)};
  Orm::Ptr<ConnectionConfig const> connectionConfig;
  Orm::Ptr<Heartbeat::Config const> heartbeatConfig;
  Orm::String remoteRoot;
  Orm::String path = "a/b";
  Orm::Ptr<Fennix::Dir> dir = Orm::make<Fennix::Dir>();
  Orm::String name = "mount";
  Orm::String type = "T";
  Orm::String flags = "r";
  Orm::Ptr<MountSmData> data = Orm::make<MountSmData>(systemId, "");
};

TEST(MountSmTest, MountPath_IsTheNameInTheDirectory) {
  const Asked asked;
  EXPECT_EQ(asked.request().mountPath(), "/mount");
}

TEST(MountSmTest, WithoutAFactory_AMountGetsNoFurtherThanHavingBeenAsked) {
  const Asked asked;
  const auto mountSm = MountSm::MountSmIs(asked.request());
  mountSm->hasNotificationActiveIs(true);
  EXPECT_EQ(asked.data->mountState(), MountState::requested);
  mountSm->doRemount();
  mountSm->doStatePreservingUnmount();
  mountSm->doUnmount();
  mountSm->doCleanup();
  EXPECT_EQ(asked.data->mountState(), MountState::requested);
  EXPECT_TRUE(mountSm->pendingRequest());
}

TEST(MountSmTest, Factory_IsGivenBackWhenItIsReplaced) {
  class NoFactory final : public MountSm::Factory {
   public:
    Orm::Ptr<MountSm> mountSm(const MountRequest&) override { return nullptr; }
  } factory;
  EXPECT_EQ(MountSm::factoryIs(&factory), nullptr);
  const Asked asked;
  EXPECT_EQ(MountSm::MountSmIs(asked.request()), nullptr);
  EXPECT_EQ(MountSm::factoryIs(nullptr), &factory);
  EXPECT_NE(MountSm::MountSmIs(asked.request()), nullptr);
}

}  // namespace
}  // namespace Controller
