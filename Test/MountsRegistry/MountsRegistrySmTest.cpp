#include "Controllerdb/MountsRegistry/MountsRegistrySm.h"
#include "Test/Support/ControllerFixture.h"

namespace Controller {
namespace {

using Orm::Ptr;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

constexpr const char* kA = "02:00:00:00:00:01";
constexpr const char* kB = "02:00:00:00:00:02";

constexpr const char* kReadySignature =
    "void Controller::MountsRegistrySm::handleServicePublishReady(const String&): ";

class MountsRegistrySmTest : public Support::ControllerFixture {
 protected:
  /// A publish entry whose local entity is not there, so that its presence check stays armed once
  /// a switch that it could be published to is connected.
  Ptr<PublishRegistryEntry> publishEntry(const char* name, const char* service) {
    return registry()->publishEntryIs(name, "remote", "Orm::Dir", false, service, nullptr, nullptr);
  }
  std::string decided(const char* path, const char* system) const {
    return std::string("MountsRegistryEntrySm::handleSwitchConnection ") + path + " Peer:" + system;
  }
  std::string decidedToPublish(const char* path, const char* system) const {
    return std::string("PublishRegistryEntrySm::handleSwitchConnection ") + path + " " + system;
  }
};

// ---- mount entries

TEST_F(MountsRegistrySmTest, MountEntryAdded_GetsAMachineAndIsTraced) {
  startRegistry();
  traceIs(8);
  registry()->mountEntryIs("topology", "/controller/mounts/topology", "T", "r");
  EXPECT_TRUE(hasEntrySm("topology"));
  expectTrace(8, "MountsRegistrySm::handleMountEntry:  Remote Path:topology");
}

TEST_F(MountsRegistrySmTest, MountEntryPresentAtStart_GetsAMachine) {
  registry()->mountEntryIs("topology", "/controller/mounts/topology", "T", "r");
  startRegistry();
  EXPECT_TRUE(hasEntrySm("topology"));
}

TEST_F(MountsRegistrySmTest, MountEntryNotifiedAgain_CausesNoSecondMachine) {
  startRegistry();
  registry()->mountEntryIs("topology", "/controller/mounts/topology", "T", "r");
  const MountsRegistryEntrySm* const machine = &entrySm("topology");
  registrySm().handleMountEntry("topology");
  registrySm().handleMountEntry();
  EXPECT_EQ(machine, &entrySm("topology"));
  EXPECT_EQ(1U, registrySm().mountsRegistryEntrySm().size());
}

TEST_F(MountsRegistrySmTest, MountEntryDeleted_MachineCleansUpAndGoes) {
  start();
  service("Topology").group("default").path("topology");
  connect(kA, {{"Topology", 3}});
  traceIs(8);
  mounts().takeRequests();
  registry()->mountEntryDel("topology");
  EXPECT_FALSE(hasEntrySm("topology"));
  EXPECT_THAT(mounts().takeRequests(), ElementsAre("clean up topology from 02:00:00:00:00:01"));
  EXPECT_TRUE(mounts().live().empty());
  expectTrace(8, "MountsRegistrySm::handleMountEntry:  Remote Path:topology");
  expectTrace(8, "MountsRegistrySm::handleMountEntry:  Deleting registry entry sm for :topology");
}

TEST_F(MountsRegistrySmTest, UnknownMountEntry_IsTracedOnly) {
  startRegistry();
  traceIs(8);
  registrySm().handleMountEntry("nowhere");
  EXPECT_THAT(traced(8), ElementsAre("MountsRegistrySm::handleMountEntry:  Remote Path:nowhere"));
}

// ---- publish entries

TEST_F(MountsRegistrySmTest, PublishEntryAdded_GetsOneMachine) {
  startRegistry();
  traceIs(8);
  publishEntry("local", "Topology");
  expectTrace(8, "MountsRegistrySm::handlePublishEntry:  Controller Path:local");
  const PublishRegistryEntrySm* const machine = registrySm().publishRegistryEntrySm().find("local");
  ASSERT_NE(nullptr, machine);
  registrySm().handlePublishEntry("local");
  registrySm().handlePublishEntry();
  EXPECT_EQ(machine, registrySm().publishRegistryEntrySm().find("local"));
  EXPECT_EQ(1U, registrySm().publishRegistryEntrySm().size());
}

TEST_F(MountsRegistrySmTest, PublishEntryDeleted_CleansUpBeforeItsMachineIsDeleted) {
  startRegistry();
  dir("data");
  registry()
      ->publishEntryIs("/data", "remote", "Orm::Dir", false, "Topology", nullptr, nullptr)
      ->readyToPublishIs(true);
  connect(kA, {{"Topology", 3}});
  ASSERT_EQ(1U, publishStatus()->system(systemId(kA))->publishedMount().size());
  traceIs(8);
  registry()->publishEntryDel("/data");
  // Only the machine's own clean-up takes a publication back.
  EXPECT_EQ(0U, publishStatus()->system(systemId(kA))->publishedMount().size());
  EXPECT_TRUE(registrySm().publishRegistryEntrySm().empty());
  expectTrace(8, "MountsRegistrySm::handlePublishEntry:  Controller Path:/data");
  expectTrace(8, "MountsRegistrySm::handlePublishEntry:  Deleting publish sm for: /data");
}

TEST_F(MountsRegistrySmTest, PublishEntryThatNeverWas_IsNoOnesToTakeBack) {
  startRegistry();
  registrySm().handlePublishEntry("/nothing");
  EXPECT_TRUE(registrySm().publishRegistryEntrySm().empty());
}

TEST_F(MountsRegistrySmTest, WithoutAPeerTable_NobodyIsConnected) {
  start();
  service("Topology").group("default").path("a");
  connect(kA, {{"Topology", 3}});
  ASSERT_TRUE(isMounting(kA, "a"));
  oobStatus()->peerTableIs(nullptr);
  registrySm().handlePeer(systemId(kB));
  EXPECT_EQ(entrySm("a").admission(systemId(kA)), Admission::notConnected);
  traceIs(8);
  inactive(kB);
  forget(kB);
  EXPECT_EQ(1U, timesTraced(8, decided("a", kB)));
}

TEST_F(MountsRegistrySmTest, WithoutAPublishStatus_AReadyServiceIsToldToNobody) {
  const auto machine = mountsRegistrySmFactory(registry(), oobStatus(), heartbeatConfig(), root(),
                                               nullptr, serviceConfigDir());
  registry()->servicePublishReadyIs("Topology", true);
  machine->handleServicePublishReady("Topology");
  machine->handleServicePublishReady("Routing");
  EXPECT_FALSE(publishStatus()->servicePublishReady().value("Topology"));
}

using MountsRegistrySmDeathTest = MountsRegistrySmTest;

TEST_F(MountsRegistrySmDeathTest, PublishEntryThatChangesItsService_StopsTheProcess) {
  startRegistry();
  publishEntry("local", "Topology");
  registrySm().hasNotificationActiveIs(false);
  registry()->publishEntryDel("local");
  publishEntry("local", "Routing");
  EXPECT_DEATH(
      registrySm().handlePublishEntry("local"),
      testing::HasSubstr("!preSm || pe->serviceName() == preSm->publishEntry()->serviceName() "));
}

// ---- readiness

TEST_F(MountsRegistrySmTest, ServiceReadyWithoutPendingEntry_IsMirrored) {
  startRegistry();
  traceIs(8);
  registry()->servicePublishReadyIs("Topology", true);
  EXPECT_TRUE(publishStatus()->servicePublishReady().value("Topology"));
  expectTrace(8, "MountsRegistrySm::handleServicePublishReady: Topology");
  expectTrace(5, std::string(kReadySignature) + "Setting publishReady for Topology");
}

TEST_F(MountsRegistrySmTest, ServiceReadyWithAnArmedPresenceCheck_StaysUnsetAndSaysSo) {
  startRegistry();
  connect(kA, {{"Topology", 3}});
  publishEntry("local", "Topology")->readyToPublishIs(true);
  ASSERT_LE(registrySm().publishRegistryEntrySm().find("local")->entityPresenceCheckClockTimeMin(),
            std::numeric_limits<double>::max());
  traceIs(8);
  registry()->servicePublishReadyIs("Topology", true);
  EXPECT_FALSE(publishStatus()->servicePublishReady().has("Topology"));
  expectTrace(5, std::string(kReadySignature) + "Publish entry local not yet processed");
  EXPECT_THAT(traced(5), Not(Contains(testing::HasSubstr("Setting publishReady"))));
}

TEST_F(MountsRegistrySmTest, PendingEntryOfAnotherService_DoesNotHoldBack) {
  startRegistry();
  connect(kA, {{"Routing", 3}});
  publishEntry("local", "Routing")->readyToPublishIs(true);
  registry()->servicePublishReadyIs("Topology", true);
  EXPECT_TRUE(publishStatus()->servicePublishReady().value("Topology"));
}

TEST_F(MountsRegistrySmTest, NotProcessedMessage_IsInTheFastTraceToo) {
  startRegistry();
  connect(kA, {{"Topology", 3}});
  publishEntry("local", "Topology")->readyToPublishIs(true);
  Dualog::fastTraceIs(true);
  registry()->servicePublishReadyIs("Topology", true);
  std::vector<std::string> records;
  Zimlog::read([&](const Zimlog::Descriptor& descriptor, std::int64_t, std::string_view text) {
    EXPECT_EQ(5, descriptor.level);
    records.emplace_back(text);
  });
  EXPECT_THAT(records,
              Contains(std::string(kReadySignature) + "Publish entry local not yet processed"));
  EXPECT_THAT(traces().lines(), IsEmpty());  // the text trace is off
}

TEST_F(MountsRegistrySmTest, ServiceNoLongerReady_IsRemoved) {
  startRegistry();
  registry()->servicePublishReadyIs("Topology", true);
  registry()->servicePublishReadyIs("Topology", false);
  EXPECT_FALSE(publishStatus()->servicePublishReady().has("Topology"));
  registry()->servicePublishReadyIs("Topology", true);
  registry()->servicePublishReadyDel("Topology");
  EXPECT_FALSE(publishStatus()->servicePublishReady().has("Topology"));
}

TEST_F(MountsRegistrySmTest, ReadinessThatIsMirroredAlready_IsTracedOnly) {
  startRegistry();
  publishStatus()->servicePublishReadyIs("Topology", true);
  traceIs(8);
  registry()->servicePublishReadyIs("Topology", true);
  EXPECT_THAT(traced(8), ElementsAre("MountsRegistrySm::handleServicePublishReady: Topology"));
  EXPECT_THAT(traced(5), IsEmpty());
}

// ---- peers

TEST_F(MountsRegistrySmTest, PeerAdded_GetsAConnectionMachineAndAPublishStatus) {
  startRegistry();
  traceIs(8);
  connect(kA);
  EXPECT_NE(nullptr, registrySm().connectionServiceStatusDirSm().find(kA));
  EXPECT_NE(nullptr, publishStatus()->system(systemId(kA)));
  EXPECT_THAT(traced(8), ElementsAre("MountsRegistrySm::handlePeer 02:00:00:00:00:01",
                                     "MountsRegistrySm::handlePeer peer:02:00:00:00:00:01 added"));
}

TEST_F(MountsRegistrySmTest, PeersPresentAtStart_GetConnectionMachines) {
  connect(kA, {{"Topology", 3}});
  connect(kB, {{"Topology", 3}});
  startRegistry();
  EXPECT_EQ(2U, registrySm().connectionServiceStatusDirSm().size());
}

TEST_F(MountsRegistrySmTest, PeerWithoutClientStatus_GetsAConnectionMachineAllTheSame) {
  start();
  service("Topology").group("default").path("topology");
  peerTable().peerIs(systemId(kA), address(systemId(kA)));
  EXPECT_NE(nullptr, registrySm().connectionServiceStatusDirSm().find(kA));
  EXPECT_EQ(0U, registrySm().negotiatedServiceVersionForConnection("Topology", Orm::String(kA)));
}

TEST_F(MountsRegistrySmTest, PeerRemoved_EveryEntryMachineSeesItsConnectionChange) {
  start();
  service("Topology").group("default").path("a").path("b");
  publishEntry("local", "Routing");
  connect(kA, {{"Topology", 3}});
  traceIs(8);
  peerTable().peerDel(systemId(kA));
  EXPECT_THAT(traced(8), testing::IsSupersetOf(
                             {std::string("MountsRegistrySm::handlePeer ") + kA,
                              std::string("MountsRegistrySm::handlePeer peer:") + kA + " removed",
                              decided("a", kA), decided("b", kA), decidedToPublish("local", kA)}));
  EXPECT_EQ(nullptr, registrySm().connectionServiceStatusDirSm().find(kA));
  // The record of what is published to the system is not removed here.
  EXPECT_NE(nullptr, publishStatus()->system(systemId(kA)));
}

TEST_F(MountsRegistrySmTest, UnknownPeer_IsTracedOnly) {
  startRegistry();
  traceIs(8);
  registrySm().handlePeer(systemId(kA));
  EXPECT_THAT(traced(8), ElementsAre(std::string("MountsRegistrySm::handlePeer ") + kA));
}

TEST_F(MountsRegistrySmTest, PeerTableReplaced_ThePeersOfTheNewOneAreHandled) {
  startRegistry();
  const auto table = Orm::make<PeerTable>();
  table->peerIs(systemId(kB), address(systemId(kB)));
  oobStatus()->peerTableIs(table);
  EXPECT_EQ(table.get(), registrySm().peerTable());
  EXPECT_NE(nullptr, registrySm().connectionServiceStatusDirSm().find(kB));
  table->peerDel(systemId(kB));
  EXPECT_EQ(nullptr, registrySm().connectionServiceStatusDirSm().find(kB));
}

TEST_F(MountsRegistrySmTest, PeerTableGone_NothingIsWatched) {
  startRegistry();
  const Ptr<PeerTable> table = oobStatus()->peerTable();
  oobStatus()->peerTableIs(nullptr);
  EXPECT_EQ(nullptr, registrySm().peerTable());
  EXPECT_EQ(0U, table->notifieeCount());
  traceIs(8);
  registrySm().handleSwitchConnection();
  EXPECT_THAT(traced(8), ElementsAre("MountsRegistrySm::handleSwitchConnection"));
}

TEST_F(MountsRegistrySmTest, StartedWithoutAPeerTable_Starts) {
  oobStatus()->peerTableIs(nullptr);
  start();
  service("Topology").group("default").path("topology");
  EXPECT_TRUE(hasEntrySm("topology"));
  oobStatus()->peerTableIs(Orm::make<PeerTable>());
  connect(kA, {{"Topology", 3}});
  EXPECT_TRUE(isMounting(kA, "topology"));
}

// ---- connections

TEST_F(MountsRegistrySmTest, ConnectionChange_MountEntriesFirstThenPublishEntries) {
  start();
  publishEntry("local", "Topology");
  service("Topology").group("default").path("a").path("b");
  traceIs(8);
  registrySm().handleSwitchConnection(systemId(kA));
  std::vector<std::string> seen;
  for (const std::string& text : traced(8)) {
    if (text.find("::handleSwitchConnection") != std::string::npos) seen.push_back(text);
  }
  EXPECT_THAT(seen, ElementsAre(std::string("MountsRegistrySm::handleSwitchConnection ") + kA,
                                decided("a", kA), decided("b", kA), decidedToPublish("local", kA)));
}

TEST_F(MountsRegistrySmTest, AllConnections_EachPeerInTurn) {
  startRegistry();
  connect(kB);
  connect(kA);
  traceIs(8);
  registrySm().handleSwitchConnection();
  EXPECT_THAT(traced(8),
              ElementsAre("MountsRegistrySm::handleSwitchConnection",
                          std::string("MountsRegistrySm::handleSwitchConnection ") + kB,
                          std::string("MountsRegistrySm::handleSwitchConnection ") + kA));
}

TEST_F(MountsRegistrySmTest, EntryDeletedByAnEarlierDecision_IsSkipped) {
  start();
  const auto topology = service("Topology");
  topology.group("default").path("a").path("b").path("c");
  traceIs(8);
  // The first decision about the switch writes its status; who watches that takes "b" out.
  Support::Recorder recorder(topology.statusPtr(), [&](Orm::AttributeId attribute, const auto&) {
    if (attribute == ServiceMountStatus::Attr::systemStatus) registry()->mountEntryDel("b");
  });
  connect(kA, {{"Topology", 3}});
  EXPECT_THAT(traced(8), AllOf(Contains(decided("a", kA)), Not(Contains(decided("b", kA))),
                               Contains(decided("c", kA))));
  EXPECT_THAT(mounts().takeRequests(),
              ElementsAre(std::string("mount a from ") + kA, std::string("mount c from ") + kA));
}

TEST_F(MountsRegistrySmTest, EntryDeletedByItsOwnDecision_IsLeftInPeace) {
  start();
  const auto topology = service("Topology");
  topology.group("default").path("a").path("b");
  Support::Recorder recorder(topology.statusPtr(), [&](Orm::AttributeId attribute, const auto&) {
    if (attribute == ServiceMountStatus::Attr::systemStatus) registry()->mountEntryDel("a");
  });
  connect(kA, {{"Topology", 3}});
  EXPECT_FALSE(hasEntrySm("a"));
  EXPECT_THAT(mounts().takeRequests(), ElementsAre(std::string("mount b from ") + kA));
}

TEST_F(MountsRegistrySmTest, RegistryMachineGoesDuringItsOwnWalk_EverythingIsCleanedUp) {
  start();
  const auto topology = service("Topology");
  topology.group("default").path("a").path("b");
  Support::Recorder recorder(topology.statusPtr(), [&](Orm::AttributeId attribute, const auto&) {
    if (attribute == ServiceMountStatus::Attr::systemStatus) stopRegistry();
  });
  connect(kA, {{"Topology", 3}});
  EXPECT_TRUE(mounts().live().empty());
  EXPECT_EQ(0U, registry()->notifieeCount());
}

TEST_F(MountsRegistrySmTest, PeerThatGoesWhileItIsBeingAdded_LeavesNothingBehind) {
  start();
  const auto topology = service("Topology");
  topology.group("default").path("a");
  Support::Recorder recorder(topology.statusPtr(), [&](Orm::AttributeId attribute, const auto&) {
    if (attribute == ServiceMountStatus::Attr::systemStatus) peerTable().peerDel(systemId(kA));
  });
  connect(kA, {{"Topology", 3}});
  EXPECT_TRUE(registrySm().connectionServiceStatusDirSm().empty());
  EXPECT_TRUE(topology.status().systemStatus().empty());
  EXPECT_TRUE(mounts().live().empty());
}

TEST_F(MountsRegistrySmTest, EntryThatGoesWhileItsMachineIsMade_LeavesNoMachineBehind) {
  startConfig();
  const auto topology = service("Topology");
  topology.group("default").path("a").path("b");
  connect(kA, {{"Topology", 3}});
  Support::Recorder recorder(topology.statusPtr(), [&](Orm::AttributeId attribute, const auto&) {
    if (attribute == ServiceMountStatus::Attr::systemStatus) registry()->mountEntryDel("a");
  });
  startRegistry();
  EXPECT_FALSE(hasEntrySm("a"));
  EXPECT_THAT(mounts().takeRequests(), Contains(std::string("mount b from ") + kA));
  EXPECT_FALSE(isMounting(kA, "a"));
}

// ---- children

TEST_F(MountsRegistrySmTest, ChildAskedForAgain_IsTheOneThatIsThere) {
  startRegistry();
  const auto entry = registry()->mountEntryIs("topology", "/controller/mounts/topology", "T", "r");
  EXPECT_EQ(
      &entrySm("topology"),
      registrySm().mountsRegistryEntrySmIs(entry, oobStatus(), serviceConfigDir(), root()).get());
  const auto published = publishEntry("local", "Topology");
  EXPECT_EQ(registrySm().publishRegistryEntrySm().find("local"),
            registrySm().publishRegistryEntrySmIs(published, oobStatus(), publishStatus()).get());
  connect(kA);
  EXPECT_EQ(registrySm().connectionServiceStatusDirSm().find(kA),
            registrySm().connectionServiceStatusDirSmIs(kA, nullptr).get());
  EXPECT_EQ(registrySm().inactiveClientSm(),
            registrySm().inactiveClientSmIs(oobStatus(), serviceConfigDir()));
}

TEST_F(MountsRegistrySmTest, ChildrenDeletedTwice_Harmless) {
  start();
  service("Topology").group("default").path("topology");
  publishEntry("local", "Topology");
  connect(kA, {{"Topology", 3}});
  for (int time = 0; time != 2; ++time) {
    registrySm().mountsRegistryEntrySmDel("topology");
    registrySm().publishRegistryEntrySmDel("local");
    registrySm().connectionServiceStatusDirSmDel(kA);
    registrySm().inactiveClientSmDel();
  }
  EXPECT_TRUE(mounts().live().empty());
  EXPECT_EQ(nullptr, registrySm().inactiveClientSm());
}

TEST_F(MountsRegistrySmTest, NotificationOff_NothingIsDoneUntilItIsOnAgain) {
  start();
  service("Topology").group("default").path("topology");
  connect(kA, {{"Topology", 0}});
  registrySm().hasNotificationActiveIs(false);
  versionIs(kA, "Topology", 3);
  registry()->mountEntryIs("other", "/controller/mounts/other", "T", "r");
  EXPECT_THAT(mounts().takeRequests(), IsEmpty());
  EXPECT_FALSE(hasEntrySm("other"));
  registrySm().hasNotificationActiveIs(true);
  versionIs(kA, "Topology", 4);
  EXPECT_TRUE(isMounting(kA, "topology"));
}

TEST_F(MountsRegistrySmTest, RegistryMachineGoes_NothingWatchesAnyMore) {
  start();
  service("Topology").group("default").systems({kA}).versions({3}).path("topology");
  publishEntry("local", "Topology");
  connect(kA, {{"Topology", 3}});
  enabledIs("Topology", true);
  stopRegistry();
  EXPECT_EQ(0U, registry()->notifieeCount());
  EXPECT_EQ(0U, registry()->mountEntry("topology")->notifieeCount());
  EXPECT_EQ(0U, registry()->publishEntry("local")->notifieeCount());
  EXPECT_EQ(0U, oobStatus()->notifieeCount());
  EXPECT_EQ(0U, peerTable().notifieeCount());
  EXPECT_EQ(0U, serviceStatusDir(kA).notifieeCount());
  EXPECT_EQ(0U, serviceStatus(kA, "Topology").notifieeCount());
  EXPECT_EQ(0U, serviceConfigDir()->notifieeCount());
  EXPECT_EQ(0U, clock()->notifieeCount());
  EXPECT_TRUE(mounts().live().empty());
}

}  // namespace
}  // namespace Controller
