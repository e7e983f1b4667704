#include <gtest/gtest.h>

#include "Controllerdb/ServiceConfigDirSm/PublishDirSm.h"
#include "Controllerdb/ServiceConfigDirSm/ServicePublishConfigSm.h"
#include "Test/Support/PublishFixture.h"
#include "Test/Support/Recorder.h"

namespace {

using namespace Controller;
using Orm::Ptr;
using Orm::String;
using testing::ElementsAre;

constexpr const char* kDir = "/controller/perSwitch";

class PublishDirSmTest : public Support::PublishFixture {
 protected:
  PublishDirSmTest() { startConfig(); }

  ServicePublishGroupConfig& group(const String& service = kService) const {
    return publisher(service).group("default");
  }
  Ptr<PublishDir> dirIs(const String& service = kService) const {
    return group(service).publishDirIs(kDir, "Topology::Mine", "remote/mine");
  }
  PublishRegistryEntry* entry() const { return registry()->publishEntry(kDir); }
  PublishDirSm* machine(const String& service = kService) const {
    return publishConfigSm(service)->publishGroupSm().find("default")->publishDirSm().find(kDir);
  }
};

TEST_F(PublishDirSmTest, TheEntryIsCreatedEmpty_AndFilledInTheSamePass) {
  auto dir = Orm::make<PublishDir>(kDir, "Topology::Mine", "remote/mine");
  dir->readyToPublishIs(true);
  std::vector<std::string> seen;
  const Support::Recorder created(registry(), [&](Orm::AttributeId attribute, const Orm::Key&) {
    if (attribute != MountsRegistry::Attr::publishEntry) return;
    seen.push_back(entry()->remotePath().str() + (entry()->readyToPublish() ? "ready" : ""));
  });
  traceIs(8);
  group().publishDirIs(dir);
  EXPECT_THAT(seen, ElementsAre(""));
  EXPECT_EQ(entry()->remotePath(), "remote/mine");
  EXPECT_TRUE(entry()->readyToPublish());
  expectTrace(8, std::string("PublishDirSm::handleInitialized ") + kDir);
  expectTrace(8, std::string("PublishDirSm::handlePublishDir ") + kDir);
  expectTrace(8, std::string("PublishDirSm::handleReadyToPublish ") + kDir);
}

TEST_F(PublishDirSmTest, TheEntryFollowsTheDirectorysReadiness) {
  const auto dir = dirIs();
  EXPECT_FALSE(entry()->readyToPublish());
  dir->readyToPublishIs(true);
  EXPECT_TRUE(entry()->readyToPublish());
  dir->readyToPublishIs(false);
  EXPECT_FALSE(entry()->readyToPublish());
}

TEST_F(PublishDirSmTest, AnotherRemotePath_ReachesTheEntryWithTheNextReadiness) {
  const auto dir = dirIs();
  dir->remotePathIs("remote/other");
  EXPECT_EQ(entry()->remotePath(), "remote/mine");
  dir->readyToPublishIs(true);
  EXPECT_EQ(entry()->remotePath(), "remote/other");
}

TEST_F(PublishDirSmTest, ADirectoryThatWasIgnored_StillOverwritesTheOtherPublishersEntry) {
  const auto first = dirIs("Routing");
  first->readyToPublishIs(true);
  const auto second = group().publishDirIs(kDir, "Topology::Mine", "remote/second");
  EXPECT_EQ(entry()->serviceName(), "Routing");
  EXPECT_EQ(entry()->remotePath(), "remote/second");
  EXPECT_FALSE(entry()->readyToPublish());
  second->readyToPublishIs(true);
  EXPECT_TRUE(entry()->readyToPublish());
}

TEST_F(PublishDirSmTest, WithoutAnEntry_ReadinessChangesNothing) {
  const auto dir = dirIs();
  registry()->publishEntryDel(kDir);
  dir->readyToPublishIs(true);
  EXPECT_FALSE(entry());
}

TEST_F(PublishDirSmTest, ADirectoryThatItsGroupNoLongerHas_IsNotAddedAgain) {
  const auto dir = dirIs();
  PublishDirSm* const dirSm = machine();
  registry()->publishEntryDel(kDir);
  dirSm->handlePublishDir();
  EXPECT_TRUE(entry());
  dirSm->parent()->hasNotificationActiveIs(false);
  registry()->publishEntryDel(kDir);
  group().publishDirDel(kDir);
  dirSm->handlePublishDir();
  dirSm->handleReadyToPublish();
  EXPECT_FALSE(entry());
}

TEST_F(PublishDirSmTest, InitializedOnce_ItDoesNotBeginAgain) {
  dirIs();
  EXPECT_TRUE(machine()->initialized());
  EXPECT_EQ(machine()->path(), kDir);
  traceIs(8);
  machine()->handleInitialized();
  EXPECT_THAT(traced(8), ElementsAre(std::string("PublishDirSm::handleInitialized ") + kDir));
}

TEST_F(PublishDirSmTest, TheMachineGoesWithTheGate_AndComesBackWithIt) {
  const auto dir = dirIs();
  leaderIs("gen-2");
  EXPECT_FALSE(machine());
  EXPECT_FALSE(entry());
  EXPECT_EQ(dir->notifieeCount(), 0U);
  dir->readyToPublishIs(true);
  leaderIs("gen-1");
  ASSERT_TRUE(machine());
  EXPECT_EQ(machine()->publishDir(), dir);
  EXPECT_TRUE(entry()->readyToPublish());
}

TEST_F(PublishDirSmTest, DoCleanup_RemovesTheEntryOnce) {
  const auto dir = dirIs();
  const Ptr<PublishDirSm> dirSm(machine());
  dirSm->doCleanup();
  EXPECT_FALSE(entry());
  registry()->publishEntryIs(kDir, "remote", "Type", true, "Routing", nullptr, nullptr);
  dirSm->doCleanup();
  ASSERT_TRUE(entry());
  dir->readyToPublishIs(true);
  EXPECT_FALSE(entry()->readyToPublish());
}

TEST_F(PublishDirSmTest, ADirectoryThatIsRemovedByWhomItsEntryIsTold_LeavesNothing) {
  const Support::Recorder remover(registry(), [this](Orm::AttributeId attribute, const Orm::Key&) {
    if (attribute == MountsRegistry::Attr::publishEntry) group().publishDirDel(kDir);
  });
  dirIs();
  EXPECT_FALSE(machine());
  EXPECT_FALSE(entry());
}

TEST_F(PublishDirSmTest, AMachineWhoseNotificationIsOff_SeesNothing) {
  const auto dir = dirIs();
  machine()->hasNotificationActiveIs(false);
  dir->readyToPublishIs(true);
  EXPECT_FALSE(entry()->readyToPublish());
}

}  // namespace
