// What PublishRegistryEntrySm does about a connection: publications made and taken back.

#include <gtest/gtest.h>

#include "Controllerdb/MountsRegistry/PublishRegistryEntrySm.h"
#include "Platform/Fennix/Node.h"
#include "Test/Support/PublishFixture.h"
#include "Test/Support/Recorder.h"

namespace {

using namespace Controller;
using Controllerdb::MountDesc;
using Controllerdb::SystemPublishedMount;
using Orm::Ptr;
using Orm::String;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kConnected =
    "void Controller::PublishRegistryEntrySm::doConnectSwitch(const Controller::SystemId&): ";
constexpr const char* kDisconnected =
    "void Controller::PublishRegistryEntrySm::doDisconnectSwitch(const Controller::SystemId&): ";
constexpr const char* kDir = "/controller/perSwitch";

class PublishRegistryEntrySmConnectTest : public Support::PublishFixture {
 protected:
  PublishRegistryEntrySmConnectTest() {
    startRegistry();
    entityIs(kPath);
    entityIs(kDir, "Orm::Dir");
  }

  static std::string childOf(const char* path, const char* system) {
    return std::string(path) + "/" + system;
  }
};
using PublishRegistryEntrySmDeathTest = PublishRegistryEntrySmConnectTest;

// ---- publishing

TEST_F(PublishRegistryEntrySmConnectTest, APublicationSaysWhatIsPublishedWhere) {
  connect(kOne, {{kService, 3}});
  traceIs(8);
  readyEntryIs(kPath);
  EXPECT_EQ(published(kOne, kPath),
            (MountDesc{kPath, "remote/config", "Topology::Config", "rti", kService}));
  expectTrace(5, std::string(kConnected) + " publishing:" + kPath + " to:remote/config on:" + kOne +
                     " type: Topology::Config service: Topology");
  expectTrace(8, std::string("PublishRegistryEntrySm::doConnectSwitch ") + kPath + " " + kOne);
  EXPECT_EQ(publishSm(kPath).admission(systemId(kOne)), Admission::admitted);
}

TEST_F(PublishRegistryEntrySmConnectTest, APrefixPath_IsPublishedAsAChildASystem) {
  connect(kOne, {{kService, 3}});
  connect(kTwo, {{kService, 3}});
  traceIs(8);
  readyPrefixEntryIs(kDir);
  for (const char* system : {kOne, kTwo}) {
    const std::string child = childOf(kDir, system);
    EXPECT_EQ(published(system, child),
              (MountDesc{child, "remote/mine", "Topology::Mine", "rti", kService}));
    EXPECT_EQ(record(system)->publishedMount().size(), 1U);
    const auto node = Orm::dynamicCast<Fennix::Node>(root()->lookup(child));
    ASSERT_TRUE(node);
    EXPECT_EQ(node->typeName(), "Topology::Mine");
    expectTrace(5, std::string(kConnected) + " publishing ssm:" + system +
                       " to:remote/mine type: Topology::Mine service: Topology");
    expectTrace(8, std::string("PublishRegistryEntrySm::addSwitchToPublishEntryDir ") + system);
  }
}

TEST_F(PublishRegistryEntrySmConnectTest, APrefixPath_GetsItsChildAlsoWhereItIsRefused) {
  connect(kOne, {{kService, 0}});
  readyPrefixEntryIs(kDir);
  const std::string child = childOf(kDir, kOne);
  EXPECT_FALSE(isPublished(kOne, child));
  EXPECT_TRUE(root()->lookup(child));
  entityDel(child);
  publishSm(kDir).handleSwitchConnection(systemId(kOne));
  EXPECT_TRUE(root()->lookup(child));
}

TEST_F(PublishRegistryEntrySmConnectTest, APrefixPathWithoutPeersMayWaitForItsDirectory) {
  readyPrefixEntryIs("/controller/later");
  run(2);
  entityIs("/controller/later", "Orm::Dir");
  run(1);
  connect(kOne, {{kService, 3}});
  EXPECT_TRUE(isPublished(kOne, childOf("/controller/later", kOne)));
}

TEST_F(PublishRegistryEntrySmConnectTest, PublishingAgain_ReplacesThePublication) {
  connect(kOne, {{kService, 3}});
  const auto entry = readyEntryIs(kPath);
  Support::Recorder told(Ptr<SystemPublishedMount>(record(kOne)));
  publishSm(kPath).doConnectSwitch(systemId(kOne));
  EXPECT_EQ(told.told(), 0U);
  entry->remotePathIs("remote/other");
  publishSm(kPath).doConnectSwitch(systemId(kOne));
  EXPECT_EQ(told.told(), 1U);
  EXPECT_EQ(record(kOne)->publishedMount().size(), 1U);
  EXPECT_EQ(published(kOne, kPath).remotePath, "remote/other");
}

TEST_F(PublishRegistryEntrySmConnectTest, AConnectionThatIsRefused_IsNotPublishedToWhenAsked) {
  connect(kOne, {{kService, 0}});
  readyEntryIs(kPath);
  traceIs(5);
  publishSm(kPath).doConnectSwitch(systemId(kOne));
  EXPECT_FALSE(isPublished(kOne, kPath));
  expectTrace(5, std::string(kConnected) + " Cannot publish to:" + kOne);
}

// ---- taking back

TEST_F(PublishRegistryEntrySmConnectTest, ASystemThatNeverHadTheEntry_KeepsItsRecordUnchanged) {
  connect(kOne, {{kService, 0}});
  readyEntryIs(kPath);
  const MountDesc other{"/other", "remote/other", "Other", "rti", "Other"};
  record(kOne)->publishedMountIs(other);
  Support::Recorder told(Ptr<SystemPublishedMount>(record(kOne)));
  traceIs(8);
  publishSm(kPath).doDisconnectSwitch(systemId(kOne));
  EXPECT_EQ(told.told(), 0U);
  EXPECT_EQ(published(kOne, "/other"), other);
  EXPECT_THAT(traced(5), testing::IsEmpty());
  EXPECT_THAT(traced(8), testing::ElementsAre(
                             std::string("PublishRegistryEntrySm::doDisconnectSwitch ") + kOne));
}

TEST_F(PublishRegistryEntrySmConnectTest, ASystemWithoutARecord_IsLeftAlone) {
  readyEntryIs(kPath);
  traceIs(8);
  publishSm(kPath).doDisconnectSwitch(systemId(kOne));
  EXPECT_EQ(traced(8).size(), 1U);
  EXPECT_FALSE(record(kOne));
}

TEST_F(PublishRegistryEntrySmConnectTest, TheLastPublicationThatGoes_LeavesTheRecord) {
  connect(kOne, {{kService, 3}});
  entityIs("/controller/second");
  const auto first = readyEntryIs(kPath);
  const auto second = readyEntryIs("/controller/second");
  const std::string allGone =
      std::string("PublishRegistryEntrySm::doDisconnectSwitch All published mounts gone for ") +
      kOne;
  traceIs(8);
  first->readyToPublishIs(false);
  expectTrace(5, std::string(kDisconnected) + " un-publishing:" + kPath + " from:" + kOne);
  expectNoTrace(8, allGone);
  second->readyToPublishIs(false);
  expectTrace(8, allGone);
  ASSERT_TRUE(record(kOne));
  EXPECT_TRUE(record(kOne)->publishedMount().empty());
}

TEST_F(PublishRegistryEntrySmConnectTest, ARefusedPrefixPath_KeepsItsChildInTheStore) {
  connect(kOne, {{kService, 3}});
  const auto entry = readyPrefixEntryIs(kDir);
  const std::string child = childOf(kDir, kOne);
  ASSERT_TRUE(isPublished(kOne, child));
  traceIs(5);
  entry->readyToPublishIs(false);
  EXPECT_FALSE(isPublished(kOne, child));
  EXPECT_TRUE(root()->lookup(child));
  expectTrace(5, std::string(kDisconnected) + " un-publishing:" + child + " from:" + kOne);
}

TEST_F(PublishRegistryEntrySmConnectTest, AnEntityThatGoesIsUnpublishedWithTheNextEvaluation) {
  connect(kOne, {{kService, 3}});
  readyEntryIs(kPath);
  entityDel(kPath);
  run(10);
  EXPECT_TRUE(isPublished(kOne, kPath));
  publishSm(kPath).handleSwitchConnection(systemId(kOne));
  EXPECT_FALSE(isPublished(kOne, kPath));
  EXPECT_EQ(publishSm(kPath).admission(systemId(kOne)), Admission::entityMissing);
}

// ---- cleaning up

TEST_F(PublishRegistryEntrySmConnectTest, DoCleanup_TakesBackFromSystemsThatAreNoPeersAnyMore) {
  connect(kOne, {{kService, 3}});
  readyEntryIs(kPath);
  const MountDesc left{kPath, "remote/config", "Topology::Config", "rti", kService};
  publishStatus()->systemIs(systemId(kTwo))->publishedMountIs(left);
  traceIs(8);
  publishSm(kPath).doCleanup();
  EXPECT_FALSE(isPublished(kOne, kPath));
  EXPECT_FALSE(isPublished(kTwo, kPath));
  EXPECT_TRUE(record(kTwo));
  expectTrace(8, std::string("PublishRegistryEntrySm::doCleanup ") + kPath);
}

TEST_F(PublishRegistryEntrySmConnectTest, DoCleanup_EndsTheMachinesReactionsAndMayBeRepeated) {
  const auto systems = Support::systemFilter({kOne});
  const auto versions = Support::versionFilter({3});
  connect(kOne, {{kService, 3}});
  const auto entry = readyEntryIs(kPath, kService, versions, systems);
  PublishRegistryEntrySm& machine = publishSm(kPath);
  machine.doCleanup();
  EXPECT_FALSE(machine.initialized());
  traceIs(8);
  machine.doCleanup();
  EXPECT_THAT(traced(8), testing::IsEmpty());
  entry->readyToPublishIs(false);
  entry->readyToPublishIs(true);
  systems->includedSystemIs(kTwo, true);
  versions->includedServiceVersionIs(4, true);
  machine.handleSwitchConnection();
  machine.handleSwitchConnection(systemId(kOne));
  versionIs(kOne, kService, 4);
  EXPECT_FALSE(isPublished(kOne, kPath));
  EXPECT_EQ(systems->notifieeCount() + versions->notifieeCount(), 0U);
}

TEST_F(PublishRegistryEntrySmConnectTest, AnEntryThatIsDeleted_IsUnpublishedEverywhere) {
  connect(kOne, {{kService, 3}});
  connect(kTwo, {{kService, 3}});
  readyPrefixEntryIs(kDir);
  registry()->publishEntryDel(kDir);
  EXPECT_TRUE(record(kOne)->publishedMount().empty());
  EXPECT_TRUE(record(kTwo)->publishedMount().empty());
  EXPECT_TRUE(registrySm().publishRegistryEntrySm().empty());
}

TEST_F(PublishRegistryEntrySmConnectTest, TheRegistryMachineThatGoes_TakesItsPublicationsBack) {
  connect(kOne, {{kService, 3}});
  readyEntryIs(kPath);
  stopRegistry();
  EXPECT_FALSE(isPublished(kOne, kPath));
  startRegistry();
  EXPECT_TRUE(isPublished(kOne, kPath));
}

// ---- removed by whom it tells

TEST_F(PublishRegistryEntrySmConnectTest, APublicationMayRemoveItsEntry) {
  connect(kOne);
  connect(kTwo, {{kService, 3}});
  Support::Recorder remover(Ptr<SystemPublishedMount>(record(kTwo)),
                            [this](Orm::AttributeId, const Orm::Key&) {
                              if (isPublished(kTwo, kPath)) registry()->publishEntryDel(kPath);
                            });
  readyEntryIs(kPath);
  EXPECT_FALSE(isPublished(kTwo, kPath));
  EXPECT_TRUE(registrySm().publishRegistryEntrySm().empty());
}

TEST_F(PublishRegistryEntrySmConnectTest, TheChildOfAPrefixPathMayRemoveItsEntry) {
  readyPrefixEntryIs(kDir);
  Support::Recorder remover(root()->lookup(kDir), [this](Orm::AttributeId, const Orm::Key&) {
    registry()->publishEntryDel(kDir);
  });
  connect(kOne, {{kService, 3}});
  EXPECT_TRUE(registrySm().publishRegistryEntrySm().empty());
  EXPECT_TRUE(record(kOne)->publishedMount().empty());
}

TEST_F(PublishRegistryEntrySmConnectTest, AnEntryThatGoesWhileItsMachineIsMade_LeavesNoMachine) {
  connect(kOne, {{kService, 3}});
  connect(kTwo, {{kService, 3}});
  Support::Recorder remover(root()->lookup(kDir), [this](Orm::AttributeId, const Orm::Key&) {
    registry()->publishEntryDel(kDir);
  });
  readyPrefixEntryIs(kDir);
  EXPECT_TRUE(registrySm().publishRegistryEntrySm().empty());
  EXPECT_TRUE(record(kOne)->publishedMount().empty());
  EXPECT_TRUE(record(kTwo)->publishedMount().empty());
}

TEST_F(PublishRegistryEntrySmConnectTest, TheChildOfAPrefixPathMayRemoveThePeer) {
  readyPrefixEntryIs(kDir);
  Support::Recorder remover(root()->lookup(kDir),
                            [this](Orm::AttributeId, const Orm::Key&) { disconnect(kOne); });
  connect(kOne, {{kService, 3}});
  EXPECT_TRUE(record(kOne)->publishedMount().empty());
}

// ---- without a publish status

TEST_F(PublishRegistryEntrySmConnectTest, WithoutAPublishStatus_NothingIsTakenBack) {
  readyEntryIs(kPath);
  const auto machine = publishRegistryEntrySmFactory(registry()->publishEntry(kPath), oobStatus(),
                                                     nullptr, &registrySm());
  machine->start();
  machine->doDisconnectSwitch(systemId(kOne));
  machine->doCleanup();
  EXPECT_EQ(machine->admission(systemId(kOne)), Admission::notConnected);
}

// ---- broken invariants

TEST_F(PublishRegistryEntrySmDeathTest, OnlyAPrefixPathHasChildren) {
  connect(kOne, {{kService, 3}});
  entryIs(kPath);
  EXPECT_DEATH(publishSm(kPath).addSwitchToPublishEntryDir(systemId(kOne)),
               HasSubstr("assertion failed: publishEntry()->isPrefixPath() "));
}

TEST_F(PublishRegistryEntrySmDeathTest, APrefixPathWithAPeerIsADirectory) {
  constexpr const char* kText =
      "assertion failed: publishEntryDir && \"Publish path doesn't exist or its type is not "
      "Orm::Dir\"";
  connect(kOne, {{kService, 3}});
  EXPECT_DEATH(readyPrefixEntryIs(kPath), HasSubstr(kText));
  EXPECT_DEATH(readyPrefixEntryIs("/controller/later"), HasSubstr(kText));
}

TEST_F(PublishRegistryEntrySmDeathTest, OnlyAPeerIsPublishedTo) {
  readyEntryIs(kPath);
  EXPECT_DEATH(publishSm(kPath).doConnectSwitch(systemId(kOne)),
               HasSubstr("assertion failed: peer "));
}

TEST_F(PublishRegistryEntrySmDeathTest, APeerHasARecord) {
  connect(kOne, {{kService, 3}});
  readyEntryIs(kPath);
  publishStatus()->systemDel(systemId(kOne));
  EXPECT_DEATH(publishSm(kPath).doConnectSwitch(systemId(kOne)),
               HasSubstr("assertion failed: system "));
}

TEST_F(PublishRegistryEntrySmDeathTest, WhatIsPublishedIsThere) {
  constexpr const char* kText =
      "assertion failed: publishEntity && \"Publish entity doesn't exist\"";
  connect(kOne, {{kService, 3}});
  readyEntryIs(kPath);
  readyPrefixEntryIs(kDir);
  entityDel(kPath);
  entityDel(childOf(kDir, kOne));
  EXPECT_DEATH(publishSm(kPath).doConnectSwitch(systemId(kOne)), HasSubstr(kText));
  EXPECT_DEATH(publishSm(kDir).doConnectSwitch(systemId(kOne)), HasSubstr(kText));
  entityDel(kDir);
  EXPECT_DEATH(publishSm(kDir).doConnectSwitch(systemId(kOne)), HasSubstr(kText));
}

TEST_F(PublishRegistryEntrySmDeathTest, APublicationDescribesSomething) {
  const auto system = publishStatus()->systemIs(systemId(kOne));
  EXPECT_DEATH(PublishRegistryEntrySm::publishMount(*system, MountDesc()),
               HasSubstr("assertion failed: !!mdesc"));
}

}  // namespace
