#include "Platform/Flipset/Flipset.h"
#include "Test/Support/ControllerFixture.h"

// The mount timer of a mount entry, and what it reports.
namespace Controller {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kA = "02:00:00:00:00:01";
constexpr const char* kB = "02:00:00:00:00:02";
const std::string kSignature = "void Controller::MountsRegistryEntrySm::handleMountTimeout()";
constexpr const char* kMessage = "ZORB is unable to mount from switch 02:00:00:00:00:01.";

class MountTimeoutTest : public Support::ControllerFixture {
 protected:
  void begin() {
    start();
    service("Topology").group("default").path("topology");
    connect(kA, {{"Topology", 3}});
  }
  Support::FakeMountSm& mountOfA() const { return mount(kA, "topology"); }
};

TEST_F(MountTimeoutTest, MountInProgressForThePeriod_IsReportedOnceWithItsSystem) {
  begin();
  mountOfA().reports(MountState::mounting);
  traceIs(8);
  run(299.999);
  EXPECT_THAT(log().texts(), IsEmpty());
  run(0.001);
  EXPECT_THAT(log().texts(), ElementsAre(kMessage));
  expectTrace(8, kSignature);
  EXPECT_THAT(traced(5), ElementsAre(kSignature + ": mount in progress too long"));
  run(10000);
  EXPECT_THAT(log().texts(), ElementsAre(kMessage));
  EXPECT_STREQ("ZORB_MOUNT_TIMEOUT", log().messages().front().handle->id());
}

TEST_F(MountTimeoutTest, FailedMount_IsReportedToo) {
  begin();
  mountOfA().reports(MountState::failed);
  traceIs(5);
  run(300);
  EXPECT_THAT(log().texts(), ElementsAre(kMessage));
  EXPECT_THAT(traced(5), ElementsAre(kSignature + ": mount failed"));
}

TEST_F(MountTimeoutTest, ClockThatFired_ReadsAsDisarmedUntilTheNextSlowMount) {
  begin();
  mountOfA().reports(MountState::mounting);
  EXPECT_EQ(1U, clock()->armedTimers());
  run(300);
  EXPECT_EQ(0U, clock()->armedTimers());
  mountOfA().reports(MountState::failed);
  EXPECT_EQ(1U, clock()->armedTimers());
  run(300);
  EXPECT_EQ(2U, log().messages().size());
}

TEST_F(MountTimeoutTest, StartedAgain_MovesTheOneWakeUp) {
  begin();
  mountOfA().reports(MountState::mounting);
  run(200);
  traceIs(8);
  mountOfA().reports(MountState::failed);
  expectTrace(8, "MountsRegistryEntrySm::startMountTimer, timeout period: 300");
  expectTrace(8,
              "void Controller::MountsRegistryEntrySm::OrmMountSmDataSm::handleMountStateTimer()");
  EXPECT_EQ(1U, clock()->armedTimers());
  run(299);
  EXPECT_THAT(log().texts(), IsEmpty());
  run(1);
  EXPECT_EQ(1U, log().messages().size());
}

TEST_F(MountTimeoutTest, MountThatMadeIt_IsNotReported) {
  begin();
  mountOfA().reports(MountState::mounting);
  mountOfA().reports(MountState::mounted);
  run(1000);
  EXPECT_THAT(log().texts(), IsEmpty());
}

TEST_F(MountTimeoutTest, OtherStates_StartNoTimer) {
  begin();
  mountOfA().reports(MountState::requested);
  mountOfA().reports(MountState::mounted);
  mountOfA().reports(MountState::unmounted);
  EXPECT_EQ(0U, clock()->armedTimers());
}

TEST_F(MountTimeoutTest, EachSlowMountOfTheEntry_IsReportedInTheOrderOfTheMounts) {
  begin();
  connect(kB, {{"Topology", 3}});
  mount(kB, "topology").reports(MountState::failed);
  run(100);
  mountOfA().reports(MountState::mounting);
  run(300);
  EXPECT_THAT(log().texts(), ElementsAre("ZORB is unable to mount from switch 02:00:00:00:00:01.",
                                         "ZORB is unable to mount from switch 02:00:00:00:00:02."));
}

TEST_F(MountTimeoutTest, SystemWithADisplayName_IsNamedByIt) {
  begin();
  oobStatus()->clientStatus(address(systemId(kA)))->nameIs("leaf-1");
  mountOfA().reports(MountState::mounting);
  run(300);
  EXPECT_THAT(log().texts(), ElementsAre("ZORB is unable to mount from switch leaf-1."));
}

TEST_F(MountTimeoutTest, SystemKnownByAnotherClientStatus_IsNamedByThat) {
  begin();
  oobStatus()->clientStatusDel(address(systemId(kA)));
  const Pomix::IpAddrPort elsewhere(Pomix::IpAddr::fromV4(77), 1);
  oobStatus()->clientStatusIs(elsewhere, systemId(kA))->nameIs("leaf-1");
  mountOfA().reports(MountState::mounting);
  run(300);
  EXPECT_THAT(log().texts(), ElementsAre("ZORB is unable to mount from switch leaf-1."));
}

TEST_F(MountTimeoutTest, MonitorToggledOff_NoTimerAndNoMessage) {
  Flipset::toggleIs("ControllerCommon.json", "ControllerMountMonitor", false);
  begin();
  traceIs(8);
  mountOfA().reports(MountState::mounting);
  EXPECT_EQ(0U, clock()->armedTimers());
  mountOfA().reports(MountState::failed);
  run(1000);
  EXPECT_THAT(log().texts(), IsEmpty());
  EXPECT_EQ(0U, timesTraced(8, kSignature));
}

TEST_F(MountTimeoutTest, MonitorToggledOn_IsTheDefault) {
  Flipset::toggleIs("ControllerCommon.json", "ControllerMountMonitor", true);
  begin();
  mountOfA().reports(MountState::mounting);
  EXPECT_EQ(1U, clock()->armedTimers());
}

TEST_F(MountTimeoutTest, EntryThatGoes_IsNotReported) {
  begin();
  mountOfA().reports(MountState::mounting);
  registry()->mountEntryDel("topology");
  EXPECT_EQ(0U, clock()->armedTimers());
  run(1000);
  EXPECT_THAT(log().texts(), IsEmpty());
}

TEST_F(MountTimeoutTest, TimeoutBeforeTheMachineIsInitialized_DoesNothing) {
  begin();
  mountOfA().reports(MountState::mounting);
  const auto machine = registrySm().mountsRegistryEntrySmIs(
      registry()->mountEntry("topology"), oobStatus(), serviceConfigDir(), root());
  EXPECT_EQ(300U, machine->timeoutPeriod());
  machine->doCleanup();
  traceIs(8);
  machine->handleMountTimeout();
  EXPECT_THAT(traced(8), IsEmpty());
}

TEST_F(MountTimeoutTest, AnotherClock_CarriesTheWakeUpOver) {
  begin();
  mountOfA().reports(MountState::mounting);
  const auto other = Orm::make<Orm::Clock>(std::make_unique<Orm::VirtualTime>(now()));
  MountsRegistryEntrySm& entry = entrySm("topology");
  entry.timeoutClockIs(other);
  EXPECT_EQ(0U, clock()->armedTimers());
  EXPECT_EQ(1U, other->armedTimers());
  entry.timeoutClockDel();
  EXPECT_EQ(0U, other->armedTimers());
  EXPECT_EQ(0U, other->notifieeCount());
}

}  // namespace
}  // namespace Controller
