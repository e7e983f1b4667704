#include <functional>
#include <random>
#include <utility>

#include "Controllerdb/MountsRegistry/MounterConfigSm.h"
#include "Test/Support/ControllerFixture.h"

namespace Controller {
namespace {

using Orm::Ptr;
using Orm::String;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr const char* kA = "02:00:00:00:00:01";
constexpr const char* kB = "02:00:00:00:00:02";

const std::string kAdd =
    "void Controller::MounterConfigSm::addSystemToConnectionFilter(const String&): ";
const std::string kRemove =
    "void Controller::MounterConfigSm::removeSystemFromConnectionFilter(const String&): ";
const std::string kDecided = "MountsRegistryEntrySm::handleSwitchConnection topology Peer:";

class MounterConfigSmTest : public Support::ControllerFixture {
 protected:
  MounterConfigSmTest() { start(); }

  MountsRegistryEntrySm& entry() const { return entrySm("topology"); }
  Support::MountGroup group(const char* serviceName) const {
    return service(serviceName).group("g");
  }
  std::uint32_t count(const char* system) const { return entry().connectionFilter().value(system); }
  /// The versions that the entry's union accepts of a service.
  std::vector<std::uint32_t> versions(const char* serviceName) const {
    std::vector<std::uint32_t> versions;
    if (const ServiceVersionFilter* filter = entry().versionFilter().find(serviceName)) {
      for (const auto& version : filter->version()) versions.push_back(version.key);
    }
    return versions;
  }
  /// Decisions about the one connected switch since tracing was started.
  std::size_t decisions() const { return timesTraced(8, kDecided + std::string(kA)); }
  void startTracing() {
    traces().clear();
    traceIs(8);
    mounts().takeRequests();
  }
};

// ---- systems

TEST_F(MounterConfigSmTest, FirstMounterOfASystem_AddsItAndRedecides) {
  connect(kA, {{"A", 3}});
  group("A").systems({}).path("topology");
  startTracing();
  group("A").system(kA, true);
  EXPECT_EQ(1U, count(kA));
  EXPECT_EQ(1U, decisions());
  expectTrace(8, "MounterConfigSm::OrmSystemFilter::handleIncludedSystem: 02:00:00:00:00:01");
  EXPECT_THAT(traced(5), Contains(testing::StartsWith(kAdd + " new filter:02:00:00:00:00:01")));
}

TEST_F(MounterConfigSmTest, SecondMounterOfASystem_CountsWithoutRedeciding) {
  connect(kA, {{"A", 3}});
  group("A").systems({kA}).path("topology");
  group("B").systems({kB}).path("topology");
  startTracing();
  group("B").system(kA, true);
  EXPECT_EQ(2U, count(kA));
  EXPECT_EQ(0U, decisions());
  expectTrace(5, kAdd + " path:topology refcount:1 filter:02:00:00:00:00:01");
}

TEST_F(MounterConfigSmTest, OneOfTwoMountersRemoved_TheOtherKeepsTheSystemInTheUnion) {
  connect(kA, {{"A", 3}});
  group("A").systems({kA}).path("topology");
  group("B").systems({kA, kB}).path("topology");
  EXPECT_EQ(2U, count(kA));
  startTracing();
  group("B").withoutSystem(kA);
  EXPECT_EQ(1U, count(kA));
  EXPECT_EQ(0U, decisions());
  expectTrace(5, kRemove + " path:topology refcount:2 filter:02:00:00:00:00:01");
  group("A").withoutSystem(kA);
  EXPECT_FALSE(entry().connectionFilter().has(kA));
  EXPECT_EQ(1U, decisions());
  expectTrace(5, kRemove + " del filter:02:00:00:00:00:01 path:topology");
}

TEST_F(MounterConfigSmTest, SystemSetToFalse_IsRemoved) {
  group("A").systems({kA, kB}).path("topology");
  group("A").system(kA, false);
  EXPECT_FALSE(entry().connectionFilter().has(kA));
  EXPECT_EQ(1U, count(kB));
}

TEST_F(MounterConfigSmTest, FalseMember_TakesNothingFromAnotherMountersCount) {
  group("A").systems({kA}).path("topology");
  group("B").systems({kB}).system(kA, false).path("topology");
  EXPECT_EQ(1U, count(kA));
  group("B").system(kA, true);
  EXPECT_EQ(2U, count(kA));
  group("B").system(kA, false).system(kA, true).system(kA, false).withoutSystem(kA);
  EXPECT_EQ(1U, count(kA));
  service("B").withoutGroup("g");
  EXPECT_EQ(1U, count(kA));
}

TEST_F(MounterConfigSmTest, UnknownSystemRemoved_ChangesNothing) {
  connect(kA, {{"A", 3}});
  group("A").systems({kA}).path("topology");
  startTracing();
  entry().mounterConfigSm().find("A")->removeSystemFromConnectionFilter(kB);
  EXPECT_EQ(0U, decisions());
  EXPECT_THAT(traced(5), IsEmpty());
}

TEST_F(MounterConfigSmTest, SystemAddedTwiceByOneMounter_CountsOnce) {
  group("A").systems({kA}).path("topology");
  entry().mounterConfigSm().find("A")->addSystemToConnectionFilter(kA);
  EXPECT_EQ(1U, count(kA));
}

TEST_F(MounterConfigSmTest, AllMembersDeleted_EachIsWithdrawn) {
  group("A").systems({kA, kB}).versions({3, 4}).path("topology");
  group("A").systemFilter().includedSystemDelAll();
  group("A").versionFilter().includedServiceVersionDelAll();
  EXPECT_TRUE(entry().connectionFilter().empty());
  EXPECT_TRUE(entry().versionFilter().empty());
}

// Decisions may ask a mounter's filter in place of the union, when the two are known to be the
// same. They must be so after everything that can happen to either, also within a notification.
TEST_F(MounterConfigSmTest, RandomChangesOfFilters_DecideAsTheUnionSays) {
  class Meddler final : public Orm::ReactorOn<MountFilterSystem, std::function<void()>> {
   public:
    explicit Meddler(std::function<void()>* meddle) : ReactorOn(meddle) {}
    void onAttribute(Orm::AttributeId, const Orm::Key&) override { (*owner())(); }
  };
  constexpr int kSystems = 5;
  const auto system = [](std::uint32_t number) {
    return String("02:00:00:00:00:0" + std::to_string(1 + number % kSystems));
  };
  for (std::uint32_t number = 0; number != kSystems; ++number)
    connect(system(number).c_str(), {{"A", 3}});
  for (std::uint32_t seed = 1; seed != 60; ++seed) {
    std::minstd_rand random(seed);
    const auto check = [&](const char* when) {
      for (std::uint32_t number = 0; number != kSystems; ++number) {
        const bool included =
            entry().connectionFilter().empty() || count(system(number).c_str()) != 0;
        ASSERT_EQ(entry().canMountFromConnection(system(number)), included)
            << when << ", seed " << seed << ", " << system(number).view();
      }
    };
    int depth = 0;
    std::function<void()> change = [&] {
      const char* const name = random() % 3 == 0 ? "B" : "A";
      const std::uint32_t what = static_cast<std::uint32_t>(random() % 8);
      const String one = system(static_cast<std::uint32_t>(random()));
      if (what == 0) {
        group(name).systems({kA, kB});
      } else if (what == 1) {
        group(name).systemFilter().includedSystemDelAll();
      } else if (what <= 4) {
        group(name).system(one, true);
      } else if (what == 5) {
        group(name).system(one, false);
      } else {
        group(name).withoutSystem(one);
      }
    };
    std::function<void()> meddle = [&] {
      if (depth > 1 || random() % 3 != 0) return;
      ++depth;
      change();
      check("within a notification");
      --depth;
    };
    for (const char* name : {"A", "B"}) group(name).systems({kA});
    Meddler first(&meddle);
    first.notifierIs(Ptr<MountFilterSystem const>(&group("A").systemFilter()));
    for (const char* name : {"A", "B"}) group(name).path("topology");
    Meddler last(&meddle);
    last.notifierIs(Ptr<MountFilterSystem const>(&group("A").systemFilter()));
    for (int turn = 0; turn != 40; ++turn) {
      change();
      check("afterwards");
      if (turn == 20) service("B").withoutGroup("g");
      if (turn == 20) group("B").systems({kB});
    }
    for (const char* name : {"A", "B"}) service(name).withoutGroup("g");
  }
}

// ---- versions

TEST_F(MounterConfigSmTest, VersionAddedOrRemoved_RedecidesEachTime) {
  connect(kA, {{"A", 3}});
  group("A").versions({}).path("topology");
  startTracing();
  group("A").version(3, true);
  EXPECT_THAT(versions("A"), ElementsAre(3));
  EXPECT_EQ(1U, decisions());
  expectTrace(8, "MounterConfigSm::OrmVersionFilter::handleIncludedServiceVersion: version=3");
  group("A").version(4, true);
  EXPECT_EQ(2U, decisions());
  group("A").withoutVersion(4);
  EXPECT_THAT(versions("A"), ElementsAre(3));
  EXPECT_EQ(3U, decisions());
  group("A").version(3, false);
  EXPECT_EQ(4U, decisions());
  EXPECT_EQ(nullptr, entry().versionFilter().find("A"));
}

TEST_F(MounterConfigSmTest, LastVersionOfAService_TakesItsFilterOutOfTheUnion) {
  connect(kA, {{"A", 3}, {"B", 3}});
  group("A").versions({4}).path("topology");
  group("B").versions({4}).path("topology");
  EXPECT_THAT(versions("A"), ElementsAre(4));
  group("A").withoutVersion(4);
  EXPECT_EQ(nullptr, entry().versionFilter().find("A"));
  EXPECT_FALSE(isMounting(kA, "topology"));
  startTracing();
  group("B").withoutVersion(4);
  expectTrace(5,
              "bool Controller::MountsRegistryEntrySm::canMountFromConnection(const String&):  no "
              "versionfilter for topology");
  EXPECT_TRUE(isMounting(kA, "topology"));
}

TEST_F(MounterConfigSmTest, SystemMembersAreFoldedBeforeVersionMembers) {
  traceIs(8);
  group("A").versions({3}).systems({kA}).path("topology");
  const std::vector<std::string> texts = traced(8);
  const auto at = [&texts](const char* text) {
    return std::find(texts.begin(), texts.end(), text) - texts.begin();
  };
  EXPECT_LT(at("MounterConfigSm::OrmSystemFilter::handleIncludedSystem: 02:00:00:00:00:01"),
            at("MounterConfigSm::OrmVersionFilter::handleIncludedServiceVersion: version=3"));
}

// ---- the group's filters themselves

TEST_F(MounterConfigSmTest, SystemFilterSet_TheWildcardGoesAndConnectionsAreDecidedOnce) {
  connect(kA, {{"A", 3}});
  group("A").path("topology");
  EXPECT_TRUE(entry().wildcard());
  startTracing();
  group("A").systems({kB, "02:00:00:00:00:03"});
  EXPECT_FALSE(entry().wildcard());
  EXPECT_EQ(1U, count(kB));
  EXPECT_EQ(1U, decisions());
  EXPECT_THAT(mounts().requests(), ElementsAre("unmount topology from 02:00:00:00:00:01"));
}

TEST_F(MounterConfigSmTest, SystemFilterReplaced_OldContributionsGoAndNewOnesCome) {
  connect(kA, {{"A", 3}});
  group("A").systems({kA}).path("topology");
  group("B").systems({kA}).path("topology");
  const Ptr<MountFilterSystem const> old = group("A").config().systemFilter();
  startTracing();
  group("A").systems({kB});
  EXPECT_EQ(1U, count(kA));
  EXPECT_EQ(1U, count(kB));
  EXPECT_EQ(1U, decisions());
  EXPECT_EQ(0U, old->notifieeCount());
}

TEST_F(MounterConfigSmTest, OldFilterChangesAfterItWasReplaced_NothingHappens) {
  group("A").systems({kA}).versions({3}).path("topology");
  const auto systems = group("A");
  const Ptr<MountFilterSystem> oldSystems(&systems.systemFilter());
  const Ptr<MountFilterServiceVersion> oldVersions(&systems.versionFilter());
  group("A").systems({kB}).versions({4});
  oldSystems->includedSystemIs("02:00:00:00:00:09", true);
  oldSystems->includedSystemDel(kA);
  oldVersions->includedServiceVersionIs(9, true);
  EXPECT_EQ(1U, entry().connectionFilter().size());
  EXPECT_EQ(1U, count(kB));
  EXPECT_THAT(versions("A"), ElementsAre(4));
}

TEST_F(MounterConfigSmTest, FiltersRemoved_MounterIsAWildcardAndDecidesOnceEach) {
  connect(kA, {{"A", 3}});
  group("A").systems({kB}).versions({4}).path("topology");
  EXPECT_FALSE(isMounting(kA, "topology"));
  startTracing();
  group("A").anySystem();
  EXPECT_TRUE(entry().connectionFilter().empty());
  EXPECT_FALSE(entry().wildcard());
  EXPECT_EQ(1U, decisions());
  group("A").anyVersion();
  EXPECT_TRUE(entry().versionFilter().empty());
  EXPECT_TRUE(entry().wildcard());
  EXPECT_EQ(2U, decisions());
  EXPECT_TRUE(isMounting(kA, "topology"));
}

TEST_F(MounterConfigSmTest, VersionFilterSetOrReplaced_IsFollowedWithOneDecision) {
  connect(kA, {{"A", 3}});
  group("A").path("topology");
  startTracing();
  group("A").versions({4, 5});
  EXPECT_FALSE(entry().wildcard());
  EXPECT_THAT(versions("A"), ElementsAre(4, 5));
  EXPECT_EQ(1U, decisions());
  group("A").versions({3});
  EXPECT_THAT(versions("A"), ElementsAre(3));
  EXPECT_EQ(2U, decisions());
  group("A").version(6, true);
  EXPECT_THAT(versions("A"), ElementsAre(3, 6));
}

TEST_F(MounterConfigSmTest, FilterSetOnAGroup_EachOfItsPathsFollows) {
  connect(kA, {{"A", 3}});
  group("A").path("topology").path("other");
  group("A").systems({kB});
  EXPECT_EQ(1U, entrySm("topology").connectionFilter().value(kB));
  EXPECT_EQ(1U, entrySm("other").connectionFilter().value(kB));
}

// ---- clean-up

TEST_F(MounterConfigSmTest, MounterGone_ItsSystemsAndVersionsAreWithdrawn) {
  group("A").systems({kA, kB}).versions({3}).path("topology");
  group("B").systems({kA}).path("topology");
  group("A").withoutPath("topology");
  EXPECT_EQ(1U, count(kA));
  EXPECT_FALSE(entry().connectionFilter().has(kB));
  EXPECT_TRUE(entry().versionFilter().empty());
  EXPECT_EQ(0U, group("A").systemFilter().notifieeCount());
  EXPECT_EQ(0U, group("A").versionFilter().notifieeCount());
}

TEST_F(MounterConfigSmTest, CleanUp_DeletesThePathsPrefixAndStatus) {
  connect(kA, {{"A", 3}});
  group("A").path("topology").path("other");
  mount(kA, "topology").reports(MountState::mounted);
  mount(kA, "other").reports(MountState::mounted);
  service("A").status().mountedPathPrefixIs("topology", "/somewhere");
  traceIs(8);
  entry().mounterConfigSmDel("A");
  expectTrace(8, "MounterConfigSm::doCleanup");
  EXPECT_FALSE(service("A").status().mountedPathPrefix().has("topology"));
  EXPECT_TRUE(service("A").status().mountedPathPrefix().has("other"));
  EXPECT_EQ(nullptr, mountStatus(kA, "A", "g", "topology"));
  EXPECT_NE(nullptr, mountStatus(kA, "A", "g", "other"));
  EXPECT_THAT(traced(8), Contains(HasSubstr(": Deleting mount status for ")));
  EXPECT_THAT(traced(8), Not(Contains(HasSubstr(": Deleting mount group status for "))));
}

TEST_F(MounterConfigSmTest, LastMountStatusOfAGroup_TakesGroupAndSystemStatusAlong) {
  connect(kA, {{"A", 3}});
  group("A").path("topology");
  mount(kA, "topology").reports(MountState::mounted);
  traceIs(8);
  entry().mounterConfigSmDel("A");
  EXPECT_EQ(nullptr, service("A").status().systemStatus(kA));
  EXPECT_THAT(traced(8), Contains(HasSubstr(": Deleting mount status for ")));
  EXPECT_THAT(traced(8), Contains(HasSubstr(": Deleting mount group status for ")));
  EXPECT_THAT(traced(8), Contains(HasSubstr(": Deleting system status for ")));
}

TEST_F(MounterConfigSmTest, SystemWithAnotherGroup_KeepsItsStatus) {
  connect(kA, {{"A", 3}});
  group("A").path("topology");
  service("A").group("second").path("other");
  mount(kA, "topology").reports(MountState::mounted);
  mount(kA, "other").reports(MountState::mounted);
  traceIs(8);
  entry().mounterConfigSmDel("A");
  EXPECT_EQ(nullptr, groupStatus(kA, "A", "g"));
  EXPECT_NE(nullptr, groupStatus(kA, "A", "second"));
  EXPECT_THAT(traced(8), Not(Contains(HasSubstr(": Deleting system status for "))));
}

TEST_F(MounterConfigSmTest, GroupStatusThatWasEmptyBefore_IsNotLookedAt) {
  connect(kA, {{"A", 0}});
  group("A").path("topology");
  ASSERT_NE(nullptr, groupStatus(kA, "A", "g"));
  entry().mounterConfigSmDel("A");
  EXPECT_NE(nullptr, groupStatus(kA, "A", "g"));
}

TEST_F(MounterConfigSmTest, CleanedUpTwice_Harmless) {
  group("A").systems({kA}).versions({3}).path("topology");
  group("B").systems({kA}).path("topology");
  const Ptr<MounterConfigSm> machine(entry().mounterConfigSm().find("A"));
  machine->doCleanup();
  machine->doCleanup();
  EXPECT_EQ(1U, count(kA));
  entry().mounterConfigSmDel("A");
  EXPECT_EQ(1U, count(kA));
  group("A").system(kB, true);  // nobody follows any more
  EXPECT_FALSE(entry().connectionFilter().has(kB));
}

/// The last version that goes lets the other service have the path.
TEST_F(MounterConfigSmTest, MountedAgainWhileVersionsAreWithdrawn_VersionsAreThoseOfTheNewMounter) {
  connect(kA, {{"B", 1}});
  group("A").versions({2, 3}).path("topology");
  group("B").systems({kA}).path("topology");
  bool once = true;
  mounts().onMadeIs([&](Support::FakeMountSm&) {
    if (std::exchange(once, false)) group("A").versions({4}).path("topology");
  });
  group("A").withoutPath("topology");
  ASSERT_FALSE(once);
  EXPECT_THAT(versions("A"), ElementsAre(4U));
  EXPECT_TRUE(service("A").status().mountedPathPrefix().has("topology"));
}

}  // namespace
}  // namespace Controller
