#include <gtest/gtest.h>

#include <set>

#include "Fabric/Document.h"
#include "Fabric/World.h"

namespace Fabric {
namespace {

using Controllerdb::PublishStatus;

World worldOf(std::string_view controller) {
  const Document document = Document::parse("w", "controller: " + std::string(controller) + "\n");
  return World(ControllerView(document.start().block(Block::controller)));
}

TEST(WorldTest, World_IsBuiltEmpty) {
  const World world = worldOf("{leader: gen-1, heartbeat: 2}");
  EXPECT_EQ(world.controllerdbStatus()->leaderGenId(), "");
  EXPECT_FALSE(world.heartbeatConfig());
  EXPECT_TRUE(world.peerTable()->peer().empty());
  EXPECT_TRUE(world.oobStatus()->clientStatus().empty());
  EXPECT_TRUE(world.oobStatus()->inactive().empty());
  EXPECT_TRUE(world.serviceConfigDir()->service().empty());
  EXPECT_TRUE(world.publishStatus()->system().empty());
  EXPECT_TRUE(world.mountsRegistry()->mountEntry().empty());
}

TEST(WorldTest, Registry_HasWhatCountsAtStart) {
  const World world =
      worldOf("{registryDir: /m/r, remoteRoot: some/root, mountTimeout: 7, reconnectRetries: 5}");
  const Controller::MountsRegistry& registry = *world.mountsRegistry();
  EXPECT_EQ(registry.remoteRootPath(), "some/root");
  EXPECT_EQ(registry.mountTimeout(), 7);
  EXPECT_EQ(registry.reconnectRetries(), 5U);
  EXPECT_EQ(registry.registryDirPath(), "/m/r");
  EXPECT_EQ(registry.registryDir()->path(), "/m/r");
  EXPECT_EQ(registry.rootDir()->lookup("m/r"), world.registryDir());
}

TEST(WorldTest, Registry_HasItsDefaults) {
  const World world = worldOf("{}");
  const Controller::MountsRegistry& registry = *world.mountsRegistry();
  EXPECT_EQ(registry.registryDirPath(), "/controller/mounts");
  EXPECT_EQ(registry.remoteRootPath(), "");
  EXPECT_EQ(registry.mountTimeout(), 0);
  EXPECT_EQ(registry.reconnectRetries(), 0U);
}

TEST(WorldTest, ConfigurationDirectories_AreNoPartOfTheTreeOfLocalEntities) {
  const World world = worldOf("{registryDir: /r}");
  std::set<Fennix::Dir*> dirs;
  for (const auto& dir :
       {world.rootDir(), world.mountConfigDir(), world.mountStatusDir(), world.publishConfigDir(),
        world.publishStatusDir(), world.proxyMountConfigDir(), world.proxyMountStatusDir()}) {
    dirs.insert(dir.get());
  }
  EXPECT_EQ(dirs.size(), 7U);
  EXPECT_EQ(world.rootDir()->entity().size(), 1U);
  EXPECT_TRUE(world.rootDir()->entity("r"));
}

}  // namespace
}  // namespace Fabric
