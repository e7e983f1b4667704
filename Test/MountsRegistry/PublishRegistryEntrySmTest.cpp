#include <gtest/gtest.h>

#include "Controllerdb/MountsRegistry/PublishRegistryEntrySm.h"
#include "Test/Support/PublishFixture.h"

namespace {

using namespace Controller;
using Orm::Ptr;
using Orm::String;
using Support::systemFilter;
using Support::versionFilter;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* kCanPublish =
    "bool Controller::PublishRegistryEntrySm::canPublishToConnection(const String&): ";
constexpr const char* kHasVersion =
    "bool Controller::PublishRegistryEntrySm::hasVersion(const String&, U32): ";
constexpr const char* kDecided =
    "void Controller::PublishRegistryEntrySm::handleSwitchConnection(const "
    "Controller::SystemId&): ";

/// To which connections an entry is published.
class PublishRegistryEntrySmTest : public Support::PublishFixture {
 protected:
  PublishRegistryEntrySmTest() {
    startRegistry();
    entityIs(kPath);
  }

  Admission admission(const char* system, const String& path = kPath) const {
    return publishSm(path).admission(systemId(system));
  }
  /// How often a connection was decided since the traces were cleared.
  std::size_t decisions(const char* system, const std::string& path = kPath) const {
    return timesTraced(8, "PublishRegistryEntrySm::handleSwitchConnection " + path + " " + system);
  }
};

// ---- admission

TEST_F(PublishRegistryEntrySmTest, WithoutANegotiatedVersion_NothingIsPublishedFiltersOrNot) {
  connect(kOne, {{kService, 0}});
  connect(kTwo);
  traceIs(5);
  readyEntryIs(kPath);
  EXPECT_FALSE(isPublished(kOne, kPath));
  EXPECT_FALSE(isPublished(kTwo, kPath));
  EXPECT_EQ(admission(kOne), Admission::noVersionNegotiated);
  expectTrace(5, std::string(kCanPublish) + " no version negotiated:" + kOne);
  expectTrace(5, std::string(kDecided) + " Cannot publish:" + kPath + " to:" + kOne);
}

TEST_F(PublishRegistryEntrySmTest, WithoutFilters_EveryConnectionWithAVersionIsPublishedTo) {
  connect(kOne, {{kService, 1}});
  connect(kTwo, {{kService, 7}});
  connect(kThree, {{kService, 0}});
  traceIs(5);
  readyEntryIs(kPath);
  EXPECT_TRUE(isPublished(kOne, kPath));
  EXPECT_TRUE(isPublished(kTwo, kPath));
  EXPECT_FALSE(isPublished(kThree, kPath));
  EXPECT_EQ(admission(kOne), Admission::admitted);
  expectTrace(5, std::string(kCanPublish) + "no versionFilter for " + kPath);
  expectTrace(5, std::string(kCanPublish) + " no systemfilter for " + kPath);
}

TEST_F(PublishRegistryEntrySmTest, NothingIsPublishedBeforeTheEntryIsReady) {
  connect(kOne, {{kService, 3}});
  const auto entry = entryIs(kPath);
  EXPECT_FALSE(isPublished(kOne, kPath));
  EXPECT_EQ(admission(kOne), Admission::notReady);
  entry->readyToPublishIs(true);
  EXPECT_TRUE(isPublished(kOne, kPath));
}

TEST_F(PublishRegistryEntrySmTest, NothingIsPublishedBeforeTheLocalEntityIsThere) {
  connect(kOne, {{kService, 3}});
  readyEntryIs("/controller/later");
  EXPECT_FALSE(isPublished(kOne, "/controller/later"));
  EXPECT_EQ(admission(kOne, "/controller/later"), Admission::entityMissing);
  EXPECT_FALSE(publishSm("/controller/later").publishEntityExists());
}

TEST_F(PublishRegistryEntrySmTest, NothingIsPublishedWhileItIsNotKnownHowTheSwitchIsReached) {
  connectWithoutConfig(kOne, {{kService, 3}});
  readyEntryIs(kPath);
  EXPECT_FALSE(isPublished(kOne, kPath));
  EXPECT_EQ(admission(kOne), Admission::noConnectionConfig);
  EXPECT_EQ(admission(kTwo), Admission::notConnected);
}

TEST_F(PublishRegistryEntrySmTest, TheVersionFilterAdmitsItsVersionsAlone) {
  connect(kOne, {{kService, 3}});
  connect(kTwo, {{kService, 4}});
  traceIs(5);
  readyEntryIs(kPath, kService, versionFilter({3}));
  EXPECT_TRUE(isPublished(kOne, kPath));
  EXPECT_FALSE(isPublished(kTwo, kPath));
  EXPECT_EQ(admission(kTwo), Admission::versionNotInFilter);
  expectTrace(5,
              std::string(kHasVersion) + " matched version: 3 service:Topology connection:" + kOne);
  expectTrace(
      5, std::string(kHasVersion) + " version not in filter:4 service:Topology connection:" + kTwo);
}

TEST_F(PublishRegistryEntrySmTest, AVersionFilterMemberThatIsFalseCountsAsAbsent) {
  const auto versions = versionFilter({});
  versions->includedServiceVersionIs(3, false);
  connect(kOne, {{kService, 3}});
  readyEntryIs(kPath, kService, versions);
  EXPECT_FALSE(publishSm(kPath).hasVersion(kOne, 3));
  EXPECT_FALSE(isPublished(kOne, kPath));
}

TEST_F(PublishRegistryEntrySmTest, TheSystemFilterAdmitsItsSystemsAlone) {
  connect(kOne, {{kService, 3}});
  connect(kTwo, {{kService, 3}});
  traceIs(5);
  readyEntryIs(kPath, kService, nullptr, systemFilter({kOne}));
  EXPECT_TRUE(isPublished(kOne, kPath));
  EXPECT_FALSE(isPublished(kTwo, kPath));
  EXPECT_EQ(admission(kTwo), Admission::systemNotInFilter);
  expectTrace(5, std::string(kCanPublish) + " matched systemFilter connection:" + kOne);
  expectTrace(5, std::string(kCanPublish) + " no matched system for connection: " + kTwo);
}

TEST_F(PublishRegistryEntrySmTest, ASystemFilterMemberThatIsFalseCountsAsAbsent) {
  const auto systems = systemFilter({kOne});
  connect(kOne, {{kService, 3}});
  readyEntryIs(kPath, kService, nullptr, systems);
  EXPECT_TRUE(publishSm(kPath).canPublishToConnection(kOne));
  systems->includedSystemIs(kOne, false);
  EXPECT_FALSE(publishSm(kPath).canPublishToConnection(kOne));
  EXPECT_FALSE(isPublished(kOne, kPath));
}

// Whoever is told of the peer first may let the system in before the registry machine, which makes
// room for what is published to it, has been told.
TEST_F(PublishRegistryEntrySmTest, ASystemLetInWhileItsPeerComesIsPublishedToOnceThatIsKnown) {
  class LetIn final : public Orm::ReactorOn<PeerTable, MountFilterSystem> {
   public:
    explicit LetIn(MountFilterSystem* filter) : ReactorOn(filter) {}
    void onAttribute(Orm::AttributeId, const Orm::Key&) override {
      owner()->includedSystemIs(kOne, true);
    }
  };
  const auto systems = systemFilter({});
  readyEntryIs(kPath, kService, nullptr, systems);
  const auto table = Orm::make<PeerTable>();
  LetIn first(systems.get());
  first.notifierIs(Orm::Ptr<PeerTable const>(table));
  oobStatus()->peerTableIs(table);
  connect(kOne, {{kService, 3}});
  EXPECT_TRUE(isPublished(kOne, kPath));
  EXPECT_EQ(admission(kOne), Admission::admitted);
}

TEST_F(PublishRegistryEntrySmTest, EachReasonHasItsOwnWords) {
  EXPECT_EQ(Orm::stringForm(Admission::noConnectionConfig), "no connection configuration");
  EXPECT_EQ(Orm::stringForm(Admission::noVersionNegotiated), "no version negotiated");
  EXPECT_EQ(Orm::stringForm(Admission::versionNotInFilter), "version not in filter");
  EXPECT_EQ(Orm::stringForm(Admission::systemNotInFilter), "system not in filter");
  EXPECT_EQ(Orm::stringForm(Admission::entityMissing), "local entity missing");
  EXPECT_EQ(Orm::stringForm(Admission::notReady), "not ready to publish");
}

TEST_F(PublishRegistryEntrySmTest, TheVersionIsTestedBeforeTheSystem) {
  connect(kOne, {{kService, 4}});
  traceIs(5);
  readyEntryIs(kPath, kService, versionFilter({3}), systemFilter({}));
  EXPECT_EQ(admission(kOne), Admission::versionNotInFilter);
  expectNoTrace(5, std::string(kCanPublish) + " no matched system for connection: " + kOne);
}

TEST_F(PublishRegistryEntrySmTest, AProxyServicesEntryFollowsTheVersionOfTheRealService) {
  connect(kOne, {{kService, 0}});
  readyEntryIs(kPath, "Topology-Proxy", versionFilter({3}));
  EXPECT_FALSE(isPublished(kOne, kPath));
  versionIs(kOne, kService, 3);
  EXPECT_TRUE(isPublished(kOne, kPath));
}

TEST_F(PublishRegistryEntrySmTest, AVersionOfOneServiceConcernsItsEntriesAlone) {
  connect(kOne, {{kService, 0}, {"Routing", 0}});
  readyEntryIs(kPath);
  entityIs("/controller/routes");
  readyEntryIs("/controller/routes", "Routing");
  traceIs(8);
  versionIs(kOne, kService, 3);
  EXPECT_NE(decisions(kOne), 0U);
  EXPECT_EQ(decisions(kOne, "/controller/routes"), 0U);
}

TEST_F(PublishRegistryEntrySmTest, EachStepOfADecisionIsTraced) {
  connect(kOne, {{kService, 3}});
  const auto entry = entryIs(kPath, kService, versionFilter({3}));
  traceIs(8);
  entry->readyToPublishIs(true);
  const std::string machine = "PublishRegistryEntrySm::";
  const std::string path = kPath;
  EXPECT_THAT(
      traced(8),
      ElementsAre(
          machine + "handleReadyToPublish " + path, machine + "handleSwitchConnection " + path,
          machine + "handleSwitchConnection " + path + " " + kOne,
          machine + "canPublishToConnection " + path,
          "MountsRegistrySm::negotiatedServiceVersionForConnection Topology " + std::string(kOne),
          "MountsRegistrySm::negotiatedServiceVersionForConnection negotiated "
          "service version for " +
              std::string(kOne) + " for service Topology = 3",
          machine + "hasVersion", machine + "publishEntityExists " + path,
          machine + "doConnectSwitch " + path + " " + kOne,
          machine + "canPublishToConnection " + path,
          "MountsRegistrySm::negotiatedServiceVersionForConnection Topology " + std::string(kOne),
          "MountsRegistrySm::negotiatedServiceVersionForConnection negotiated "
          "service version for " +
              std::string(kOne) + " for service Topology = 3",
          machine + "hasVersion", machine + "publishEntityExists " + path));
}

TEST_F(PublishRegistryEntrySmTest, MessagesOfADecision_AreInTheFastTraceToo) {
  connect(kOne, {{kService, 0}});
  const auto entry = entryIs("/controller/later");
  Dualog::fastTraceIs(true);
  entry->readyToPublishIs(true);
  std::vector<std::string> records;
  Zimlog::read([&](const Zimlog::Descriptor& descriptor, std::int64_t, std::string_view text) {
    EXPECT_STREQ("Controllerdb/MountsRegistry", descriptor.source);
    records.push_back(std::to_string(descriptor.level) + " " + std::string(text));
  });
  EXPECT_THAT(
      records,
      ElementsAre(std::string("5 ") + kCanPublish + " no version negotiated:" + kOne,
                  std::string("5 ") + kDecided + " Cannot publish:/controller/later to:" + kOne,
                  "1 void Controller::PublishRegistryEntrySm::handleSwitchConnection(): Entity at "
                  "/controller/later doesn't exist."));
  EXPECT_THAT(traces().lines(), testing::IsEmpty());  // the text trace is off
}

// ---- what is reacted to

TEST_F(PublishRegistryEntrySmTest, ClearingReadyToPublish_UnpublishesFromEverySystem) {
  connect(kOne, {{kService, 3}});
  connect(kTwo, {{kService, 3}});
  const auto entry = readyEntryIs(kPath);
  ASSERT_TRUE(isPublished(kOne, kPath));
  ASSERT_TRUE(isPublished(kTwo, kPath));
  entry->readyToPublishIs(false);
  EXPECT_FALSE(isPublished(kOne, kPath));
  EXPECT_FALSE(isPublished(kTwo, kPath));
}

TEST_F(PublishRegistryEntrySmTest, AddingAVersionToTheFilter_DecidesAllSystems) {
  const auto versions = versionFilter({3});
  connect(kOne, {{kService, 3}});
  connect(kTwo, {{kService, 4}});
  readyEntryIs(kPath, kService, versions);
  traceIs(8);
  versions->includedServiceVersionIs(4, true);
  EXPECT_EQ(decisions(kOne), 1U);
  EXPECT_EQ(decisions(kTwo), 1U);
  EXPECT_TRUE(isPublished(kTwo, kPath));
  expectTrace(8, "PublishRegistryEntrySm::OrmVersionFilter::handleIncludedServiceVersion: 4");
}

TEST_F(PublishRegistryEntrySmTest, AddingASystemToTheFilter_DecidesThatSystemAlone) {
  const auto systems = systemFilter({kOne});
  connect(kOne, {{kService, 3}});
  connect(kTwo, {{kService, 3}});
  readyEntryIs(kPath, kService, nullptr, systems);
  traceIs(8);
  systems->includedSystemIs(kTwo, true);
  EXPECT_EQ(decisions(kOne), 0U);
  EXPECT_EQ(decisions(kTwo), 1U);
  EXPECT_TRUE(isPublished(kTwo, kPath));
  expectTrace(
      8, std::string("PublishRegistryEntrySm::OrmSystemFilter::handleIncludedSystem: ") + kTwo);
}

TEST_F(PublishRegistryEntrySmTest, AFilterThatIsReplaced_IsFollowedInPlaceOfTheOldOne) {
  const auto oldSystems = systemFilter({kOne});
  const auto newSystems = systemFilter({kTwo});
  const auto oldVersions = versionFilter({3});
  const auto newVersions = versionFilter({3});
  connect(kOne, {{kService, 3}});
  connect(kTwo, {{kService, 3}});
  const auto entry = readyEntryIs(kPath, kService, oldVersions, oldSystems);
  entry->systemFilterIs(newSystems);
  entry->versionFilterIs(newVersions);
  EXPECT_FALSE(isPublished(kOne, kPath));
  EXPECT_TRUE(isPublished(kTwo, kPath));

  EXPECT_EQ(oldSystems->notifieeCount(), 0U);
  EXPECT_EQ(oldVersions->notifieeCount(), 0U);
  traceIs(8);
  oldSystems->includedSystemDelAll();
  oldVersions->includedServiceVersionDelAll();
  EXPECT_THAT(traced(8), ElementsAre());
  newVersions->includedServiceVersionDel(3);
  EXPECT_FALSE(isPublished(kTwo, kPath));
}

TEST_F(PublishRegistryEntrySmTest, AFilterThatIsTakenAway_AdmitsEveryone) {
  const auto systems = systemFilter({});
  const auto versions = versionFilter({});
  connect(kOne, {{kService, 3}});
  const auto entry = readyEntryIs(kPath, kService, versions, systems);
  ASSERT_FALSE(isPublished(kOne, kPath));
  traceIs(8);
  entry->versionFilterIs(nullptr);
  ASSERT_FALSE(isPublished(kOne, kPath));
  entry->systemFilterIs(nullptr);
  EXPECT_TRUE(isPublished(kOne, kPath));
  EXPECT_EQ(systems->notifieeCount() + versions->notifieeCount(), 0U);
  expectTrace(8, std::string("PublishRegistryEntrySm::handleVersionFilter ") + kPath);
  expectTrace(8, std::string("PublishRegistryEntrySm::handleSystemFilter ") + kPath);
}

TEST_F(PublishRegistryEntrySmTest, AllMembersOfAFilterCanBeHandledAtOnce) {
  const auto systems = systemFilter({kOne, kTwo});
  const auto versions = versionFilter({3, 4});
  entryIs(kPath, kService, versions, systems);
  PublishRegistryEntrySm::OrmSystemFilter ofSystems(&publishSm(kPath));
  PublishRegistryEntrySm::OrmVersionFilter ofVersions(&publishSm(kPath));
  traceIs(8);
  ofSystems.handleIncludedSystem();
  ofVersions.handleIncludedServiceVersion();
  EXPECT_THAT(traced(8), ElementsAre());
  ofSystems.notifierIs(systems);
  ofVersions.notifierIs(versions);
  EXPECT_THAT(traced(8), ElementsAre());
  ofSystems.handleIncludedSystem();
  EXPECT_EQ(decisions(kOne), 1U);
  EXPECT_EQ(decisions(kTwo), 1U);
  traces().clear();
  ofVersions.handleIncludedServiceVersion();
  EXPECT_EQ(timesTraced(8, std::string("PublishRegistryEntrySm::handleSwitchConnection ") + kPath),
            2U);
}

TEST_F(PublishRegistryEntrySmTest, AnotherRemotePathIsSeenWithTheNextDecision) {
  connect(kOne, {{kService, 3}});
  const auto entry = readyEntryIs(kPath);
  entry->remotePathIs("remote/other");
  EXPECT_EQ(published(kOne, kPath).remotePath, "remote/config");
  publishSm(kPath).handleSwitchConnection(systemId(kOne));
  EXPECT_EQ(published(kOne, kPath).remotePath, "remote/other");
}

TEST_F(PublishRegistryEntrySmTest, ASwitchThatGoesIsUnpublishedFrom_AndForgotten) {
  connect(kOne, {{kService, 3}});
  readyEntryIs(kPath);
  disconnect(kOne);
  EXPECT_FALSE(isPublished(kOne, kPath));
  EXPECT_EQ(admission(kOne), Admission::notConnected);
  EXPECT_TRUE(record(kOne));
}

TEST_F(PublishRegistryEntrySmTest, ANotificationThatIsSwitchedOffReachesNoReactor) {
  const auto systems = systemFilter({});
  const auto versions = versionFilter({3});
  connect(kOne, {{kService, 3}});
  const auto entry = readyEntryIs(kPath, kService, versions, systems);
  publishSm(kPath).hasNotificationActiveIs(false);
  systems->includedSystemIs(kOne, true);
  versions->includedServiceVersionIs(4, true);
  entry->readyToPublishIs(false);
  entry->readyToPublishIs(true);
  EXPECT_FALSE(isPublished(kOne, kPath));
  publishSm(kPath).hasNotificationActiveIs(true);
  entry->readyToPublishIs(false);
  entry->readyToPublishIs(true);
  EXPECT_TRUE(isPublished(kOne, kPath));
}

TEST_F(PublishRegistryEntrySmTest, ASystemFilterMemberMustBeASystem) {
  const auto systems = systemFilter({});
  entryIs(kPath, kService, nullptr, systems);
  EXPECT_DEATH(systems->includedSystemIs("leaf1", true),
               HasSubstr("assertion failed: SystemId::parse( connectionName )"));
}

}  // namespace
