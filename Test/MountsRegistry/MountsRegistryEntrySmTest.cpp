#include "Controllerdb/MountsRegistry/MountsRegistryEntrySm.h"
#include "Test/Support/ControllerFixture.h"

// The machine's mounters and its decisions.
namespace Controller {
namespace {

using Orm::String;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr const char* kA = "02:00:00:00:00:01";
constexpr const char* kB = "02:00:00:00:00:02";

const std::string kCanMount =
    "bool Controller::MountsRegistryEntrySm::canMountFromConnection(const String&): ";
const std::string kMatching =
    "bool Controller::MountsRegistryEntrySm::matchingServiceVersionFilter(const String&, const "
    "String&): ";
const std::string kHandleMounter =
    "void Controller::MountsRegistryEntrySm::handleMounter(const String&): ";

class MountsRegistryEntrySmTest : public Support::ControllerFixture {
 protected:
  MountsRegistryEntrySmTest() { start(); }

  MountsRegistryEntrySm& entry() const { return entrySm("topology"); }
  /// Decides one connection, with the traces of that alone.
  bool canMount(const char* system = kA) {
    traces().clear();
    traceIs(8);
    return entry().canMountFromConnection(String(system));
  }
  bool interested(const char* service, const char* system = kA) {
    traces().clear();
    traceIs(8);
    return entry().mounterIsInterestedInConnection(*entry().registryEntry()->mounter(service),
                                                   String(system));
  }
};

// ---- mounters

TEST_F(MountsRegistryEntrySmTest, NewEntry_TracesItsInitializationUnderTheOldPrefix) {
  traceIs(8);
  registry()->mountEntryIs("topology", "/controller/mounts/topology", "T", "r");
  expectTrace(8, "MoutnsRegistryEntrySm::handleInitialized");
  EXPECT_TRUE(entry().initialized());
  EXPECT_FALSE(entry().wildcard());
  EXPECT_EQ("topology", entry().entryName());
}

TEST_F(MountsRegistryEntrySmTest, NewMounter_GetsAMachineIsLoggedAndDecidesEveryConnection) {
  connect(kA, {{"Topology", 3}});
  connect(kB, {{"Topology", 3}});
  traceIs(8);
  service("Topology").group("default").path("topology");
  EXPECT_NE(nullptr, entry().mounterConfigSm().find("Topology"));
  expectTrace(8, "MountsRegistryEntrySm::handleMounter topology");
  expectTrace(8, "MountsRegistryEntrySm::evaluateMounters topology");
  expectTrace(5, kHandleMounter + " new mounter:topology service:Topology group:default");
  EXPECT_THAT(mounts().takeRequests(), ElementsAre("mount topology from 02:00:00:00:00:01",
                                                   "mount topology from 02:00:00:00:00:02"));
}

TEST_F(MountsRegistryEntrySmTest, MounterNotifiedAgain_ChangesNothing) {
  service("Topology").group("default").path("topology");
  const MounterConfigSm* const machine = entry().mounterConfigSm().find("Topology");
  traceIs(8);
  entry().handleMounter("Topology");
  entry().handleMounter();
  EXPECT_EQ(machine, entry().mounterConfigSm().find("Topology"));
  EXPECT_THAT(traced(5), Not(Contains(HasSubstr("new mounter"))));
}

TEST_F(MountsRegistryEntrySmTest, MountersPresentWhenTheMachineIsMade_GetMachines) {
  stopRegistry();
  service("Topology").group("default").path("topology");
  service("Routing").group("default").path("topology");
  connect(kA, {{"Topology", 3}});
  traceIs(8);
  startRegistry();
  EXPECT_EQ(2U, entry().mounterConfigSm().size());
  EXPECT_EQ(2U, timesTraced(8, "MountsRegistryEntrySm::handleMounter topology"));
  // The peer's versions ask for the mount; the last step of the start decides every peer again.
  EXPECT_THAT(mounts().takeRequests(), ElementsAre("mount topology from 02:00:00:00:00:01",
                                                   "remount topology from 02:00:00:00:00:01"));
}

TEST_F(MountsRegistryEntrySmTest, LastMounterGone_ItsMachineGoesAndEveryConnectionIsRefused) {
  connect(kA, {{"Topology", 3}});
  connect(kB, {{"Topology", 3}});
  service("Topology").group("default").path("topology");
  mounts().takeRequests();
  traceIs(8);
  service("Topology").group("default").withoutPath("topology");
  EXPECT_TRUE(entry().mounterConfigSm().empty());
  EXPECT_FALSE(entry().wildcard());
  expectTrace(5, kHandleMounter + " mounter gone:topology service:Topology");
  expectTrace(5, kCanMount + " no version negotiated:02:00:00:00:00:01");
  expectTrace(5, kCanMount + " no version negotiated:02:00:00:00:00:02");
  EXPECT_THAT(mounts().takeRequests(), ElementsAre("unmount topology from 02:00:00:00:00:01",
                                                   "unmount topology from 02:00:00:00:00:02"));
}

TEST_F(MountsRegistryEntrySmTest, UnknownMounterGone_ChangesNothing) {
  service("Topology").group("default").path("topology");
  traceIs(8);
  entry().handleMounter("Routing");
  EXPECT_THAT(traced(5), Not(Contains(HasSubstr("mounter gone"))));
  EXPECT_EQ(1U, entry().mounterConfigSm().size());
}

TEST_F(MountsRegistryEntrySmTest, WildcardMounter_IsNamedByTheFirstWithoutFilters) {
  service("A").group("g").systems({kA}).path("topology");
  traceIs(8);
  service("B").group("h").path("topology");
  expectTrace(5,
              "void Controller::MountsRegistryEntrySm::evaluateMounters():  wildcard "
              "mount:topology service:B group:h");
  service("C").group("i").path("topology");
  EXPECT_EQ(0U, timesTraced(5,
                            "void Controller::MountsRegistryEntrySm::evaluateMounters():  wildcard "
                            "mount:topology service:C group:i"));
  EXPECT_TRUE(entry().wildcard());
}

TEST_F(MountsRegistryEntrySmTest, MounterWithOneOfTheTwoFilters_IsNoWildcard) {
  service("A").group("g").systems({kA}).path("topology");
  EXPECT_FALSE(entry().wildcard());
  service("B").group("g").versions({3}).path("topology");
  EXPECT_FALSE(entry().wildcard());
}

TEST_F(MountsRegistryEntrySmTest, MounterWithoutAGroup_IsAWildcardAndAlwaysInterested) {
  const auto made = registry()->mountEntryIs("topology", "/controller/mounts/topology", "T", "r");
  made->mounterIs({"Topology", "g"}, nullptr, nullptr, Orm::make<ServiceMountStatus>());
  EXPECT_TRUE(entry().wildcard());
  EXPECT_TRUE(interested("Topology"));
}

// ---- admission

TEST_F(MountsRegistryEntrySmTest, UnfilteredEntry_AdmitsEveryConnectionWithAVersion) {
  service("Topology").group("default").path("topology");
  connect(kA, {{"Topology", 3}});
  EXPECT_TRUE(canMount());
  EXPECT_EQ("MountsRegistryEntrySm::canMountFromConnection topology 02:00:00:00:00:01",
            traced(8).front());
  EXPECT_THAT(traced(5), ElementsAre(kCanMount + " wildcard mount:02:00:00:00:00:01"));
}

TEST_F(MountsRegistryEntrySmTest, ConnectionWithoutAVersion_IsRefusedBeforeTheWildcard) {
  service("Topology").group("default").path("topology");
  connect(kA, {{"Topology", 0}});
  EXPECT_FALSE(canMount());
  EXPECT_THAT(traced(5), ElementsAre(kCanMount + " no version negotiated:02:00:00:00:00:01"));
}

TEST_F(MountsRegistryEntrySmTest, FilteredAndUnfilteredMounter_AreAWildcard) {
  service("A").group("g").systems({kB}).path("topology");
  service("B").group("g").path("topology");
  connect(kA, {{"A", 1}, {"B", 1}});
  EXPECT_TRUE(canMount());
  EXPECT_THAT(traced(5), ElementsAre(kCanMount + " wildcard mount:02:00:00:00:00:01"));
  EXPECT_FALSE(interested("A"));
  EXPECT_TRUE(interested("B"));
}

TEST_F(MountsRegistryEntrySmTest, VersionFilterAlone_AdmitsTheVersionsThatItHolds) {
  service("A").group("g").versions({3, 4}).path("topology");
  connect(kA, {{"A", 4}});
  EXPECT_TRUE(canMount());
  EXPECT_THAT(traced(5),
              ElementsAre(kMatching + " matched version:4 service:A connection:02:00:00:00:00:01",
                          kCanMount + " matched versionFilter:02:00:00:00:00:01",
                          kCanMount + " no connectionFilter for topology"));
  expectTrace(8,
              "MountsRegistryEntrySm::connectionMatchesVersionFilter topology 02:00:00:00:00:01");
  expectTrace(8, "Supported version for A for 02:00:00:00:00:01 3");
  expectTrace(8, "Supported version for A for 02:00:00:00:00:01 4");
  versionIs(kA, "A", 5);
  EXPECT_FALSE(canMount());
  EXPECT_THAT(
      traced(5),
      ElementsAre(kMatching + " version:5 not in filter service:A connection:02:00:00:00:00:01",
                  kCanMount + " version filter not matched for 02:00:00:00:00:01"));
}

TEST_F(MountsRegistryEntrySmTest, SecondServicesVersionFilter_Admits) {
  service("A").group("g").versions({3}).path("topology");
  service("B").group("g").versions({7}).path("topology");
  connect(kA, {{"A", 4}, {"B", 7}});
  EXPECT_TRUE(canMount());
  EXPECT_THAT(
      traced(5),
      ElementsAre(kMatching + " version:4 not in filter service:A connection:02:00:00:00:00:01",
                  kMatching + " matched version:7 service:B connection:02:00:00:00:00:01",
                  kCanMount + " matched versionFilter:02:00:00:00:00:01",
                  kCanMount + " no connectionFilter for topology"));
}

TEST_F(MountsRegistryEntrySmTest, ServiceWithoutAVersionBesideOneWithAVersion_IsLogged) {
  service("A").group("g").versions({3}).path("topology");
  service("B").group("g").systems({kA}).path("topology");
  connect(kA, {{"B", 7}});
  // B's version lets the connection pass the gate, but only A has a version filter.
  EXPECT_FALSE(canMount());
  EXPECT_THAT(traced(5), ElementsAre(kMatching + " no version service:A connection:" + kA,
                                     kCanMount + " version filter not matched for " + kA));
}

TEST_F(MountsRegistryEntrySmTest, VersionFilterOfOneAndSystemFilterOfAnother_AdmitTogether) {
  service("A").group("g").versions({3}).path("topology");
  service("B").group("g").systems({kA}).path("topology");
  connect(kA, {{"A", 3}});
  connect(kB, {{"A", 3}});
  EXPECT_TRUE(canMount(kA));
  EXPECT_FALSE(canMount(kB));
}

TEST_F(MountsRegistryEntrySmTest, VersionInTheFilterAsFalse_DoesNotMatch) {
  service("A").group("g").versions({4}).path("topology");
  entry().versionFilterIs("A")->versionIs(3, false);
  connect(kA, {{"A", 3}});
  EXPECT_FALSE(canMount());
  expectTrace(5, kMatching + " version:3 not in filter service:A connection:02:00:00:00:00:01");
  expectTrace(8, "Supported version for A for 02:00:00:00:00:01 3");
}

TEST_F(MountsRegistryEntrySmTest, SystemFilterAlone_AdmitsTheSystemsThatItHolds) {
  service("A").group("g").systems({kA}).path("topology");
  connect(kA, {{"A", 3}});
  connect(kB, {{"A", 3}});
  EXPECT_TRUE(canMount(kA));
  EXPECT_THAT(traced(5), ElementsAre(kCanMount + " no versionfilter for topology",
                                     kCanMount + " matched connectionFilter:02:00:00:00:00:01"));
  EXPECT_FALSE(canMount(kB));
  EXPECT_THAT(traced(5), ElementsAre(kCanMount + " no versionfilter for topology",
                                     kCanMount + " not in connectionFilter:02:00:00:00:00:02"));
}

TEST_F(MountsRegistryEntrySmTest, SystemWithACountOfZero_CountsAsAbsent) {
  service("A").group("g").systems({kB}).path("topology");
  connect(kA, {{"A", 3}});
  entry().connectionFilterIs(kA, 0);
  EXPECT_FALSE(canMount());
  expectTrace(5, kCanMount + " not in connectionFilter:02:00:00:00:00:01");
}

TEST_F(MountsRegistryEntrySmTest, EmptyUnionFilters_AdmitEveryone) {
  // The group has a filter, which includes nobody: the unions are empty, which limits nothing.
  service("A").group("g").systems({}).path("topology");
  connect(kA, {{"A", 3}});
  EXPECT_FALSE(entry().wildcard());
  EXPECT_TRUE(canMount());
  EXPECT_THAT(traced(5), ElementsAre(kCanMount + " no versionfilter for topology",
                                     kCanMount + " no connectionFilter for topology"));
}

TEST_F(MountsRegistryEntrySmTest, GateStopsAtTheFirstMounterWithAVersion) {
  service("A").group("g").systems({kA}).path("topology");
  service("B").group("g").versions({3}).path("topology");
  service("C").group("g").path("topology");
  connect(kA, {{"A", 0}, {"B", 3}, {"C", 3}});
  canMount();
  const std::string asked = "MountsRegistrySm::negotiatedServiceVersionForConnection ";
  EXPECT_EQ(1U, timesTraced(8, asked + "A " + kA));
  EXPECT_EQ(1U, timesTraced(8, asked + "B " + kA));
  EXPECT_EQ(0U, timesTraced(8, asked + "C " + kA));
}

TEST_F(MountsRegistryEntrySmTest, VersionGateByOneService_FiltersLookAtAll) {
  service("A").group("g").systems({kB}).path("topology");
  service("B").group("g").versions({3}).path("topology");
  connect(kB, {{"A", 9}, {"B", 3}});
  // A's version opens the gate; B's is the one that the version filter accepts.
  EXPECT_TRUE(canMount(kB));
  expectTrace(5, kMatching + " matched version:3 service:B connection:02:00:00:00:00:02");
}

TEST_F(MountsRegistryEntrySmTest, ServiceWithoutVersionFilter_DoesNotMatch) {
  service("A").group("g").versions({3}).path("topology");
  traceIs(8);
  EXPECT_FALSE(entry().matchingServiceVersionFilter("B", String(kA)));
  expectTrace(8,
              "MountsRegistryEntrySm::matchingServiceVersionFilter no version filter for service "
              "B");
}

// ---- one mounter's interest

TEST_F(MountsRegistryEntrySmTest, MounterWithoutFilters_IsInterestedInEveryConnection) {
  service("A").group("g").path("topology");
  EXPECT_TRUE(interested("A"));
  EXPECT_THAT(traced(8),
              ElementsAre("MountsRegistryEntrySm::mounterIsInterestedInConnection topology"));
}

TEST_F(MountsRegistryEntrySmTest, SystemFilter_DecidesTheInterestByItsValue) {
  service("A").group("g").systems({kA}).system(kB, false).path("topology");
  EXPECT_TRUE(interested("A", kA));
  EXPECT_FALSE(interested("A", kB));
  EXPECT_FALSE(interested("A", "02:00:00:00:00:03"));
}

TEST_F(MountsRegistryEntrySmTest, VersionFilter_DecidesTheInterestByTheNegotiatedVersion) {
  service("A").group("g").versions({3}).path("topology");
  connect(kA, {{"A", 3}});
  connect(kB, {{"A", 4}});
  EXPECT_TRUE(interested("A", kA));
  EXPECT_FALSE(interested("A", kB));
}

TEST_F(MountsRegistryEntrySmTest, ExcludedSystem_HasItsVersionTestedAllTheSame) {
  service("A").group("g").systems({kB}).versions({3}).path("topology");
  connect(kA, {{"A", 3}});
  EXPECT_FALSE(interested("A", kA));
  EXPECT_THAT(traced(5),
              ElementsAre(kMatching + " matched version:3 service:A connection:02:00:00:00:00:01"));
}

// ---- the reason of a decision

TEST_F(MountsRegistryEntrySmTest, Admission_IsTheReasonThatWasDecided) {
  service("A").group("g").systems({kA}).versions({3}).path("topology");
  const auto reason = [this] { return entry().admission(systemId(kA)); };
  EXPECT_EQ(Admission::notConnected, reason());
  connect(kA);
  EXPECT_EQ(Admission::undecided, reason());
  versionIs(kA, "A", 0);
  EXPECT_EQ(Admission::noVersionNegotiated, reason());
  versionIs(kA, "A", 4);
  EXPECT_EQ(Admission::versionNotInFilter, reason());
  service("A").group("g").system(kB, true).withoutSystem(kA).version(4, true);
  EXPECT_EQ(Admission::systemNotInFilter, reason());
  service("A").group("g").system(kA, true);
  EXPECT_EQ(Admission::admitted, reason());
  peerTable().peerDel(systemId(kA));
  EXPECT_EQ(Admission::notConnected, reason());
  connectWithoutConfig(kB, {{"A", 4}});
  EXPECT_EQ(Admission::noConnectionConfig, entry().admission(systemId(kB)));
}

TEST_F(MountsRegistryEntrySmTest, MounterAdmission_IsItsOwnFiltersWordOnAnAdmittedSystem) {
  service("A").group("g").path("topology");
  service("B").group("g").systems({kB}).path("topology");
  service("C").group("g").versions({7}).path("topology");
  connect(kA, {{"A", 3}, {"C", 3}});
  const auto ofMounter = [this](const char* service) {
    return entry().mounterAdmission(*entry().registryEntry()->mounter(service), systemId(kA));
  };
  EXPECT_EQ(Admission::admitted, ofMounter("A"));
  EXPECT_EQ(Admission::systemNotInFilter, ofMounter("B"));
  EXPECT_EQ(Admission::versionNotInFilter, ofMounter("C"));
}

TEST_F(MountsRegistryEntrySmTest, Admission_AskedForLeavesNoTrace) {
  service("A").group("g").systems({kA}).versions({3}).path("topology");
  connect(kA, {{"A", 3}});
  connect(kB, {{"A", 3}});
  traceIs(8);
  EXPECT_EQ(Admission::systemNotInFilter, entry().admission(systemId(kB)));
  EXPECT_EQ(Admission::admitted,
            entry().mounterAdmission(*entry().registryEntry()->mounter("A"), systemId(kA)));
  EXPECT_THAT(traced(8), testing::IsEmpty());
}

TEST_F(MountsRegistryEntrySmTest, Admission_OfASwitchThatIsBackIsNotThatOfTheMountStillLeaving) {
  service("A").group("g").path("topology");
  connect(kA, {{"A", 3}});
  mount(kA, "topology").reports(MountState::mounted);
  peerTable().peerDel(systemId(kA));
  connect(kA);
  EXPECT_EQ(Admission::undecided, entry().admission(systemId(kA)));
  versionIs(kA, "A", 3);
  EXPECT_EQ(Admission::admitted, entry().admission(systemId(kA)));
}

// ---- clean-up

TEST_F(MountsRegistryEntrySmTest, CleanedUpTwice_HarmlessAndEverythingIsGone) {
  service("A").group("g").systems({kA}).versions({3}).path("topology");
  connect(kA, {{"A", 3}});
  mount(kA, "topology").reports(MountState::mounting);
  EXPECT_EQ(1U, clock()->armedTimers());
  mounts().takeRequests();
  MountsRegistryEntrySm& machine = entry();
  traceIs(8);
  machine.doCleanup();
  machine.doCleanup();
  expectTrace(8, "MountsRegistryEntrySm::doCleanup topology");
  EXPECT_THAT(mounts().takeRequests(), ElementsAre("clean up topology from 02:00:00:00:00:01"));
  EXPECT_TRUE(mounts().live().empty());
  EXPECT_EQ(0U, clock()->armedTimers());
  EXPECT_TRUE(machine.mounterConfigSm().empty());
  EXPECT_TRUE(machine.mountSmDataSm().empty());
  EXPECT_TRUE(machine.connectionFilter().empty());
  EXPECT_TRUE(machine.versionFilter().empty());
  EXPECT_EQ(0U, service("A").status().mountedPathPrefix().size());
  EXPECT_EQ(0U, service("A").status().systemStatus().size());
  traces().clear();
  machine.handleSwitchConnection();
  machine.handleSwitchConnection(systemId(kA));
  registrySm().handleServiceSwitchConnection(systemId(kA), "A");
  EXPECT_THAT(mounts().requests(), IsEmpty());
}

}  // namespace
}  // namespace Controller
