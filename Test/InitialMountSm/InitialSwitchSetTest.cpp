#include <gtest/gtest.h>

#include "Controllerdb/InitialMountSm/InitialSwitchSet.h"
#include "Test/Support/Recorder.h"

namespace Controller {
namespace {

const SystemId kLeaf1 = SystemId::ofName("02:00:00:00:00:01");
const SystemId kLeaf2 = SystemId::ofName("02:00:00:00:00:02");

TEST(InitialSwitchSetTest, Members_AreInsertedOverwrittenAndRemoved) {
  const auto set = Orm::make<InitialSwitchSet>();
  set->initialSwitchIs(kLeaf1, true);
  set->initialSwitchIs(kLeaf2, true);
  EXPECT_EQ(set->initialSwitch().size(), 2U);
  set->initialSwitchIs(kLeaf1, false);
  EXPECT_EQ(set->initialSwitch().size(), 2U);
  EXPECT_FALSE(set->initialSwitch().value(kLeaf1));
  set->initialSwitchDel(kLeaf1);
  set->initialSwitchDel(kLeaf1);
  EXPECT_FALSE(set->initialSwitch().has(kLeaf1));
  set->initialSwitchDelAll();
  EXPECT_TRUE(set->initialSwitch().empty());
}

TEST(InitialSwitchSetTest, Changes_AreToldToNobody) {
  const auto set = Orm::make<InitialSwitchSet>();
  const Support::Recorder recorder(set);
  set->initialSwitchIs(kLeaf1, true);
  set->initialSwitchIs(kLeaf1, false);
  set->initialSwitchDel(kLeaf1);
  set->initialSwitchIs(kLeaf2, true);
  set->initialSwitchDelAll();
  set->completeIs(true);
  EXPECT_EQ(recorder.told(), 0U);
}

TEST(InitialSwitchSetTest, Snapshot_HasThePeersInTheirOrder) {
  const Pomix::IpAddrPort address(Pomix::IpAddr::fromV4(0x0a000001), 1);
  const auto table = Orm::make<PeerTable>();
  const auto set = Orm::make<InitialSwitchSet>();
  EXPECT_TRUE(set->isSnapshotOf(*table));
  table->peerIs(kLeaf2, address);
  table->peerIs(kLeaf1, address);
  EXPECT_FALSE(set->isSnapshotOf(*table));
  set->snapshotIs(*table);
  EXPECT_TRUE(set->complete());
  EXPECT_TRUE(set->initialSwitch().value(kLeaf1));
  EXPECT_TRUE(set->initialSwitch().value(kLeaf2));
  EXPECT_TRUE(set->isSnapshotOf(*table));
  table->peerDel(kLeaf2);
  EXPECT_FALSE(set->isSnapshotOf(*table));
  table->peerIs(kLeaf2, address);
  EXPECT_FALSE(set->isSnapshotOf(*table));
}

TEST(InitialSwitchSetTest, Complete_StartsFalse) {
  const auto set = Orm::make<InitialSwitchSet>();
  EXPECT_FALSE(set->complete());
  set->completeIs(true);
  EXPECT_TRUE(set->complete());
}

}  // namespace
}  // namespace Controller
