#include <utility>

#include "Controllerdb/MountsRegistry/InactiveClientSm.h"
#include "Test/Support/ControllerFixture.h"

namespace Controller {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kA = "02:00:00:00:00:01";
constexpr const char* kB = "02:00:00:00:00:02";
constexpr const char* kEntered = "MountsRegistrySm::handleInactivePeer( 02:00:00:00:00:01 )";
constexpr const char* kReturn = "MountsRegistrySm::handleInactivePeer return";

class InactiveClientSmTest : public Support::ControllerFixture {
 protected:
  InactiveClientSmTest() {
    start();
    service("Topology").group("default").preserve().path("a").path("b");
  }

  std::string decided(const char* path, const char* system) const {
    return std::string("MountsRegistryEntrySm::handleSwitchConnection ") + path + " Peer:" + system;
  }
};

TEST_F(InactiveClientSmTest, SystemBecomesInactive_ChangesNothing) {
  traceIs(8);
  inactive(kA);
  EXPECT_THAT(traced(8), ElementsAre(kEntered, kReturn));
  EXPECT_THAT(traced(5), IsEmpty());
}

TEST_F(InactiveClientSmTest, SystemForgottenWhileItIsAPeer_ChangesNothing) {
  connect(kA, {{"Topology", 3}});
  inactive(kA);
  mounts().takeRequests();
  traceIs(8);
  forget(kA);
  EXPECT_THAT(traced(8), ElementsAre(kEntered, kReturn));
  EXPECT_THAT(mounts().requests(), IsEmpty());
}

TEST_F(InactiveClientSmTest, SystemForgottenWhileItIsNoPeer_EveryMountEntryDecidesIt) {
  inactive(kA);
  traceIs(8);
  forget(kA);
  EXPECT_EQ(1U, timesTraced(8, decided("a", kA)));
  EXPECT_EQ(1U, timesTraced(8, decided("b", kA)));
  EXPECT_EQ(kEntered, traced(8).front());
  EXPECT_EQ(kReturn, traced(8).back());
}

TEST_F(InactiveClientSmTest, SystemForgotten_ItsKeptMountsGo) {
  enabledIs("Topology", true);
  connect(kA, {{"Topology", 3}});
  mount(kA, "a").reports(MountState::mounted);
  inactive(kA);
  disconnect(kA);
  EXPECT_THAT(mounts().takeRequests(),
              testing::IsSupersetOf({"preserving unmount a from 02:00:00:00:00:01",
                                     "preserving unmount b from 02:00:00:00:00:01"}));
  forget(kA);
  EXPECT_THAT(mounts().takeRequests(),
              ElementsAre("unmount a from 02:00:00:00:00:01", "unmount b from 02:00:00:00:00:01"));
}

TEST_F(InactiveClientSmTest, EntryThatGoesDuringTheWalk_IsSkipped) {
  inactive(kA);
  service("Topology").status().systemStatusIs(kA);
  Support::Recorder recorder(service("Topology").statusPtr(),
                             [this](auto, const auto&) { registry()->mountEntryDel("b"); });
  traceIs(8);
  forget(kA);
  EXPECT_EQ(1U, timesTraced(8, decided("a", kA)));
  EXPECT_EQ(0U, timesTraced(8, decided("b", kA)));
}

TEST_F(InactiveClientSmTest, ServiceDisabledWithoutInactiveClients_OnlyTraces) {
  enabledIs("Topology", true);
  connect(kA, {{"Topology", 3}});
  mounts().takeRequests();
  traceIs(8);
  enabledIs("Topology", false);
  EXPECT_THAT(traced(8), ElementsAre("InactiveClientSm::handleEnabled Topology : false",
                                     "InactiveClientSm::handleEnabled() return"));
  EXPECT_THAT(mounts().requests(), IsEmpty());
}

TEST_F(InactiveClientSmTest, ServiceEnabled_DoesNothing) {
  inactive(kA);
  enabledIs("Topology", false);
  traceIs(8);
  enabledIs("Topology", true);
  EXPECT_THAT(traced(8), ElementsAre("InactiveClientSm::handleEnabled Topology : true"));
}

TEST_F(InactiveClientSmTest, ServiceDisabled_MountsOfEachInactiveSystemAreDisconnected) {
  enabledIs("Topology", true);
  enabledIs("Routing", true);
  connect(kA, {{"Topology", 3}});
  connect(kB, {{"Topology", 3}});
  inactive(kA);
  inactive(kB);
  disconnect(kA);
  mounts().takeRequests();
  traceIs(8);
  // Whichever service it is, and whether the inactive system is connected or not.
  enabledIs("Routing", false);
  EXPECT_THAT(mounts().takeRequests(), ElementsAre("preserving unmount a from 02:00:00:00:00:01",
                                                   "preserving unmount b from 02:00:00:00:00:01",
                                                   "preserving unmount a from 02:00:00:00:00:02",
                                                   "preserving unmount b from 02:00:00:00:00:02"));
  EXPECT_EQ("InactiveClientSm::handleEnabled() return", traced(8).back());
  enabledIs("Topology", false);  // no mounter whose service is enabled is left
  EXPECT_THAT(mounts().takeRequests(), Contains("unmount a from 02:00:00:00:00:01"));
}

TEST_F(InactiveClientSmTest, ServiceConfiguredAsDisabled_IsHandledAtOnce) {
  traceIs(8);
  serviceConfigDir()->serviceIs("Routing");
  EXPECT_THAT(traced(8), ElementsAre("InactiveClientSm::handleEnabled Routing : false",
                                     "InactiveClientSm::handleEnabled() return"));
}

TEST_F(InactiveClientSmTest, ServiceThatLeftTheConfiguration_IsNotFollowedAnyMore) {
  const auto config = serviceConfigDir()->serviceIs("Topology");
  serviceConfigDir()->serviceDel("Topology");
  EXPECT_EQ(0U, config->notifieeCount());
  traceIs(8);
  config->enabledIs(true);
  EXPECT_THAT(traced(8), IsEmpty());
}

TEST_F(InactiveClientSmTest, ServiceThatIsReplacedUnseen_IsFollowedAndTheOldOneIsNot) {
  enabledIs("Topology", true);
  const Orm::Ptr<ServiceConfigV1> old(serviceConfigDir()->service("Topology"));
  serviceConfigDir()->hasNotificationActiveIs(false);
  serviceConfigDir()->serviceDel("Topology");
  serviceConfigDir()->hasNotificationActiveIs(true);
  const auto replaced = Orm::make<ServiceConfigV1>("Topology");
  replaced->enabledIs(true);
  serviceConfigDir()->serviceIs(replaced);
  EXPECT_EQ(0U, old->notifieeCount());
  EXPECT_EQ(1U, replaced->notifieeCount());
  traceIs(8);
  replaced->enabledIs(false);
  EXPECT_EQ("InactiveClientSm::handleEnabled Topology : false", traced(8).front());
}

/// Takes the member away and puts it in again, while the machine has not been told of it yet.
class Reinserting : public Orm::Reactor {
 public:
  explicit Reinserting(const Orm::Ptr<ServiceConfigDir>& dir) : dir_(dir) { watchedIs(dir); }
  void onAttribute(Orm::AttributeId, const Orm::Key&) override {
    if (std::exchange(done_, true)) return;
    dir_->serviceDel("Topology");
    dir_->serviceIs("Topology")->enabledIs(true);
  }

