#include <gtest/gtest.h>

#include "Fabric/AttrlogView.h"
#include "Fabric/ControllerView.h"
#include "Fabric/Document.h"
#include "Fabric/GroupView.h"
#include "Fabric/PathView.h"
#include "Fabric/ServiceStatusView.h"
#include "Fabric/ServiceView.h"
#include "Fabric/SwitchView.h"

namespace Fabric {
namespace {

using Outcome = SimulatedMountView::Outcome;

TEST(ViewTest, AbsentMembers_HaveTheirDefaults) {
  const ControllerView controller(nullptr);
  EXPECT_EQ(controller.leader(), "");
  EXPECT_EQ(controller.heartbeat(), std::nullopt);
  EXPECT_EQ(controller.registryDir(), "/controller/mounts");
  EXPECT_EQ(controller.remoteRoot(), "");
  EXPECT_EQ(controller.mountTimeout(), 0);
  EXPECT_EQ(controller.reconnectRetries(), 0U);
  EXPECT_TRUE(controller.mountMonitor());

  const SwitchView leaf(nullptr);
  EXPECT_EQ(leaf.name(), "");
  EXPECT_FALSE(leaf.connected());
  EXPECT_TRUE(leaf.reachable());
  EXPECT_FALSE(leaf.inactive());
  EXPECT_TRUE(leaf.services().empty());
  EXPECT_EQ(leaf.mount().delay(), 0.1);
  EXPECT_EQ(leaf.mount().outcome("any"), Outcome::mounted);

  const ServiceStatusView status(nullptr);
  EXPECT_TRUE(status.enabled());
  EXPECT_TRUE(status.reported());
  EXPECT_TRUE(status.negotiated());
  EXPECT_EQ(status.version(), std::nullopt);

  const ServiceView service(nullptr);
  EXPECT_EQ(service.enabled(), true);
  EXPECT_FALSE(service.proxy());
  EXPECT_FALSE(service.mount().has_value());
  EXPECT_FALSE(service.publish().has_value());

  const ServiceBlockView block(nullptr);
  EXPECT_EQ(block.generation(), "");
  EXPECT_EQ(block.serviceName("T"), "T");
  EXPECT_TRUE(block.status());
  EXPECT_FALSE(block.ready());
  EXPECT_TRUE(block.groups().empty());

  const GroupView group(nullptr);
  EXPECT_FALSE(group.preserve());
  EXPECT_EQ(group.systems(), nullptr);
  EXPECT_EQ(group.versions(), nullptr);
  EXPECT_TRUE(group.paths().empty());
  EXPECT_TRUE(group.dirs().empty());

  const PathView path(nullptr);
  EXPECT_EQ(path.type(), "");
  EXPECT_EQ(path.flags(), "");
  EXPECT_EQ(path.target(), "");
  EXPECT_EQ(path.remote(), "");
  EXPECT_FALSE(path.ready());

  const AttrlogView connection(nullptr);
  EXPECT_TRUE(connection.passive());
  EXPECT_TRUE(connection.active());
  EXPECT_TRUE(connection.demuxer());
  EXPECT_TRUE(connection.connected());
  EXPECT_EQ(connection.sync(), 0);
}

TEST(ViewTest, WrittenMembers_AreRead) {
  const Document document = Document::parse("f", R"(
controller: {leader: g, heartbeat: 2.5, registryDir: /m, remoteRoot: /r, mountTimeout: 30,
             reconnectRetries: 4294967295, mountMonitor: false}
switches:
  "02:00:00:00:00:01":
    name: leaf1
    connected: true
    reachable: false
    inactive: true
    services: {T: {enabled: false, reported: false, negotiated: false, version: 4294967295}}
    mount: {delay: 3, outcome: stalled, paths: {a/b: failed, c/d: mounted}}
services:
  T:
    enabled: absent
    proxy: true
    mount:
      serviceName: ""
      status: false
      groups: {g: {preserve: true, systems: [], versions: {7: false},
                   paths: {a/b: {type: X, flags: r, target: /t}}}}
    publish:
      generation: g2
      ready: true
      groups: {g: {paths: {/a: {remote: b, type: Y}}, dirs: {/d: {ready: true}}}}
  U: {enabled: false}
attrlog:
  standby: {passive: false, active: false, demuxer: false, connected: false, sync: never}
  other: {sync: 0.5}
)");
  const Model& model = document.start();
  const ControllerView controller(model.block(Block::controller));
  EXPECT_EQ(controller.leader(), "g");
  EXPECT_EQ(controller.heartbeat(), 2.5);
  EXPECT_EQ(controller.registryDir(), "/m");
  EXPECT_EQ(controller.remoteRoot(), "/r");
  EXPECT_EQ(controller.mountTimeout(), 30);
  EXPECT_EQ(controller.reconnectRetries(), 4294967295U);
  EXPECT_FALSE(controller.mountMonitor());

  const SwitchView leaf(model.find(Block::switches, "02:00:00:00:00:01"));
  EXPECT_EQ(leaf.name(), "leaf1");
  EXPECT_TRUE(leaf.connected());
  EXPECT_FALSE(leaf.reachable());
  EXPECT_TRUE(leaf.inactive());
  EXPECT_EQ(leaf.mount().delay(), 3);
  EXPECT_EQ(leaf.mount().outcome("x"), Outcome::stalled);
  EXPECT_EQ(leaf.mount().outcome("a/b"), Outcome::failed);
  EXPECT_EQ(leaf.mount().outcome("c/d"), Outcome::mounted);
  const ServiceStatusView status(leaf.services().find("T"));
  EXPECT_FALSE(status.enabled());
  EXPECT_FALSE(status.reported());
  EXPECT_FALSE(status.negotiated());
  EXPECT_EQ(status.version(), 4294967295U);

  const ServiceView service(model.find(Block::services, "T"));
  EXPECT_EQ(service.enabled(), std::nullopt);
  EXPECT_TRUE(service.proxy());
  EXPECT_EQ(ServiceView(model.find(Block::services, "U")).enabled(), false);
  EXPECT_EQ(service.mount()->serviceName("T"), "");
  EXPECT_FALSE(service.mount()->status());
  const GroupView group(service.mount()->groups().find("g"));
  EXPECT_TRUE(group.preserve());
  ASSERT_NE(group.systems(), nullptr);
  EXPECT_TRUE(group.systems()->empty());
  ASSERT_NE(group.versions(), nullptr);
  EXPECT_EQ(GroupView::versionOf(*group.versions()->begin()->key), 7U);
  const PathView path(group.paths().find("a/b"));
  EXPECT_EQ(path.type(), "X");
  EXPECT_EQ(path.flags(), "r");
  EXPECT_EQ(path.target(), "/t");

  EXPECT_EQ(service.publish()->generation(), "g2");
  EXPECT_EQ(service.publish()->serviceName("T"), "T");
  EXPECT_TRUE(service.publish()->ready());
  const GroupView published(service.publish()->groups().find("g"));
  EXPECT_EQ(PathView(published.paths().find("/a")).remote(), "b");
  EXPECT_EQ(PathView(published.paths().find("/a")).type(), "Y");
  EXPECT_TRUE(PathView(published.dirs().find("/d")).ready());

  const AttrlogView connection(model.find(Block::attrlog, "standby"));
  EXPECT_FALSE(connection.passive());
  EXPECT_FALSE(connection.active());
  EXPECT_FALSE(connection.demuxer());
  EXPECT_FALSE(connection.connected());
  EXPECT_EQ(connection.sync(), std::nullopt);
  EXPECT_EQ(AttrlogView(model.find(Block::attrlog, "other")).sync(), 0.5);
}

}  // namespace
}  // namespace Fabric
