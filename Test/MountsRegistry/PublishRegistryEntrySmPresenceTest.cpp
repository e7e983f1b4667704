// How PublishRegistryEntrySm waits for a local entity, and what that means for its service's
// readiness.

#include <gtest/gtest.h>

#include "Controllerdb/MountsRegistry/PublishRegistryEntrySm.h"
#include "Test/Support/PublishFixture.h"

namespace {

using namespace Controller;
using Orm::kNever;
using Orm::Ptr;
using Orm::String;
using testing::ElementsAre;

constexpr const char* kMissing =
    "void Controller::PublishRegistryEntrySm::handleSwitchConnection(): Entity at "
    "/controller/config doesn't exist.";
constexpr const char* kChecked =
    "void Controller::PublishRegistryEntrySm::handleEntityPresenceCheckClock():  "
    "/controller/config";
constexpr const char* kPending =
    "void Controller::MountsRegistrySm::handleServicePublishReady(const String&): Publish entry "
    "/controller/config not yet processed";

class PublishRegistryEntrySmPresenceTest : public Support::PublishFixture {
 protected:
  Orm::Seconds checkAt(const String& path = kPath) const {
    return publishSm(path).entityPresenceCheckClockTimeMin();
  }
  void readyIs(bool ready) const { registry()->servicePublishReadyIs(kService, ready); }
};

// ---- the re-check

TEST_F(PublishRegistryEntrySmPresenceTest, AMissingEntityIsReportedAndLookedForInASecond) {
  startRegistry();
  traceIs(1);
  readyEntryIs(kPath);
  EXPECT_THAT(traced(1), testing::Contains(kMissing));
  EXPECT_EQ(checkAt(), now() + PublishRegistryEntrySm::kEntityCheckInterval);
}

TEST_F(PublishRegistryEntrySmPresenceTest, AnEntityThatIsThere_NeedsNoCheck) {
  startRegistry();
  entityIs(kPath);
  traceIs(1);
  readyEntryIs(kPath);
  EXPECT_EQ(checkAt(), kNever);
  expectNoTrace(1, kMissing);
}

TEST_F(PublishRegistryEntrySmPresenceTest, TheCheckIsRepeatedEachSecondWhileTheEntityIsMissing) {
  startRegistry();
  connect(kOne, {{kService, 3}});
  readyEntryIs(kPath);
  traceIs(5);
  run(3);
  EXPECT_EQ(timesTraced(5, kChecked), 3U);
  EXPECT_EQ(timesTraced(1, kMissing), 3U);
  EXPECT_EQ(checkAt(), now() + 1);
}

TEST_F(PublishRegistryEntrySmPresenceTest, AnEntityThatAppears_IsPublishedAtTheNextCheck) {
  startRegistry();
  connect(kOne, {{kService, 3}});
  readyEntryIs(kPath);
  run(7.5);
  entityIs(kPath);
  EXPECT_FALSE(isPublished(kOne, kPath));
  run(0.4);
  EXPECT_FALSE(isPublished(kOne, kPath));
  run(0.1);
  EXPECT_TRUE(isPublished(kOne, kPath));
  EXPECT_EQ(checkAt(), kNever);
  traceIs(5);
  run(10);
  EXPECT_THAT(traced(5), ElementsAre());
}

TEST_F(PublishRegistryEntrySmPresenceTest, AnEventThatFindsTheEntity_LeavesTheCheckArmed) {
  startRegistry();
  connect(kOne, {{kService, 3}});
  const auto entry = entryIs(kPath);
  run(0.5);
  entityIs(kPath);
  const Orm::Seconds armed = checkAt();
  entry->readyToPublishIs(true);
  EXPECT_TRUE(isPublished(kOne, kPath));
  EXPECT_EQ(checkAt(), armed);
  run(0.5);
  EXPECT_EQ(checkAt(), kNever);
}

TEST_F(PublishRegistryEntrySmPresenceTest, AnEventThatStillMissesTheEntity_PutsTheCheckOff) {
  startRegistry();
  const auto entry = entryIs(kPath);
  run(0.5);
  entry->readyToPublishIs(true);
  EXPECT_EQ(checkAt(), now() + 1);
}

TEST_F(PublishRegistryEntrySmPresenceTest, OneConnectionsDecision_ArmsNothing) {
  startRegistry();
  connect(kOne, {{kService, 3}});
  entityIs(kPath);
  readyEntryIs(kPath);
  entityDel(kPath);
  publishSm(kPath).handleSwitchConnection(systemId(kOne));
  EXPECT_EQ(checkAt(), kNever);
  publishSm(kPath).handleSwitchConnection();
  EXPECT_EQ(checkAt(), now() + 1);
}

TEST_F(PublishRegistryEntrySmPresenceTest, BindingTheClock_DecidesNothingBeforeTheMachineIsReady) {
  startRegistry();
  connect(kOne, {{kService, 3}});
  entityIs(kPath);
  readyIs(true);
  publishStatus()->servicePublishReadyDel(kService);
  traceIs(8);
  entryIs(kPath);
  const auto& lines = traces().lines();
  std::vector<std::string> texts;
  for (const auto& line : lines) texts.push_back(line.text);
  const std::string decideAll = std::string("PublishRegistryEntrySm::handleSwitchConnection ");
  ASSERT_GE(texts.size(), 9U);
  texts.resize(9);
  EXPECT_THAT(
      texts,
      ElementsAre(
          "MountsRegistrySm::handlePublishEntry:  Controller Path:" + std::string(kPath), kChecked,
          decideAll + kPath, "PublishRegistryEntrySm::handleSystemFilter " + std::string(kPath),
          decideAll + kPath, "PublishRegistryEntrySm::handleVersionFilter " + std::string(kPath),
          decideAll + kPath, "PublishRegistryEntrySm::handleInitialized", decideAll + kPath));
  EXPECT_FALSE(isMirroredReady(kService));
}

TEST_F(PublishRegistryEntrySmPresenceTest, HandleInitializedAgain_DisarmsAndDecidesAgain) {
  startRegistry();
  readyEntryIs(kPath);
  ASSERT_NE(checkAt(), kNever);
  entityIs(kPath);
  publishSm(kPath).handleInitialized();
  EXPECT_TRUE(publishSm(kPath).initialized());
  EXPECT_EQ(checkAt(), kNever);
}

TEST_F(PublishRegistryEntrySmPresenceTest, WithoutAClock_NothingIsLookedForAgain) {
  startRegistry();
  readyEntryIs(kPath);
  publishSm(kPath).entityPresenceCheckClockDel();
  EXPECT_EQ(clock()->armedTimers(), 0U);
  publishSm(kPath).handleSwitchConnection();
  run(2);
  publishSm(kPath).entityPresenceCheckClockIs(clock());
  EXPECT_EQ(checkAt(), now() + 1);
}

// ---- readiness

TEST_F(PublishRegistryEntrySmPresenceTest, ReadinessSetWhileAnEntryWaits_FollowsWhenItIsThere) {
  startRegistry();
  readyEntryIs(kPath);
  traceIs(5);
  readyIs(true);
  EXPECT_FALSE(isMirroredReady(kService));
  expectTrace(5, kPending);
  run(2.5);
  EXPECT_FALSE(isMirroredReady(kService));
  entityIs(kPath);
  run(0.5);
  EXPECT_TRUE(isMirroredReady(kService));
}

TEST_F(PublishRegistryEntrySmPresenceTest, ReadinessSetBeforeAnEntryWaits_Stays) {
  startRegistry();
  readyIs(true);
  ASSERT_TRUE(isMirroredReady(kService));
  readyEntryIs(kPath);
  run(2);
  EXPECT_TRUE(isMirroredReady(kService));
}

TEST_F(PublishRegistryEntrySmPresenceTest, ReadinessSetAfterAnEntryWaited_IsMirroredAtOnce) {
  startRegistry();
  readyEntryIs(kPath);
  entityIs(kPath);
  run(1);
  EXPECT_FALSE(isMirroredReady(kService));
  readyIs(true);
  EXPECT_TRUE(isMirroredReady(kService));
}

TEST_F(PublishRegistryEntrySmPresenceTest, TheLastOfSeveralWaitingEntries_CompletesTheReadiness) {
  startRegistry();
  readyEntryIs(kPath);
  readyEntryIs("/controller/second");
  readyIs(true);
  entityIs(kPath);
  run(1);
  EXPECT_FALSE(isMirroredReady(kService));
  entityIs("/controller/second");
  run(1);
  EXPECT_TRUE(isMirroredReady(kService));
}

TEST_F(PublishRegistryEntrySmPresenceTest, AnEntryThatIsRefusedByEveryoneIsProcessedAllTheSame) {
  startRegistry();
  connect(kOne, {{kService, 0}});
  entityIs(kPath);
  entryIs(kPath);
  readyIs(true);
  EXPECT_TRUE(isMirroredReady(kService));
}

TEST_F(PublishRegistryEntrySmPresenceTest, AWaitingEntryThatGoes_CompletesTheReadiness) {
  startRegistry();
  readyEntryIs(kPath);
  readyIs(true);
  ASSERT_FALSE(isMirroredReady(kService));
  registry()->publishEntryDel(kPath);
  EXPECT_TRUE(isMirroredReady(kService));
}

TEST_F(PublishRegistryEntrySmPresenceTest, AWaitingEntryThatGoes_LeavesTheOthersToWaitFor) {
  startRegistry();
  readyEntryIs("/controller/second");
  readyEntryIs(kPath);
  readyIs(true);
  registry()->publishEntryDel("/controller/second");
  EXPECT_FALSE(isMirroredReady(kService));
  EXPECT_EQ(clock()->armedTimers(), 1U);
}

TEST_F(PublishRegistryEntrySmPresenceTest, AnEntryThatGoesWithoutWaiting_AsksForNothing) {
  startRegistry();
  entityIs(kPath);
  readyEntryIs(kPath);
  readyIs(true);
  publishStatus()->servicePublishReadyDel(kService);
  registry()->publishEntryDel(kPath);
  EXPECT_FALSE(isMirroredReady(kService));
}

TEST_F(PublishRegistryEntrySmPresenceTest, ARegistryMachineThatGoes_CompletesNoReadiness) {
  startRegistry();
  readyEntryIs(kPath);
  readyIs(true);
  stopRegistry();
  EXPECT_FALSE(isMirroredReady(kService));
  EXPECT_EQ(clock()->armedTimers(), 0U);
  entityIs(kPath);
  startRegistry();
  EXPECT_TRUE(isMirroredReady(kService));
}

TEST_F(PublishRegistryEntrySmPresenceTest, ReadinessPresentAtTheStart_IsMirroredUnlessOneWaits) {
  entityIs(kPath);
  readyEntryIs(kPath);
  readyEntryIs("/controller/routes", "Routing");
  readyIs(true);
  registry()->servicePublishReadyIs("Routing", true);
  startRegistry();
  EXPECT_TRUE(isMirroredReady(kService));
  EXPECT_FALSE(isMirroredReady("Routing"));
  entityIs("/controller/routes");
  run(1);
  EXPECT_TRUE(isMirroredReady("Routing"));
}

}  // namespace
