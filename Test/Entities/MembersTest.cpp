#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "Platform/Entities/ControllerOob/Status.h"
#include "Platform/Entities/MountFilter/MountFilterSystem.h"
#include "Platform/Entities/PeerTable/PeerTable.h"
#include "Platform/Entities/ServiceConfig/ServiceConfigDir.h"
#include "Platform/Entities/ServiceMount/ServiceMountConfig.h"
#include "Platform/Entities/ServiceMount/ServiceMountStatus.h"
#include "Platform/Entities/ServicePublish/ServicePublishConfig.h"
#include "Platform/Orm/MutatorReinstantiatingError.h"
#include "Platform/Orm/Reactor.h"
#include "Test/Entities/Samples.h"

namespace Controller {
namespace {

using Orm::Ptr;
using Pomix::IpAddr;
using Pomix::IpAddrPort;
using Samples::kA;
using Samples::kB;
using Samples::kFirst;
using Samples::kSecond;

/// The attribute by which a member may not be asked for again; empty when nothing is wrong.
std::string refused(const std::function<void()>& ask) {
  try {
    ask();
  } catch (const Orm::MutatorReinstantiatingError& error) {
    return error.attribute();
  }
  return {};
}

/// Counts what an entity tells.
class Listener : public Orm::Reactor {
 public:
  explicit Listener(const Ptr<Orm::Entity const>& entity) { watchedIs(entity); }
  int told() const { return told_; }
  void onAttribute(Orm::AttributeId, const Orm::Key&) override { ++told_; }

