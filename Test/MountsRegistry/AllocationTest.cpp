#include <cstdlib>
#include <new>

#include "Test/Support/ControllerFixture.h"

// Deciding a connection that does not change neither formats nor allocates, while the traces are
// off. Every block of this executable is counted; slabs are off in these tests, so that the blocks
// of entities, strings and tables are seen as well.

namespace {
std::size_t blocks = 0;

void* counted(std::size_t size) {
  ++blocks;
  if (void* block = std::malloc(size != 0 ? size : 1)) return block;
  throw std::bad_alloc();
}
}  // namespace

void* operator new(std::size_t size) { return counted(size); }
void* operator new[](std::size_t size) { return counted(size); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }

namespace Controller {
namespace {

using Orm::Ptr;
using Orm::String;

constexpr const char* kA = "02:00:00:00:00:01";
constexpr const char* kB = "02:00:00:00:00:02";
constexpr const char* kC = "02:00:00:00:00:03";

class WithoutSlabs {
 protected:
  WithoutSlabs() : were_(Kobble::slabsEnabled()) { Kobble::slabsEnabledIs(false); }
  ~WithoutSlabs() { Kobble::slabsEnabledIs(were_); }

 private:
  bool were_;
};

class AllocationTest : private WithoutSlabs, public Support::ControllerFixture {
 protected:
  AllocationTest() {
    start();
    service("Topology").group("default").path("topology/status").path("topology/config");
    service("Routing").group("default").systems({kA}).versions({3}).path("topology/status");
    proxyService("Topology-Proxy").group("default").systems({kA, kB}).path("routing");
    service("Routing").group("second").path("published");
    for (const char* system : {kA, kB, kC}) {
      connect(system, {{"Topology", 3}, {"Routing", 3}});
    }
    versionIs(kC, "Topology", 0);
    versionIs(kC, "Routing", 0);
    // The fake writes down what it is asked; so nothing may be under way.
    for (Support::FakeMountSm* made : std::vector(mounts().live())) {
      made->reports(MountState::mounted);
      if (made->request().systemId == systemId(kC)) made->reports(MountState::unmounted);
    }
  }

  /// Blocks that `act` asks for when it is done for the second time.
  template <class Act>
  static std::size_t blocksOf(Act&& act) {
    act();
    const std::size_t before = blocks;
    act();
    return blocks - before;
  }
};

TEST_F(AllocationTest, BlocksAreCounted) {
  EXPECT_NE(0U, blocksOf([] { const String text("a text that nobody has yet"); }));
}

TEST_F(AllocationTest, DecidingMountedConnectionsAgain_AllocatesNothing) {
  EXPECT_EQ(0U, blocksOf([this] { registrySm().handleSwitchConnection(); }));
}

TEST_F(AllocationTest, DecidingOneConnectionAgain_AllocatesNothing) {
  for (const char* system : {kA, kB, kC}) {
    const Connection connection(*peerTable().peer(systemId(system)));
    EXPECT_EQ(0U, blocksOf([&] { registrySm().handleSwitchConnection(connection); })) << system;
    EXPECT_EQ(0U, blocksOf([&] { registrySm().handleSwitchConnection(systemId(system)); }))
        << system << ", whose name is a text that is there";
    for (const char* service : {"Topology", "Routing"}) {
      const String name(service);
      EXPECT_EQ(0U, blocksOf([&] { registrySm().handleServiceSwitchConnection(connection, name); }))
          << system;
    }
  }
}

TEST_F(AllocationTest, DecidingAllPeersOfAnEntryAgain_AllocatesNothing) {
  for (const char* path : {"topology/status", "topology/config", "routing", "published"}) {
    MountsRegistryEntrySm& entry = entrySm(path);
    EXPECT_EQ(0U, blocksOf([&] { entry.handleSwitchConnection(); })) << path;
  }
}

TEST_F(AllocationTest, NegotiatedVersionOfAKnownSystem_AllocatesNothing) {
  const Connection connection(*peerTable().peer(systemId(kA)));
  for (const char* service : {"Topology", "Topology-Proxy", "Routing", "Unknown"}) {
    const String name(service);
    EXPECT_EQ(
        0U, blocksOf([&] { registrySm().negotiatedServiceVersionForConnection(name, connection); }))
        << service;
  }
}

TEST_F(AllocationTest, VersionThatChangesWithoutConsequence_AllocatesNothing) {
  const Ptr<ServiceVersionStatusV1> status = Orm::make<ServiceVersionStatusV1>(true, true, 3U);
  serviceStatus(kB, "Topology").versionStatusIs(status);
  std::uint32_t version = 4;
  EXPECT_EQ(0U, blocksOf([&] { status->versionIs(version++); }));
}

TEST_F(AllocationTest, MountThatReportsAgain_AllocatesNothing) {
  Support::FakeMountSm& mountOfA = mount(kA, "topology/status");
  EXPECT_EQ(0U, blocksOf([&] {
              mountOfA.reports(MountState::failed);
              mountOfA.reports(MountState::mounted);
            }));
}

}  // namespace
}  // namespace Controller
