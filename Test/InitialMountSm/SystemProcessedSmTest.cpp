#include "Controllerdb/InitialMountSm/SystemProcessedSm.h"
#include "Test/Support/InitialMountFixture.h"

namespace Controller {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kService = "Topology";
constexpr const char* kGroup = "default";

class SystemProcessedSmTest : public Support::InitialMountFixture {
 protected:
  SystemProcessedSmTest() : topology_(service(kService)) { topology_.group(kGroup); }

  MountGroupInitialMountSm& group() const { return *groupSm(kService, kGroup); }
  SystemProcessedSm* systemSm(const char* system) const {
    return group().systemProcessedSm().find(system);
  }
  bool isProcessed(const char* system) const {
    return group().processedSwitchSetInternal()->processed().value(system);
  }
  ServiceMountGroupStatus& status(const char* system) const {
    return InitialMountFixture::status(system, kService, kGroup);
  }

  Support::MountService topology_;
};

TEST_F(SystemProcessedSmTest, SystemStatuses_EachHaveAMachineWhileTheyExist) {
  mountStatusOf(kService).systemStatusIs(kLeaf1);
  startInitialMounts();
  EXPECT_NE(systemSm(kLeaf1), nullptr);
  mountStatusOf(kService).systemStatusIs(kLeaf2);
  EXPECT_NE(systemSm(kLeaf2), nullptr);
  mountStatusOf(kService).systemStatusDel(kLeaf1);
  EXPECT_EQ(systemSm(kLeaf1), nullptr);
  EXPECT_NE(systemSm(kLeaf2), nullptr);
}

TEST_F(SystemProcessedSmTest, SystemStatusThatComesAndGoes_IsTraced) {
  startInitialMounts();
  traceIs(8);
  mountStatusOf(kService).systemStatusIs(kLeaf1);
  mountStatusOf(kService).systemStatusDel(kLeaf1);
  EXPECT_THAT(traced(8),
              ElementsAre("void Controller::MountGroupInitialMountSm::handleSystemStatus(const "
                          "String&): 02:00:00:00:00:01 default exists=true",
                          "void Controller::SystemProcessedSm::handleInitialized(): ",
                          "void Controller::MountGroupInitialMountSm::handleSystemStatus(const "
                          "String&): 02:00:00:00:00:01 default exists=false"));
}

TEST_F(SystemProcessedSmTest, MachineThatIsThere_IsKept) {
  const auto status = mountStatusOf(kService).systemStatusIs(kLeaf1);
  startInitialMounts();
  const auto* const machine = systemSm(kLeaf1);
  group().handleSystemStatus(kLeaf1);
  group().handleSystemStatus();
  EXPECT_EQ(group()
                .systemProcessedSmIs(kLeaf1, kGroup, status, group().processedSwitchSetInternal())
                .get(),
            machine);
  EXPECT_EQ(systemSm(kLeaf1), machine);
  group().systemProcessedSmDelAll();
  EXPECT_EQ(systemSm(kLeaf1), nullptr);
}

TEST_F(SystemProcessedSmTest, GroupStatus_GetsAMachineWhenItComes) {
  mountStatusOf(kService).systemStatusIs(kLeaf1);
  startInitialMounts();
  EXPECT_EQ(systemSm(kLeaf1)->groupProcessedSm(), nullptr);
  InitialMountFixture::status(kLeaf1, kService, "other");
  EXPECT_EQ(systemSm(kLeaf1)->groupProcessedSm(), nullptr);
  status(kLeaf1);
  EXPECT_NE(systemSm(kLeaf1)->groupProcessedSm(), nullptr);
}

TEST_F(SystemProcessedSmTest, OtherGroupName_DoesNothing) {
  InitialMountFixture::status(kLeaf1, kService, "other");
  mountStatusOf(kService).systemStatusIs(kLeaf1);
  startInitialMounts();
  systemSm(kLeaf1)->handleServiceMountGroupStatus("other");
  EXPECT_EQ(systemSm(kLeaf1)->groupProcessedSm(), nullptr);
  systemSm(kLeaf1)->handleServiceMountGroupStatus();
  EXPECT_EQ(systemSm(kLeaf1)->groupProcessedSm(), nullptr);
}

TEST_F(SystemProcessedSmTest, FlagThatIsFalse_DoesNotCountUntilItIsSet) {
  startInitialMounts();
  peerComes(kLeaf1);
  status(kLeaf1).processedIs(false);
  run(kPeriod);
  EXPECT_FALSE(isProcessed(kLeaf1));
  EXPECT_FALSE(isComplete(kService, kGroup));
  status(kLeaf1).processedIs(true);
  EXPECT_TRUE(isProcessed(kLeaf1));
  EXPECT_TRUE(isComplete(kService, kGroup));
}

TEST_F(SystemProcessedSmTest, FlagThatIsSetBefore_CountsWhenTheMachineIsMade) {
  status(kLeaf1).processedIs(true);
  traceIs(8);
  startInitialMounts();
  EXPECT_TRUE(isProcessed(kLeaf1));
  expectTrace(8,
              "void Controller::GroupProcessedSm::handleProcessed(): systemName: "
              "02:00:00:00:00:01, groupName: default");
}

TEST_F(SystemProcessedSmTest, FlagThatIsFalse_IsNotTraced) {
  status(kLeaf1);
  startInitialMounts();
  traceIs(8);
  systemSm(kLeaf1)->groupProcessedSm()->handleProcessed();
  EXPECT_THAT(traces().lines(), IsEmpty());
}

TEST_F(SystemProcessedSmTest, FlagThatIsTakenBack_LeavesTheMember) {
  startInitialMounts();
  status(kLeaf1).processedIs(true);
  status(kLeaf1).processedIs(false);
  EXPECT_TRUE(isProcessed(kLeaf1));
}

TEST_F(SystemProcessedSmTest, SystemStatusThatDisappears_LeavesItsMember) {
  startInitialMounts();
  status(kLeaf1).processedIs(true);
  mountStatusOf(kService).systemStatusDel(kLeaf1);
  EXPECT_EQ(systemSm(kLeaf1), nullptr);
  EXPECT_TRUE(isProcessed(kLeaf1));
}

TEST_F(SystemProcessedSmTest, GroupStatusRemovedAndAddedAgain_KeepsTheFirstMachine) {
  startInitialMounts();
  const Orm::Ptr<ServiceMountGroupStatus> first(&status(kLeaf1));
  const auto* const machine = systemSm(kLeaf1)->groupProcessedSm().get();
  SystemStatus& system = *mountStatusOf(kService).systemStatus(kLeaf1);
  system.serviceMountGroupStatusDel(kGroup);
  EXPECT_EQ(systemSm(kLeaf1)->groupProcessedSm().get(), machine);
  ServiceMountGroupStatus& second = status(kLeaf1);
  EXPECT_EQ(systemSm(kLeaf1)->groupProcessedSm().get(), machine);
  second.processedIs(true);
  EXPECT_FALSE(isProcessed(kLeaf1));
  first->processedIs(true);
  EXPECT_TRUE(isProcessed(kLeaf1));
}

TEST_F(SystemProcessedSmTest, GroupMachineTakenAway_IsMadeAgainForTheStatusThatIsThere) {
  startInitialMounts();
  status(kLeaf1);
  systemSm(kLeaf1)->groupProcessedSmDel();
  status(kLeaf1).processedIs(true);
  EXPECT_FALSE(isProcessed(kLeaf1));
  systemSm(kLeaf1)->handleServiceMountGroupStatus();
  EXPECT_TRUE(isProcessed(kLeaf1));
}

TEST_F(SystemProcessedSmTest, SwitchThatIsProcessed_IsNotWatchedAnyMore) {
  startInitialMounts();
  status(kLeaf1);
  ASSERT_NE(systemSm(kLeaf1), nullptr);
  status(kLeaf1).processedIs(true);
  EXPECT_EQ(systemSm(kLeaf1), nullptr);
  EXPECT_EQ(status(kLeaf1).notifieeCount(), 0U);
  EXPECT_TRUE(isProcessed(kLeaf1));
}

TEST_F(SystemProcessedSmTest, SwitchThatIsProcessedBefore_LeavesNoMachine) {
  status(kLeaf1).processedIs(true);
  startInitialMounts();
  EXPECT_TRUE(isProcessed(kLeaf1));
  EXPECT_EQ(systemSm(kLeaf1), nullptr);
  EXPECT_EQ(status(kLeaf1).notifieeCount(), 0U);
}

TEST_F(SystemProcessedSmTest, ProcessedSwitchThatComesBack_IsTracedAgain) {
  startInitialMounts();
  status(kLeaf1).processedIs(true);
  mountStatusOf(kService).systemStatusDel(kLeaf1);
  traceIs(8);
  status(kLeaf1).processedIs(true);
  EXPECT_NE(systemSm(kLeaf1), nullptr);
  EXPECT_THAT(traced(8),
              ElementsAre("void Controller::MountGroupInitialMountSm::handleSystemStatus(const "
                          "String&): 02:00:00:00:00:01 default exists=true",
                          "void Controller::SystemProcessedSm::handleInitialized(): ",
                          "void Controller::GroupProcessedSm::handleProcessed(): systemName: "
                          "02:00:00:00:00:01, groupName: default"));
}

TEST_F(SystemProcessedSmTest, NotificationSwitchedOff_NothingIsSeen) {
  startInitialMounts();
  status(kLeaf1);
  mountStatusOf(kService).systemStatusIs(kLeaf2);
  group().hasNotificationActiveIs(false);
  status(kLeaf1).processedIs(true);
  status(kLeaf2).processedIs(true);
  EXPECT_FALSE(isProcessed(kLeaf1));
  EXPECT_FALSE(isProcessed(kLeaf2));
}

/// The last switch's machine is being made when its group is reported complete.
TEST_F(SystemProcessedSmTest, SystemStatusTakenAwayAndBackByTheReport_LeavesOneMachine) {
  startInitialMounts();
  peerComes(kLeaf1);
  peerComes(kLeaf2);
  const auto elsewhere = Orm::make<SystemStatus>(kLeaf1);
  elsewhere->serviceMountGroupStatusIs(kGroup)->processedIs(true);
  status(kLeaf2).processedIs(true);
  run(kPeriod);
  bool first = true;
  const Support::Recorder watch(topology_.statusPtr(),
                                [&](Orm::AttributeId attribute, const Orm::Key&) {
                                  if (attribute != ServiceMountStatus::Attr::initialMountsComplete)
                                    return;
                                  if (!std::exchange(first, false)) return;
                                  mountStatusOf(kService).systemStatusIs(kLeaf1);
                                });
  {
    const Orm::ActivityScope scope;
    group().systemProcessedSmIs(kLeaf1, kGroup, elsewhere, group().processedSwitchSetInternal());
  }
  EXPECT_FALSE(first);
  EXPECT_TRUE(isComplete(kService, kGroup));
  EXPECT_EQ(group().systemProcessedSm().size(), 1U);  // the other switch's has gone before
  EXPECT_NE(systemSm(kLeaf1), nullptr);
  EXPECT_EQ(elsewhere->notifieeCount(), 0U);
}

}  // namespace
}  // namespace Controller
