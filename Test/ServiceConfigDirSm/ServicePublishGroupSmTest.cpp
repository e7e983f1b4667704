#include <gtest/gtest.h>

#include "Controllerdb/ServiceConfigDirSm/ServicePublishConfigSm.h"
#include "Controllerdb/ServiceConfigDirSm/ServicePublishGroupSm.h"
#include "Test/Support/PublishFixture.h"
#include "Test/Support/Recorder.h"

namespace {

using namespace Controller;
using Orm::Ptr;
using Orm::String;
using Support::systemFilter;
using Support::versionFilter;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kAdding =
    "void Controller::ServicePublishGroupSm::addPublishDirOrConfig(const String&, const String&, "
    "const String&, bool, bool, const PtrConst&): ";
constexpr const char* kRemoving =
    "void Controller::ServicePublishGroupSm::removePublishDirOrConfig(const String&): ";
constexpr const char* kDir = "/controller/perSwitch";

class ServicePublishGroupSmTest : public Support::PublishFixture {
 protected:
  ServicePublishGroupSmTest() : service_(publisherStarted()), group_(service_.group("default")) {}

  PublishRegistryEntry* entry(const String& path = kPath) const {
    return registry()->publishEntry(path);
  }
  PublishStatus* status(const String& path = kPath) const {
    return service_.groupStatus("default")->publishStatus(path);
  }
  ServicePublishGroupSm& machine() const {
    return *publishConfigSm(kService)->publishGroupSm().find("default");
  }

  Support::PublishService service_;
  ServicePublishGroupConfig& group_;