 private:
  Orm::Ptr<ServiceConfigDir> dir_;
  bool done_ = false;
};

TEST_F(InactiveClientSmTest, ServiceReinsertedWithinItsOwnNotification_IsFollowedOnce) {
  stopRegistry();
  const Reinserting first(serviceConfigDir());
  startRegistry();
  enabledIs("Topology", true);
  EXPECT_EQ(1U, serviceConfigDir()->service("Topology")->notifieeCount());
  traceIs(8);
  enabledIs("Topology", false);
  EXPECT_EQ(1U, timesTraced(8, "InactiveClientSm::handleEnabled Topology : false"));
}

TEST_F(InactiveClientSmTest, ServicesPresentAtStart_AreFollowed) {
  stopRegistry();
  enabledIs("Topology", true);
  startRegistry();
  traceIs(8);
  enabledIs("Topology", false);
  EXPECT_EQ("InactiveClientSm::handleEnabled Topology : false", traced(8).front());
}

TEST_F(InactiveClientSmTest, CleanedUpTwice_Harmless) {
  enabledIs("Topology", true);
  const auto machine = registrySm().inactiveClientSm();
  machine->doCleanup();
  machine->doCleanup();
  traceIs(8);
  enabledIs("Topology", false);
  inactive(kA);
  EXPECT_THAT(traced(8), IsEmpty());
}

TEST_F(InactiveClientSmTest, WithoutAServiceConfigurationDirectory_StillForgetsSystems) {
  stopRegistry();
  const auto registrySm = mountsRegistrySmFactory(registry(), oobStatus(), heartbeatConfig(),
                                                  root(), publishStatus(), nullptr);
  inactive(kA);
  traceIs(8);
  forget(kA);
  EXPECT_EQ(1U, timesTraced(8, decided("a", kA)));
}

}  // namespace
}  // namespace Controller
