#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Controllerdb/MountsRegistry/MountTimeoutLog.h"
#include "Controllerdb/ServiceConfigDirSm/ServiceConfigTrace.h"
#include "Test/Support/Captured.h"

namespace Controller {
extern const MountTimeoutLog mountsRegistryTimeoutLog;

namespace {

TEST(MountTimeoutLogTest, EachSourceDefinesTheSameMessage) {
  int defined = 0;
  for (const StructuredLog::LogHandle* handle : StructuredLog::logHandles()) {
    if (std::string_view(handle->id()) != "ZORB_MOUNT_TIMEOUT") continue;
    ++defined;
    EXPECT_EQ(3, handle->severity());
    EXPECT_STREQ("%s is unable to mount from %s %s.", handle->format());
    EXPECT_STREQ(
        "A mount request to synchronize state between ZORB and switch has timed out. The services "
        "that depend on the state can be dysfunctional.",
        handle->explanation());
    EXPECT_THAT(handle->recommendedAction(), testing::HasSubstr("contact"));
    EXPECT_THAT(handle->recommendedAction(), testing::HasSubstr("support"));
    EXPECT_STREQ(StructuredLog::kContactSupport, handle->recommendedAction());
  }
  EXPECT_GE(defined, 2);
  EXPECT_NE(&mountsRegistryTimeoutLog, &serviceConfigDirTimeoutLog);
}

TEST(MountTimeoutLogTest, Message_NamesWhoWhatAndWhich) {
  Support::CapturedLog log;
  mountsRegistryTimeoutLog.log("ZORB", "switch", "leaf-1");
  EXPECT_THAT(log.texts(), testing::ElementsAre("ZORB is unable to mount from switch leaf-1."));
}

TEST(TraceHandleTest, OnePerSourceWithItsName) {
  const Dualog::Handle* const registry = Dualog::handle("ControllerMountsRegistrySm");
  ASSERT_NE(nullptr, registry);
  EXPECT_STREQ("Controllerdb/MountsRegistry", registry->source());
  const Dualog::Handle* const config = Dualog::handle("ControllerServiceConfigDirSm");
  ASSERT_NE(nullptr, config);
  EXPECT_STREQ("Controllerdb/ServiceConfigDirSm", config->source());
  EXPECT_FALSE(registry->enabled(0));
}

}  // namespace
}  // namespace Controller