 private:
  Support::PublishService publisherStarted() {
    startConfig();
    return publisher(kService);
  }
};

// ---- paths and directories

TEST_F(ServicePublishGroupSmTest, APath_BecomesAReadyEntryAtOnce) {
  traceIs(8);
  group_.publishConfigIs(kPath, "remote/config", "Topology::Config");
  ASSERT_TRUE(entry());
  EXPECT_EQ(entry()->remotePath(), "remote/config");
  EXPECT_EQ(entry()->type(), "Topology::Config");
  EXPECT_EQ(entry()->serviceName(), kService);
  EXPECT_FALSE(entry()->isPrefixPath());
  EXPECT_TRUE(entry()->readyToPublish());
  EXPECT_FALSE(entry()->systemFilter());
  EXPECT_FALSE(entry()->versionFilter());
  ASSERT_TRUE(status());
  EXPECT_EQ(static_cast<int>(status()->publishState()), 1);
  expectTrace(8, std::string("ServicePublishGroupSm::handlePublishConfig: ") + kPath);
  expectTrace(5, std::string(kAdding) + " adding: service:Topology cpath:" + kPath +
                     " rpath:remote/config type:Topology::Config");
}

TEST_F(ServicePublishGroupSmTest, ADirectory_BecomesAPrefixEntryThatTurnsReadyWithIt) {
  traceIs(8);
  const auto dir = group_.publishDirIs(kDir, "Topology::Mine", "remote/mine");
  ASSERT_TRUE(entry(kDir));
  EXPECT_TRUE(entry(kDir)->isPrefixPath());
  EXPECT_EQ(entry(kDir)->type(), "Topology::Mine");
  EXPECT_FALSE(entry(kDir)->readyToPublish());
  EXPECT_FALSE(status(kDir));
  expectTrace(8, std::string("ServicePublishGroupSm::handlePublishDir ") + kDir);
  expectTrace(8, std::string("ServicePublishGroupSm::addPublishDir ") + kDir);
  expectTrace(5, std::string(kAdding) + " adding: service:Topology cpath:" + kDir +
                     " rpath: type:Topology::Mine");
  dir->readyToPublishIs(true);
  EXPECT_TRUE(entry(kDir)->readyToPublish());
}

TEST_F(ServicePublishGroupSmTest, APathThatIsRemoved_TakesItsEntryAndItsStatusAway) {
  group_.publishConfigIs(kPath, "remote/config", "Topology::Config");
  traceIs(5);
  group_.publishConfigDel(kPath);
  EXPECT_FALSE(entry());
  EXPECT_FALSE(status());
  expectTrace(5, std::string(kRemoving) + " removing cpath:" + kPath);
}

TEST_F(ServicePublishGroupSmTest, ADirectoryThatIsRemoved_TakesItsMachineAndItsEntryAway) {
  group_.publishDirIs(kDir, "Topology::Mine", "remote/mine");
  traceIs(8);
  group_.publishDirDel(kDir);
  EXPECT_FALSE(entry(kDir));
  EXPECT_TRUE(machine().publishDirSm().empty());
  expectTrace(8, std::string("PublishDirSm::doCleanup ") + kDir);
  expectTrace(8, std::string("ServicePublishGroupSm::removePublishDir ") + kDir);
  EXPECT_EQ(timesTraced(5, std::string(kRemoving) + " removing cpath:" + kDir), 1U);
}

TEST_F(ServicePublishGroupSmTest, AnEntryGetsTheFiltersThatItsGroupHas) {
  const auto systems = systemFilter({kOne});
  const auto versions = versionFilter({3});
  group_.systemFilterIs(systems);
  group_.versionFilterIs(versions);
  group_.publishConfigIs(kPath, "remote/config", "Topology::Config");
  group_.publishDirIs(kDir, "Topology::Mine", "remote/mine");
  for (const char* path : {kPath, kDir}) {
    EXPECT_EQ(entry(path)->systemFilter(), systems);
    EXPECT_EQ(entry(path)->versionFilter(), versions);
  }
}

// ---- filters

TEST_F(ServicePublishGroupSmTest, AnotherSystemFilter_ReachesThePathsButNotTheDirectories) {
  const auto before = systemFilter({kOne}, "before");
  const auto after = systemFilter({kTwo}, "after");
  group_.systemFilterIs(before);
  group_.publishConfigIs(kPath, "remote/config", "Topology::Config");
  group_.publishDirIs(kDir, "Topology::Mine", "remote/mine");
  traceIs(8);
  group_.systemFilterIs(after);
  EXPECT_EQ(entry()->systemFilter(), after);
  EXPECT_EQ(entry(kDir)->systemFilter(), before);
  expectTrace(8, "ServicePublishGroupSm::handleSystemFilter after");
  group_.systemFilterIs(nullptr);
  EXPECT_FALSE(entry()->systemFilter());
  EXPECT_EQ(entry(kDir)->systemFilter(), before);
  expectTrace(8, "ServicePublishGroupSm::handleSystemFilter None");
}

TEST_F(ServicePublishGroupSmTest, AnotherVersionFilter_ReachesThePathsButNotTheDirectories) {
  const auto before = versionFilter({3}, "before");
  const auto after = versionFilter({4}, "after");
  group_.versionFilterIs(before);
  group_.publishConfigIs(kPath, "remote/config", "Topology::Config");
  group_.publishDirIs(kDir, "Topology::Mine", "remote/mine");
  traceIs(8);
  group_.versionFilterIs(after);
  EXPECT_EQ(entry()->versionFilter(), after);
  EXPECT_EQ(entry(kDir)->versionFilter(), before);
  expectTrace(8, "ServicePublishGroupSm::handleVersionFilter after");
  group_.versionFilterIs(nullptr);
  EXPECT_FALSE(entry()->versionFilter());
  expectTrace(8, "ServicePublishGroupSm::handleVersionFilter None");
}

TEST_F(ServicePublishGroupSmTest, FiltersSetWhileTheGateIsClosed_HoldForAllWhenItOpens) {
  group_.publishConfigIs(kPath, "remote/config", "Topology::Config");
  group_.publishDirIs(kDir, "Topology::Mine", "remote/mine");
  leaderIs("gen-2");
  const auto systems = systemFilter({kOne});
  group_.systemFilterIs(systems);
  leaderIs("gen-1");
  EXPECT_EQ(entry()->systemFilter(), systems);
  EXPECT_EQ(entry(kDir)->systemFilter(), systems);
}

// ---- paths that others publish

TEST_F(ServicePublishGroupSmTest, OfTwoServicesThatNameAPath_TheFirstKeepsIt) {
  group_.publishConfigIs(kPath, "remote/config", "Topology::Config");
  const auto second = publisher("Routing");
  traceIs(8);
  second.group("default").publishConfigIs(kPath, "remote/other", "Other");
  EXPECT_EQ(entry()->serviceName(), kService);
  EXPECT_EQ(entry()->remotePath(), "remote/config");
  EXPECT_THAT(traced(1), ElementsAre("addPublishConfig/controller/config already published. "
                                     "Ignoring publish from:Routing"));
  // The status tells what is configured, not what is published.
  EXPECT_TRUE(second.groupStatus("default")->publishStatus(kPath));
}

TEST_F(ServicePublishGroupSmTest, OfTwoServicesThatNameADirectory_TheFirstKeepsIt) {
  group_.publishDirIs(kDir, "Topology::Mine", "remote/mine");
  traceIs(8);
  publisher("Routing").group("default").publishDirIs(kDir, "Other", "remote/mine");
  EXPECT_EQ(entry(kDir)->serviceName(), kService);
  EXPECT_EQ(entry(kDir)->type(), "Topology::Mine");
  EXPECT_THAT(traced(1), ElementsAre("addPublishDir/controller/perSwitch already published. "
                                     "Ignoring publishDir from: Routing"));
}

TEST_F(ServicePublishGroupSmTest, TheSecondOfTwoServicesThatLeaves_TakesTheEntryAllTheSame) {
  group_.publishConfigIs(kPath, "remote/config", "Topology::Config");
  const auto second = publisher("Routing");
  second.group("default").publishConfigIs(kPath, "remote/other", "Other");
  second.group("default").publishConfigDel(kPath);
  EXPECT_FALSE(entry());
  // Nor does the first put it back, until its own configuration or the generation changes.
  leaderIs("gen-2");
  leaderIs("gen-1");
  ASSERT_TRUE(entry());
  EXPECT_EQ(entry()->serviceName(), kService);
}

TEST_F(ServicePublishGroupSmTest, TheFirstOfTwoServicesThatLeaves_IsNotFollowedByTheSecond) {
  group_.publishConfigIs(kPath, "remote/config", "Topology::Config");
  const auto second = publisher("Routing");
  second.group("default").publishConfigIs(kPath, "remote/other", "Other");
  group_.publishConfigDel(kPath);
  EXPECT_FALSE(entry());
  second.group("default").publishConfigDel(kPath);
  second.group("default").publishConfigIs(kPath, "remote/other", "Other");
  ASSERT_TRUE(entry());
  EXPECT_EQ(entry()->serviceName(), "Routing");
}

TEST_F(ServicePublishGroupSmTest, TheFilterOfAGroupThatWasIgnored_ReachesTheEntryAllTheSame) {
  group_.publishConfigIs(kPath, "remote/config", "Topology::Config");
  auto& second = publisher("Routing").group("default");
  second.publishConfigIs(kPath, "remote/other", "Other");
  const auto systems = systemFilter({kOne});
  const auto versions = versionFilter({3});
  second.systemFilterIs(systems);
  second.versionFilterIs(versions);
  EXPECT_EQ(entry()->serviceName(), kService);
  EXPECT_EQ(entry()->systemFilter(), systems);
  EXPECT_EQ(entry()->versionFilter(), versions);
}

TEST_F(ServicePublishGroupSmTest, MessagesOfEntries_AreInTheFastTraceToo) {
  Dualog::fastTraceIs(true);
  group_.publishConfigIs(kPath, "remote/config", "Topology::Config");
  group_.publishConfigDel(kPath);
  std::vector<std::string> records;
  Zimlog::read([&](const Zimlog::Descriptor& descriptor, std::int64_t, std::string_view text) {
    EXPECT_STREQ("Controllerdb/ServiceConfigDirSm", descriptor.source);
    EXPECT_EQ(5, descriptor.level);
    records.emplace_back(text);
  });
  EXPECT_THAT(records, ElementsAre(std::string(kAdding) + " adding: service:Topology cpath:" +
                                       kPath + " rpath:remote/config type:Topology::Config",
                                   std::string(kRemoving) + " removing cpath:" + kPath));
  EXPECT_THAT(traces().lines(), IsEmpty());  // the text trace is off
}

// ---- the generation gate

TEST_F(ServicePublishGroupSmTest, AGateThatOpens_AddsPathsThenDirectoriesThenFilters) {
  group_.publishConfigIs(kPath, "remote/config", "Topology::Config");
  group_.publishDirIs(kDir, "Topology::Mine", "remote/mine");
  leaderIs("gen-2");
  traceIs(8);
  leaderIs("gen-1");
  std::vector<std::string> steps;
  for (const std::string& text : traced(8)) {
    if (text.find("ServicePublishGroupSm::handle") == 0) steps.push_back(text);
  }
  EXPECT_THAT(steps,
              ElementsAre("ServicePublishGroupSm::handleLeaderGenId gen-1",
                          std::string("ServicePublishGroupSm::handlePublishConfig: ") + kPath,
                          std::string("ServicePublishGroupSm::handlePublishDir ") + kDir,
                          "ServicePublishGroupSm::handleSystemFilter None",
                          "ServicePublishGroupSm::handleVersionFilter None",
                          "ServicePublishGroupSm::handleLeaderGenId gen-1"));
  // What is added once is not taken for somebody else's.
  EXPECT_THAT(traced(1), IsEmpty());
}

TEST_F(ServicePublishGroupSmTest, AGateThatCloses_RemovesTheEntriesAndKeepsTheStatus) {
  group_.publishConfigIs(kPath, "remote/config", "Topology::Config");
  group_.publishDirIs(kDir, "Topology::Mine", "remote/mine");
  EXPECT_TRUE(machine().gateOpen());
  traceIs(8);
  leaderIs("");
  EXPECT_FALSE(machine().gateOpen());
  EXPECT_TRUE(registry()->publishEntry().empty());
  EXPECT_TRUE(machine().publishDirSm().empty());
  EXPECT_TRUE(status());
  expectTrace(8, "ServicePublishGroupSm::doCleanup");
  leaderIs("gen-1");
  EXPECT_EQ(registry()->publishEntry().size(), 2U);
  EXPECT_EQ(machine().publishDirSm().size(), 1U);
}

TEST_F(ServicePublishGroupSmTest, WhatComesAndGoesWhileTheGateIsClosed_IsSeenWhenItOpens) {
  group_.publishConfigIs(kPath, "remote/config", "Topology::Config");
  group_.publishDirIs(kDir, "Topology::Mine", "remote/mine");
  leaderIs("gen-2");
  group_.publishConfigDel(kPath);
  group_.publishDirDel(kDir);
  group_.publishConfigIs("/controller/second", "remote/second", "Type");
  group_.publishDirIs("/controller/others", "Type", "remote/others");
  EXPECT_TRUE(registry()->publishEntry().empty());
  EXPECT_FALSE(status("/controller/second"));
  leaderIs("gen-1");
  EXPECT_FALSE(entry());
  EXPECT_FALSE(entry(kDir));
  EXPECT_TRUE(entry("/controller/second"));
  EXPECT_TRUE(entry("/controller/others"));
}

// ---- the machine

TEST_F(ServicePublishGroupSmTest, InitializedOnce_ItDoesNotBeginAgain) {
  group_.publishConfigIs(kPath, "remote/config", "Topology::Config");
  EXPECT_TRUE(machine().initialized());
  traceIs(8);
  machine().handleInitialized();
  EXPECT_THAT(traced(8), ElementsAre("ServicePublishGroupSm::handleInitialized"));
}

TEST_F(ServicePublishGroupSmTest, ADirectoryThatIsNotifiedAgain_KeepsItsMachine) {
  group_.publishDirIs(kDir, "Topology::Mine", "remote/mine");
  const PublishDirSm* const dir = machine().publishDirSm().find(kDir);
  machine().handlePublishDir();
  EXPECT_EQ(machine().publishDirSm().find(kDir), dir);
  EXPECT_EQ(dir->parent(), &machine());
}

TEST_F(ServicePublishGroupSmTest, RemovePublishConfig_RemovesTheEntry) {
  group_.publishConfigIs(kPath, "remote/config", "Topology::Config");
  machine().removePublishConfig(kPath);
  EXPECT_FALSE(entry());
}

TEST_F(ServicePublishGroupSmTest, AllGroupsCanBeDeletedAtOnce) {
  group_.publishConfigIs(kPath, "remote/config", "Topology::Config");
  service_.group("second").publishDirIs(kDir, "Topology::Mine", "remote/mine");
  publishConfigSm(kService)->publishGroupSmDelAll();
  EXPECT_TRUE(publishConfigSm(kService)->publishGroupSm().empty());
  EXPECT_TRUE(registry()->publishEntry().empty());
}

TEST_F(ServicePublishGroupSmTest, AnEntryMayRemoveItsGroupsPathsAsTheyAreAdded) {
  group_.publishConfigIs(kPath, "remote/config", "Topology::Config");
  group_.publishConfigIs("/controller/second", "remote/second", "Type");
  leaderIs("gen-2");
  Support::Recorder remover(registry(), [this](Orm::AttributeId attribute, const Orm::Key&) {
    if (attribute == MountsRegistry::Attr::publishEntry) group_.publishConfigDelAll();
  });
  leaderIs("gen-1");
  EXPECT_TRUE(registry()->publishEntry().empty());
}

}  // namespace
