#include <gtest/gtest.h>

#include "Controllerdb/ServiceConfigDirSm/ServicePublishConfigSm.h"
#include "Test/Support/PublishFixture.h"
#include "Test/Support/Recorder.h"

namespace {

using namespace Controller;
using Orm::Ptr;
using Orm::String;

constexpr const char* kStale =
    "void Controller::ServicePublishConfigSm::handleLeaderGenId(): Stale leaderGenId, cleanup "
    "publishReady flag for Topology";

class ServicePublishConfigSmTest : public Support::PublishFixture {
 protected:
  ServicePublishConfigSmTest() { startConfig(); }

  bool hasEntry(const String& path = kPath) const { return registry()->publishEntry(path); }
  bool hasReadiness(const String& service = kService) const {
    return registry()->servicePublishReady().has(service);
  }
  bool readiness(const String& service = kService) const {
    return registry()->servicePublishReady().value(service);
  }
  /// A ready service with one path and one directory in the group "default".
  Support::PublishService readyPublisher() const {
    const auto service = publisher(kService);
    service.group("default").publishConfigIs(kPath, "remote/config", "Topology::Config");
    service.group("default").publishDirIs("/controller/perSwitch", "Topology::Mine", "remote/mine");
    service.config->publishReadyIs(true);
    return service;
  }
};

// ---- the generation gate

TEST_F(ServicePublishConfigSmTest, WithoutALeader_NothingIsPublished_NotEvenOfNoGeneration) {
  leaderIs("");
  const auto service = readyPublisher();
  ASSERT_EQ(service.config->genId(), "");
  EXPECT_FALSE(publishConfigSm(kService)->canPublish());
  EXPECT_FALSE(hasEntry());
  EXPECT_FALSE(hasReadiness());
}

TEST_F(ServicePublishConfigSmTest, TheGenerationCheckIsTraced) {
  const auto service = publisher(kService);
  traceIs(8);
  EXPECT_TRUE(publishConfigSm(kService)->canPublish());
  expectTrace(8,
              "ServicePublishConfigSm::canPublish can:1 publishConfig genId:gen-1 controller "
              "genId:gen-1");
  service.config->genIdIs("gen-0");
  expectTrace(8, "ServicePublishConfigSm::handleLeaderGenId gen-0");
  expectTrace(8,
              "ServicePublishConfigSm::canPublish can:0 publishConfig genId:gen-0 controller "
              "genId:gen-1");
}

TEST_F(ServicePublishConfigSmTest, ANewLeader_RemovesWhatWasWrittenUnderTheOldOne) {
  const auto service = readyPublisher();
  ASSERT_TRUE(hasEntry());
  ASSERT_TRUE(hasEntry("/controller/perSwitch"));
  ASSERT_TRUE(readiness());
  traceIs(5);
  leaderIs("gen-2");
  EXPECT_TRUE(registry()->publishEntry().empty());
  EXPECT_FALSE(hasReadiness());
  expectTrace(5, kStale);

  service.config->genIdIs("gen-2");
  EXPECT_TRUE(hasEntry());
  EXPECT_TRUE(hasEntry("/controller/perSwitch"));
  EXPECT_TRUE(readiness());
}

TEST_F(ServicePublishConfigSmTest, ALeaderThatComesBack_FindsEverythingAgain) {
  readyPublisher();
  leaderIs("gen-nobody-wrote");
  ASSERT_TRUE(registry()->publishEntry().empty());
  leaderIs("gen-1");
  EXPECT_EQ(registry()->publishEntry().size(), 2U);
  EXPECT_TRUE(readiness());
}

TEST_F(ServicePublishConfigSmTest, AReadinessDeclaredUnderAnotherGeneration_IsNotWritten) {
  const auto service = publisher(kService);
  service.config->genIdIs("gen-0");
  traceIs(8);
  service.config->publishReadyIs(true);
  EXPECT_FALSE(hasReadiness());
  expectTrace(8, "ServicePublishConfigSm::handlePublishReady: Topology");
  service.config->genIdIs("gen-1");
  EXPECT_TRUE(readiness());
}

TEST_F(ServicePublishConfigSmTest, AServiceThatIsNotReady_IsWrittenAsFalse) {
  const auto service = publisher(kService);
  EXPECT_TRUE(hasReadiness());
  EXPECT_FALSE(readiness());
  service.config->publishReadyIs(true);
  EXPECT_TRUE(readiness());
  service.config->publishReadyIs(false);
  EXPECT_TRUE(hasReadiness());
  EXPECT_FALSE(readiness());
}

// ---- readiness against the registry machine

TEST_F(ServicePublishConfigSmTest, WhenTheGateOpens_TheEntriesComeBeforeTheReadiness) {
  startRegistry();
  readyPublisher();
  const Support::Recorder mirrored(publishStatus());
  leaderIs("gen-2");
  leaderIs("gen-1");
  EXPECT_TRUE(readiness());
  // The entries' local entities are not there, so that the service is not ready either.
  EXPECT_FALSE(isMirroredReady(kService));
  EXPECT_EQ(mirrored.told(Controllerdb::PublishStatus::Attr::servicePublishReady), 0U);
  entityIs(kPath);
  entityIs("/controller/perSwitch", "Orm::Dir");
  run(1);
  EXPECT_TRUE(isMirroredReady(kService));
}

TEST_F(ServicePublishConfigSmTest, WhenTheGateCloses_EntriesThatWaitCompleteNoReadiness) {
  startRegistry();
  const auto service = readyPublisher();
  ASSERT_FALSE(isMirroredReady(kService));
  const Support::Recorder mirrored(publishStatus());
  leaderIs("gen-2");
  EXPECT_EQ(mirrored.told(), 0U);
  leaderIs("gen-1");
  service.config->genIdIs("gen-0");
  EXPECT_EQ(mirrored.told(), 0U);
  service.config->genIdIs("gen-1");
  publishConfigDir()->entityDel(kService);
  EXPECT_EQ(mirrored.told(), 0U);
}

TEST_F(ServicePublishConfigSmTest, WhetherTheRegistryMachineComesFirstOrLast_MakesNoDifference) {
  entityIs(kPath);
  entityIs("/controller/perSwitch", "Orm::Dir");
  connect(kOne, {{kService, 3}});
  readyPublisher();
  startRegistry();
  EXPECT_TRUE(isMirroredReady(kService));
  EXPECT_TRUE(isPublished(kOne, kPath));
  stopConfig();
  EXPECT_FALSE(isMirroredReady(kService));
  EXPECT_FALSE(isPublished(kOne, kPath));
  startConfig();
  EXPECT_TRUE(isMirroredReady(kService));
  EXPECT_TRUE(isPublished(kOne, kPath));
}

// ---- the service's name

TEST_F(ServicePublishConfigSmTest, WithoutAServiceName_NothingIsDoneUntilItComes) {
  const auto config = Orm::make<ServicePublishConfig>();
  config->genIdIs("gen-1");
  config->publishReadyIs(true);
  config->publishGroupConfigIs("default")->publishConfigIs(kPath, "remote", "Type");
  const auto status = Orm::make<ServicePublishStatus>();
  publishConfigDir()->entityIs("key", config);
  publishStatusDir()->entityIs("key", status);
  ASSERT_TRUE(publishConfigSm("key"));
  EXPECT_FALSE(publishConfigSm("key")->initialized());
  config->publishGroupConfigIs("second");
  leaderIs("gen-2");
  leaderIs("gen-1");
  EXPECT_TRUE(publishConfigSm("key")->publishGroupSm().empty());
  EXPECT_TRUE(status->servicePublishGroupStatus().empty());
  EXPECT_TRUE(registry()->publishEntry().empty());
  EXPECT_TRUE(registry()->servicePublishReady().empty());

  traceIs(8);
  config->serviceNameIs(kService);
  expectTrace(5,
              "void Controller::ServicePublishConfigSm::handleServiceName():  "
              "serviceName:Topology");
  expectTrace(8, "ServicePublishConfigSm::handleInitialized");
  EXPECT_TRUE(publishConfigSm("key")->initialized());
  EXPECT_EQ(publishConfigSm("key")->publishGroupSm().size(), 2U);
  ASSERT_TRUE(hasEntry());
  EXPECT_EQ(registry()->publishEntry(kPath)->serviceName(), kService);
  EXPECT_TRUE(readiness());
}

TEST_F(ServicePublishConfigSmTest, AServiceThatIsRenamed_LeavesNoReadinessUnderItsOldName) {
  const auto service = readyPublisher();
  service.config->serviceNameIs("Renamed");
  EXPECT_TRUE(readiness());
  service.config->publishReadyIs(false);
  EXPECT_FALSE(hasReadiness());
  EXPECT_TRUE(hasReadiness("Renamed"));
  service.config->serviceNameIs("Again");
  publishConfigDir()->entityDel(kService);
  EXPECT_TRUE(registry()->servicePublishReady().empty());
}

// ---- groups

TEST_F(ServicePublishConfigSmTest, AGroup_GetsAStatusAndAMachine) {
  const auto service = publisher(kService);
  traceIs(8);
  service.group("default");
  expectTrace(8, "ServicePublishConfigSm::handlePublishGroupConfig: Topology, default");
  ASSERT_TRUE(service.groupStatus("default"));
  EXPECT_EQ(static_cast<int>(service.groupStatus("default")->publishState()), 1);
  EXPECT_TRUE(publishConfigSm(kService)->publishGroupSm().has("default"));
}

TEST_F(ServicePublishConfigSmTest, AGroupNotifiedAgain_KeepsItsMachine) {
  const auto service = readyPublisher();
  const auto* const machine = publishConfigSm(kService)->publishGroupSm().find("default");
  publishConfigSm(kService)->handlePublishGroupConfig();
  publishConfigSm(kService)->handleInitialized();
  EXPECT_EQ(publishConfigSm(kService)->publishGroupSm().find("default"), machine);
  EXPECT_EQ(registry()->publishEntry().size(), 2U);
}

TEST_F(ServicePublishConfigSmTest, AGroupThatIsDeleted_TakesItsStatusAndAllItsEntriesWithIt) {
  const auto service = readyPublisher();
  service.group("other").publishConfigIs("/controller/other", "remote/other", "Type");
  service.config->publishGroupConfigDel("default");
  EXPECT_FALSE(service.groupStatus("default"));
  EXPECT_TRUE(service.groupStatus("other"));
  EXPECT_FALSE(hasEntry());
  EXPECT_FALSE(hasEntry("/controller/perSwitch"));
  EXPECT_TRUE(hasEntry("/controller/other"));
  EXPECT_EQ(publishConfigSm(kService)->publishGroupSm().size(), 1U);
}

TEST_F(ServicePublishConfigSmTest, AGroupOfAClosedGate_HasAStatusAndNoEntries) {
  leaderIs("gen-0");
  const auto service = readyPublisher();
  leaderIs("gen-2");
  service.group("late").publishConfigIs("/controller/late", "remote/late", "Type");
  EXPECT_TRUE(service.groupStatus("late"));
  EXPECT_TRUE(registry()->publishEntry().empty());
  service.config->publishGroupConfigDel("late");
  EXPECT_FALSE(service.groupStatus("late"));
  leaderIs("gen-0");
  EXPECT_TRUE(hasEntry());
  EXPECT_FALSE(hasEntry("/controller/late"));
}

// ---- the machine goes

TEST_F(ServicePublishConfigSmTest, AServiceWhoseConfigurationGoes_TakesEverythingWithIt) {
  const auto service = readyPublisher();
  traceIs(8);
  publishConfigDir()->entityDel(kService);
  EXPECT_FALSE(publishConfigSm(kService));
  EXPECT_TRUE(registry()->publishEntry().empty());
  EXPECT_FALSE(hasReadiness());
  EXPECT_TRUE(service.status->servicePublishGroupStatus().empty());
  expectTrace(8, "ServicePublishConfigSm::doCleanup Topology");
  service.config->publishReadyIs(false);
  service.group("default").publishConfigIs("/controller/second", "remote/second", "Type");
  leaderIs("gen-2");
  leaderIs("gen-1");
  EXPECT_TRUE(registry()->publishEntry().empty());
  EXPECT_FALSE(hasReadiness());
}

TEST_F(ServicePublishConfigSmTest, AServiceWhoseStatusGoes_TakesEverythingWithIt) {
  const auto service = readyPublisher();
  publishStatusDir()->entityDel(kService);
  EXPECT_FALSE(publishConfigSm(kService));
  EXPECT_TRUE(registry()->publishEntry().empty());
  EXPECT_FALSE(hasReadiness());
  EXPECT_TRUE(service.status->servicePublishGroupStatus().empty());
}

TEST_F(ServicePublishConfigSmTest, DoCleanup_MayBeRepeated) {
  readyPublisher();
  ServicePublishConfigSm& machine = *publishConfigSm(kService);
  machine.doCleanup();
  const Support::Recorder told(registry());
  machine.doCleanup();
  EXPECT_EQ(told.told(), 0U);
  EXPECT_FALSE(machine.initialized());
}

TEST_F(ServicePublishConfigSmTest, AMachineThatGoes_LeavesTheReadinessOfAnotherServiceAlone) {
  readyPublisher();
  const auto other = publisher("Routing");
  other.config->publishReadyIs(true);
  publishConfigDir()->entityDel(kService);
  EXPECT_TRUE(readiness("Routing"));
}

TEST_F(ServicePublishConfigSmTest, AGroupMayBeRemovedByWhomItsEntryIsTold) {
  const auto service = publisher(kService);
  Support::Recorder remover(registry(), [&](Orm::AttributeId, const Orm::Key&) {
    service.config->publishGroupConfigDel("default");
  });
  service.group("default").publishConfigIs(kPath, "remote/config", "Topology::Config");
  EXPECT_FALSE(service.groupStatus("default"));
  EXPECT_TRUE(registry()->publishEntry().empty());
}

TEST_F(ServicePublishConfigSmTest, AGroupMayBeRemovedByWhomItsStatusIsTold) {
  const auto service = publisher(kService);
  Support::Recorder remover(service.status, [&](Orm::AttributeId, const Orm::Key&) {
    service.config->publishGroupConfigDel("default");
  });
  const auto group = Orm::make<ServicePublishGroupConfig>("default");
  group->publishConfigIs(kPath, "remote/config", "Topology::Config");
  service.config->publishGroupConfigIs(group);
  EXPECT_FALSE(service.groupStatus("default"));
  EXPECT_TRUE(publishConfigSm(kService)->publishGroupSm().empty());
  EXPECT_TRUE(registry()->publishEntry().empty());
}

TEST_F(ServicePublishConfigSmTest, AGroupThatIsRemovedWhileItAdds_AddsNothingMore) {
  const auto service = readyPublisher();
  service.group("default").publishConfigIs("/controller/second", "remote/second", "Type");
  leaderIs("gen-2");
  Support::Recorder remover(registry(), [&](Orm::AttributeId attribute, const Orm::Key&) {
    if (attribute == MountsRegistry::Attr::publishEntry) {
      service.config->publishGroupConfigDel("default");
    }
  });
  leaderIs("gen-1");
  EXPECT_TRUE(publishConfigSm(kService)->publishGroupSm().empty());
  EXPECT_TRUE(registry()->publishEntry().empty());
}

TEST_F(ServicePublishConfigSmTest, AServiceThatIsRemovedWhileItAdds_LeavesNothing) {
  const auto service = readyPublisher();
  service.group("default").publishConfigIs("/controller/second", "remote/second", "Type");
  leaderIs("gen-2");
  Support::Recorder remover(registry(), [&](Orm::AttributeId attribute, const Orm::Key&) {
    if (attribute == MountsRegistry::Attr::publishEntry) publishConfigDir()->entityDel(kService);
  });
  leaderIs("gen-1");
  EXPECT_FALSE(publishConfigSm(kService));
  EXPECT_TRUE(registry()->publishEntry().empty());
  EXPECT_FALSE(hasReadiness());
  EXPECT_TRUE(service.status->servicePublishGroupStatus().empty());
}

TEST_F(ServicePublishConfigSmTest, AMachineWhoseNotificationIsOff_SeesNothing) {
  const auto service = readyPublisher();
  publishConfigSm(kService)->hasNotificationActiveIs(false);
  service.config->publishReadyIs(false);
  service.group("default").publishConfigIs("/controller/second", "remote/second", "Type");
  leaderIs("gen-2");
  EXPECT_TRUE(readiness());
  EXPECT_EQ(registry()->publishEntry().size(), 2U);
}

}  // namespace