 private:
  int told_ = 0;
};

TEST(PeerTableTest, PeerThatIsThere_IsGivenAgainUnlessItsAddressDiffers) {
  const auto table = Orm::make<PeerTable>();
  const auto peer = table->peerIs(kA, kFirst);
  const Listener listener(table);
  EXPECT_EQ(table->peerIs(kA, kFirst), peer);
  EXPECT_EQ(refused([&] { table->peerIs(kA, kSecond); }), "clientAddress");
  EXPECT_EQ(table->peer(kA)->clientAddress(), kFirst);
  EXPECT_EQ(listener.told(), 0);
}

TEST(PeerTableTest, PeerThatWasNotThere_IsFoundOnceItHasCome) {
  const auto table = Orm::make<PeerTable>();
  EXPECT_FALSE(table->peer(kA));
  EXPECT_FALSE(table->peer(kA));
  const auto peer = table->peerIs(kA, kFirst);
  EXPECT_EQ(table->peer(kA), peer.get());
  table->peerDel(kA);
  EXPECT_FALSE(table->peer(kA));
  table->peerIs(peer);
  EXPECT_EQ(table->peer(kA), peer.get());
}

TEST(OobStatusTest, InactiveClientThatIsThere_IsGivenAgainUnlessItsAddressDiffers) {
  const auto status = Orm::make<ControllerOob::Status>();
  const auto inactive = status->inactiveIs(kA, kFirst);
  EXPECT_EQ(status->inactiveIs(kA, kFirst), inactive);
  EXPECT_EQ(refused([&] { status->inactiveIs(kA, kSecond); }), "clientAddress");
}

TEST(OobStatusTest, ClientThatWasNotInactive_IsFoundOnceItIs) {
  const auto status = Orm::make<ControllerOob::Status>();
  for (int round = 0; round != 2; ++round) {
    EXPECT_FALSE(status->isInactive(kA));
    EXPECT_FALSE(status->isInactive(kA));
    status->inactiveIs(kA, kFirst);
    EXPECT_TRUE(status->isInactive(kA));
    EXPECT_FALSE(status->isInactive(kB));
    status->inactiveDelAll();
  }
}

TEST(ServiceMountStatusTest, SystemWithoutAStatus_IsFoundOnceItHasOneAndGoesOnce) {
  const auto status = Orm::make<ServiceMountStatus>();
  const Listener listener(status);
  EXPECT_FALSE(status->systemStatus("leaf1"));
  status->systemStatusDel("leaf1");
  EXPECT_EQ(listener.told(), 0);
  const auto made = status->systemStatusIs("leaf1");
  EXPECT_EQ(status->systemStatus("leaf1"), made.get());
  status->systemStatusDel("leaf1");
  status->systemStatusDel("leaf1");
  EXPECT_EQ(listener.told(), 2);
  EXPECT_FALSE(status->systemStatus("leaf1"));
}

TEST(SystemStatusTest, GroupStatusThatGoes_TellsOfItselfThatItHasLeft) {
  const auto system = Orm::make<SystemStatus>("leaf1");
  const Listener listener(system);
  for (const char* group : {"first", "second"}) {
    const auto status = system->serviceMountGroupStatusIs(group);
    const Listener left(status);
    system->serviceMountGroupStatusDel("other");
    EXPECT_EQ(left.told(), 0);
    if (status->groupName() == "first") {
      system->serviceMountGroupStatusDel(group);
      system->serviceMountGroupStatusDel(group);
    } else {
      system->serviceMountGroupStatusDelAll();
    }
    EXPECT_EQ(left.told(), 1);
  }
  EXPECT_EQ(listener.told(), 4);
  EXPECT_TRUE(system->serviceMountGroupStatus().empty());
}

TEST(OobStatusTest, ClientStatusThatIsThere_IsGivenAgainUnlessItsSystemDiffers) {
  const auto status = Orm::make<ControllerOob::Status>();
  const auto client = status->clientStatusIs(kFirst, kA);
  EXPECT_EQ(status->clientStatusIs(kFirst, kA), client);
  EXPECT_EQ(refused([&] { status->clientStatusIs(kFirst, kB); }), "systemId");
  EXPECT_EQ(status->clientStatusOfSystem(kA), client.get());
  EXPECT_EQ(status->clientStatusOfSystem(kB), nullptr);
}

TEST(OobStatusTest, FirstClientStatusOfASystem_IsTheNextOneWhenItGoes) {
  const auto status = Orm::make<ControllerOob::Status>();
  const IpAddrPort third(IpAddr::fromV4(0x0a000002), 3);
  status->clientStatusIs(kFirst, kA);
  status->clientStatusIs(kSecond, kB);
  status->clientStatusIs(third, kA);
  EXPECT_EQ(status->clientStatusOfSystem(kA)->clientAddress(), kFirst);
  status->clientStatusDel(kFirst);
  EXPECT_EQ(status->clientStatusOfSystem(kA)->clientAddress(), third);
  status->clientStatusDel(kFirst);
  status->clientStatusDel(third);
  EXPECT_EQ(status->clientStatusOfSystem(kA), nullptr);
  EXPECT_EQ(status->clientStatusOfSystem(kB)->clientAddress(), kSecond);
}

TEST(OobStatusTest, ClientStatusDelAll_TellsOfEachAndLeavesNone) {
  const auto status = Orm::make<ControllerOob::Status>();
  status->clientStatusIs(kFirst, kA);
  status->clientStatusIs(kSecond, kA);
  const Listener listener(status);
  status->clientStatusDelAll();
  EXPECT_EQ(listener.told(), 2);
  EXPECT_TRUE(status->clientStatus().empty());
  EXPECT_EQ(status->clientStatusOfSystem(kA), nullptr);
}

TEST(ServicePublishGroupConfigTest, MemberThatIsThere_IsGivenAgainUnlessAnAttributeDiffers) {
  const auto group = Orm::make<ServicePublishGroupConfig>("g");
  const auto path = group->publishConfigIs("/a", "a", "T");
  EXPECT_EQ(group->publishConfigIs("/a", "a", "T"), path);
  EXPECT_EQ(refused([&] { group->publishConfigIs("/a", "b", "U"); }), "remotePath");
  EXPECT_EQ(refused([&] { group->publishConfigIs("/a", "a", "U"); }), "type");
  const auto dir = group->publishDirIs("/d", "T", "d");
  EXPECT_EQ(group->publishDirIs("/d", "T", "d"), dir);
  EXPECT_EQ(refused([&] { group->publishDirIs("/d", "U", "e"); }), "type");
  EXPECT_EQ(refused([&] { group->publishDirIs("/d", "T", "e"); }), "remotePath");
  group->publishConfigDelAll();
  group->publishDirDelAll();
  EXPECT_TRUE(group->publishConfig().empty());
  EXPECT_TRUE(group->publishDir().empty());
}

TEST(ServiceMountGroupStatusTest, MountStatusDelAll_CountsNothingAnyMore) {
  const auto group = Orm::make<ServiceMountGroupStatus>("g");
  const auto kept = group->mountStatusIs("a");
  EXPECT_EQ(group->mountStatusIs("a"), kept);
  kept->mountStateIs(MountState::mounted);
  group->mountStatusIs("b");
  const Listener listener(group);
  group->mountStatusDelAll();
  EXPECT_EQ(listener.told(), 2);
  group->mountStatusDel("a");
  EXPECT_EQ(listener.told(), 2);
  EXPECT_EQ(group->mountStatusCount(MountState::mounted), 0U);
  EXPECT_EQ(group->mountStatusCount(MountState::unmounted), 0U);
  kept->mountStateIs(MountState::failed);
  EXPECT_EQ(group->mountStatusCount(MountState::failed), 0U);
}

TEST(EntitiesTest, MembersWithNothingButAName_AreGivenAgain) {
  const auto services = Orm::make<ServiceConfigDir>();
  EXPECT_EQ(services->serviceIs("T"), services->serviceIs("T"));
  const auto mounts = Orm::make<ServiceMountConfig>();
  EXPECT_EQ(mounts->mountGroupConfigIs("g"), mounts->mountGroupConfigIs("g"));
  const auto publications = Orm::make<ServicePublishConfig>();
  EXPECT_EQ(publications->publishGroupConfigIs("g"), publications->publishGroupConfigIs("g"));
  const auto status = Orm::make<ServiceMountStatus>();
  const auto system = status->systemStatusIs("s");
  EXPECT_EQ(status->systemStatusIs("s"), system);
  EXPECT_EQ(system->serviceMountGroupStatusIs("g"), system->serviceMountGroupStatusIs("g"));
}

TEST(MountFilterSystemTest, SystemThatIsNotThere_GoesWithoutAWord) {
  const auto filter = Orm::make<MountFilterSystem>("f");
  const Listener listener(filter);
  filter->includedSystemDel("leaf1");
  EXPECT_EQ(listener.told(), 0);
  filter->includedSystemIs("leaf1", true);
  filter->includedSystemDel("leaf1");
  EXPECT_EQ(listener.told(), 2);
}

TEST(MountFilterSystemTest, SystemThatWasLeftOut_IsFoundOnceItIsLetIn) {
  const auto filter = Orm::make<MountFilterSystem>("f");
  for (const char* system : {"leaf1", ""}) {
    EXPECT_FALSE(filter->includes(system));
    EXPECT_FALSE(filter->includes(system));
    filter->includedSystemIs(system, false);
    EXPECT_FALSE(filter->includes(system));
    filter->includedSystemIs(system, true);
    EXPECT_TRUE(filter->includes(system));
    EXPECT_FALSE(filter->includes("leaf2"));
    EXPECT_TRUE(filter->includes(system));
    filter->includedSystemDelAll();
    EXPECT_FALSE(filter->includes(system));
  }
}

TEST(MountFilterSystemTest, Changes_GrowsWhenAnythingChangesAndOnlyThen) {
  const auto filter = Orm::make<MountFilterSystem>("f");
  const auto grows = [&](const std::function<void()>& change) {
    const std::uint64_t before = filter->changes();
    change();
    return filter->changes() - before;
  };
  EXPECT_EQ(grows([&] { filter->includedSystemIs("leaf1", true); }), 1U);
  EXPECT_EQ(grows([&] { filter->includedSystemIs("leaf1", true); }), 0U);
  EXPECT_EQ(grows([&] { filter->includedSystemIs("leaf1", false); }), 1U);
  EXPECT_EQ(grows([&] { filter->includedSystemDel("leaf2"); }), 0U);
  EXPECT_EQ(grows([&] { filter->includedSystemDel("leaf1"); }), 1U);
  EXPECT_EQ(grows([&] { filter->includedSystemDelAll(); }), 0U);
  filter->includedSystemIs("leaf1", true);
  filter->includedSystemIs("leaf2", true);
  EXPECT_EQ(grows([&] { filter->includedSystemDelAll(); }), 2U);
}

TEST(MountStateTest, Names) {
  std::string all;
  for (int state = 0; state != 6; ++state) {
    appendTo(all, static_cast<MountState>(state));
    all += ' ';
  }
  EXPECT_EQ(all, "unmounted requested mounting failed mounted unknown ");
}

}  // namespace
}  // namespace Controller
