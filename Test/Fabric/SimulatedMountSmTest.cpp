#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "Fabric/DocumentTime.h"
#include "Fabric/MountSimulation.h"
#include "Fabric/Reader.h"
#include "Fabric/SimulatedMountSm.h"
#include "Platform/Fennix/Node.h"
#include "Platform/Orm/ActivityLoop.h"
#include "Test/Fabric/Recorder.h"

namespace Fabric {
namespace {

using Controller::MountSmData;
using Controller::MountState;
using Controller::SystemId;
using FabricTest::Lines;
using Orm::Ptr;
using Orm::String;
using testing::ElementsAre;
using testing::IsEmpty;

std::string timeText(Orm::Seconds processTime) {
  return Orm::stringForm(documentTime(processTime));
}

/// Fires once at a time, writes its name down and does what the test says.
class Timer final : public Orm::ClockReactor<Lines> {
 public:
  Timer(const Ptr<Orm::Clock>& clock, Lines& lines, std::string name)
      : ClockReactor(&lines), name_(std::move(name)) {
    notifierIs(clock);
  }

  void onFiredIs(std::function<void()> action) { action_ = std::move(action); }

 private:
  void onClock() override {
    if (timeMin() == 0) return;  // it was pointed at the clock, and has not been armed yet
    owner()->push_back(name_);
    if (action_) action_();
  }

  std::string name_;
  std::function<void()> action_;
};

/// One mount as the mount entry's machine holds it: the machine, its record and what it reports.
class Mount final : public Orm::Reactor {
 public:
  using Reaction = std::function<void(MountState)>;

  Mount(MountSimulation& simulation, const Ptr<Fennix::Dir>& dir, Lines& lines, const char* system,
        const char* path)
      : lines_(lines), label_(path), record_(Orm::make<MountSmData>(SystemId::ofName(system), "")) {
    const SystemId systemId = SystemId::ofName(system);
    const String name(system);
    const String remotePath(path);
    const String type("Some::Type");
    const String empty;
    watchedIs(record_);
    machine_ = simulation.mountSm(
        {systemId, nullptr, nullptr, empty, remotePath, dir, name, type, empty, 7, 9, record_});
  }

  SimulatedMountSm& machine() { return static_cast<SimulatedMountSm&>(*machine_); }
  MountState state() const { return record_->mountState(); }
  void onStateIs(Reaction reaction) { reaction_ = std::move(reaction); }
  void letGo() { machine_ = nullptr; }

  void onAttribute(Orm::AttributeId, const Orm::Key&) override {
    const MountState state = record_->mountState();
    lines_.push_back(label_ + " " + Controller::name(state));
    if (reaction_) reaction_(state);
  }

 private:
  Lines& lines_;
  std::string label_;
  Ptr<MountSmData> record_;
  Ptr<Controller::MountSm> machine_;
  Reaction reaction_;
};

class SimulatedMountSmTest : public testing::Test, private MountObserver {
 protected:
  static constexpr const char* kLeaf1 = "02:00:00:00:00:01";
  static constexpr const char* kLeaf2 = "02:00:00:00:00:02";

  SimulatedMountSmTest()
      : clock_(Orm::make<Orm::Clock>(std::make_unique<Orm::VirtualTime>(kProcessTimeAtStart))),
        simulation_(clock_),
        loop_(clock_),
        root_(Orm::make<Fennix::Dir>()),
        dir_(root_->createDir("mounts")) {
    loop_.sourceIs(simulation_);
  }

  void behaviourIs(const char* system, const char* mount) {
    simulation_.behaviourIs(SystemId::ofName(system), read("behaviour", mount));
  }
  std::unique_ptr<Mount> mount(const char* system = kLeaf1, const char* path = "a/b") {
    return std::make_unique<Mount>(simulation_, dir_, lines_, system, path);
  }
  std::unique_ptr<Timer> timerAt(Orm::Seconds documentTime, const char* name) {
    auto timer = std::make_unique<Timer>(clock_, lines_, name);
    timer->timeMinIs(kProcessTimeAtStart + documentTime);
    return timer;
  }
  bool entityStands(const char* system = kLeaf1) const {
    return static_cast<bool>(dir_->entity(system));
  }

  /// What happens up to a time, a line "TIME" before what happens at it.
  Lines run(Orm::Seconds until) {
    Lines all;
    take(all);
    while (loop_.runOne(kProcessTimeAtStart + until)) take(all);
    loop_.run(kProcessTimeAtStart + until);
    return all;
  }
  Lines take() { return std::exchange(lines_, {}); }
  void observe() { simulation_.observerIs(*this); }
  void stopObserving() { simulation_.observerDel(*this); }

  Lines lines_;
  Ptr<Orm::Clock> clock_;
  MountSimulation simulation_;
  Orm::ActivityLoop loop_;
  Ptr<Fennix::Dir> root_;
  Ptr<Fennix::Dir> dir_;

 private:
  void take(Lines& all) {
    for (std::string& line : take()) all.push_back(timeText(clock_->now()) + " " + line);
  }

  void mountRequest(const SystemId& systemId, const String& path, MountRequestKind kind) override {
    lines_.push_back("asked " + Orm::stringForm(systemId) + " " + path.str() + " " + name(kind));
  }
  void mountState(const SystemId&, const String& path, MountState state) override {
    lines_.push_back("seen " + path.str() + " " + Controller::name(state));
  }
};

TEST_F(SimulatedMountSmTest, Creation_SetsRequestedAtOnce) {
  const auto mounted = mount();
  EXPECT_EQ(mounted->state(), MountState::requested);
  EXPECT_TRUE(mounted->machine().pendingRequest());
}

TEST_F(SimulatedMountSmTest, Mount_IsUnderWayInTheNextTurnAndThereAfterTheDelay) {
  const auto mounted = mount();
  EXPECT_THAT(run(10), ElementsAre("0 a/b requested", "0 a/b mounting", "0.1 a/b mounted"));
  EXPECT_FALSE(mounted->machine().pendingRequest());
  EXPECT_TRUE(entityStands());
  EXPECT_EQ(Orm::dynamicCast<Fennix::Node>(dir_->entity(kLeaf1))->typeName(), "Some::Type");
}

TEST_F(SimulatedMountSmTest, Mount_IsPendingUntilItsOutcomeIsTold) {
  behaviourIs(kLeaf1, "{delay: 2.5}");
  const auto mounted = mount();
  std::vector<bool> pending;
  mounted->onStateIs([&](MountState) { pending.push_back(mounted->machine().pendingRequest()); });
  run(2.499999);
  EXPECT_TRUE(mounted->machine().pendingRequest());
  run(2.5);
  EXPECT_THAT(pending, ElementsAre(true, false));
}

TEST_F(SimulatedMountSmTest, Entity_StandsBeforeMountedIsToldAndNotWhileMounting) {
  const auto mounted = mount();
  mounted->onStateIs([&](MountState) { lines_.push_back(entityStands() ? "stands" : "absent"); });
  EXPECT_THAT(run(10), ElementsAre("0 a/b requested", "0 a/b mounting", "0 absent",
                                   "0.1 a/b mounted", "0.1 stands"));
}

TEST_F(SimulatedMountSmTest, MountPath_IsBelowTheDirectoryUnderTheSwitchsName) {
  const auto mounted = mount();
  EXPECT_EQ(mounted->machine().mountPath(), "/mounts/02:00:00:00:00:01");
  EXPECT_EQ(mounted->machine().retries(), 7U);
  EXPECT_EQ(mounted->machine().timeout(), 9);
}

TEST_F(SimulatedMountSmTest, FailedMount_LeavesNoEntity) {
  behaviourIs(kLeaf1, "{outcome: failed, delay: 1}");
  const auto mounted = mount();
  EXPECT_THAT(run(10), ElementsAre("0 a/b requested", "0 a/b mounting", "1 a/b failed"));
  EXPECT_FALSE(mounted->machine().pendingRequest());
  EXPECT_FALSE(entityStands());
}

TEST_F(SimulatedMountSmTest, StalledMount_StaysUnderWayForGood) {
  behaviourIs(kLeaf1, "{outcome: stalled}");
  const auto mounted = mount();
  EXPECT_THAT(run(100000), ElementsAre("0 a/b requested", "0 a/b mounting"));
  EXPECT_TRUE(mounted->machine().pendingRequest());
  EXPECT_TRUE(simulation_.nextDue().never());
}

TEST_F(SimulatedMountSmTest, OutcomeOfAPath_ComesBeforeThatOfTheSwitch) {
  behaviourIs(kLeaf1, "{outcome: failed, paths: {c/d: mounted, e/f: stalled}}");
  const auto ab = mount(kLeaf1, "a/b");
  const auto cd = mount(kLeaf1, "c/d");
  const auto ef = mount(kLeaf1, "e/f");
  run(10);
  EXPECT_EQ(ab->state(), MountState::failed);
  EXPECT_EQ(cd->state(), MountState::mounted);
  EXPECT_EQ(ef->state(), MountState::mounting);
}

TEST_F(SimulatedMountSmTest, Behaviour_IsTheSwitchsOwn) {
  behaviourIs(kLeaf1, "{outcome: failed, delay: 3}");
  const auto one = mount(kLeaf1, "a/b");
  const auto two = mount(kLeaf2, "c/d");
  EXPECT_THAT(run(10), ElementsAre("0 a/b requested", "0 c/d requested", "0 a/b mounting",
                                   "0 c/d mounting", "0.1 c/d mounted", "3 a/b failed"));
}

TEST_F(SimulatedMountSmTest, Settings_AreThoseInForceWhenTheRequestIsMade) {
  behaviourIs(kLeaf1, "{outcome: failed, delay: 2}");
  const auto mounted = mount();
  behaviourIs(kLeaf1, "{delay: 5}");
  EXPECT_THAT(run(10), ElementsAre("0 a/b requested", "0 a/b mounting", "2 a/b failed"));
  mounted->machine().doRemount();
  behaviourIs(kLeaf1, "{outcome: stalled}");
  EXPECT_THAT(run(20), ElementsAre("10 a/b mounting", "15 a/b mounted"));
}

TEST_F(SimulatedMountSmTest, DefaultsComeBackInForceWithANullBehaviour) {
  behaviourIs(kLeaf1, "{outcome: failed, delay: 2}");
  simulation_.behaviourIs(SystemId::ofName(kLeaf1), Value());
  const auto mounted = mount();
  EXPECT_THAT(run(10), ElementsAre("0 a/b requested", "0 a/b mounting", "0.1 a/b mounted"));
}

TEST_F(SimulatedMountSmTest, Remount_GoesThroughMountingAgainAndKeepsTheEntity) {
  const auto mounted = mount();
  run(1);
  const Ptr<Orm::Entity> entity = dir_->entity(kLeaf1);
  mounted->machine().doRemount();
  EXPECT_EQ(mounted->state(), MountState::mounted);
  EXPECT_TRUE(mounted->machine().pendingRequest());
  EXPECT_THAT(run(1.05), ElementsAre("1 a/b mounting"));
  EXPECT_EQ(dir_->entity(kLeaf1), entity);
  EXPECT_THAT(run(2), ElementsAre("1.1 a/b mounted"));
  EXPECT_EQ(dir_->entity(kLeaf1), entity);
}

TEST_F(SimulatedMountSmTest, RemountUnderWay_CancelsTheFirstOutcome) {
  const auto mounted = mount();
  run(0.05);
  mounted->machine().doRemount();
  EXPECT_THAT(run(10), ElementsAre("0.15 a/b mounted"));
}

TEST_F(SimulatedMountSmTest, TwoRequestsInOneTurn_AreOne) {
  const auto mounted = mount();
  mounted->machine().doUnmount();
  mounted->machine().doRemount();
  EXPECT_THAT(run(10), ElementsAre("0 a/b requested", "0 a/b mounting", "0.1 a/b mounted"));
}

TEST_F(SimulatedMountSmTest, Unmount_IsDoneInTheNextTurnAndRemovesTheEntityBefore) {
  const auto mounted = mount();
  run(1);
  mounted->onStateIs([&](MountState) { lines_.push_back(entityStands() ? "stands" : "absent"); });
  mounted->machine().doUnmount();
  EXPECT_EQ(mounted->state(), MountState::mounted);
  EXPECT_TRUE(mounted->machine().pendingRequest());
  EXPECT_TRUE(entityStands());
  EXPECT_THAT(run(10), ElementsAre("1 a/b unmounted", "1 absent"));
  EXPECT_FALSE(mounted->machine().pendingRequest());
}

TEST_F(SimulatedMountSmTest, StatePreservingUnmount_LeavesTheEntity) {
  const auto mounted = mount();
  run(1);
  mounted->machine().doStatePreservingUnmount();
  EXPECT_THAT(run(10), ElementsAre("1 a/b unmounted"));
  EXPECT_TRUE(entityStands());
}

TEST_F(SimulatedMountSmTest, UnmountUnderWay_CancelsTheOutcome) {
  behaviourIs(kLeaf1, "{delay: 5}");
  const auto mounted = mount();
  run(1);
  mounted->machine().doUnmount();
  EXPECT_THAT(run(10), ElementsAre("1 a/b unmounted"));
  EXPECT_FALSE(entityStands());
}

TEST_F(SimulatedMountSmTest, UnmountOfAStalledMount_EndsIt) {
  behaviourIs(kLeaf1, "{outcome: stalled}");
  const auto mounted = mount();
  run(1);
  mounted->machine().doUnmount();
  EXPECT_THAT(run(10), ElementsAre("1 a/b unmounted"));
  EXPECT_FALSE(mounted->machine().pendingRequest());
}

TEST_F(SimulatedMountSmTest, Cleanup_CancelsEverythingAndIsHarmlessWhenRepeated) {
  const auto mounted = mount();
  mounted->machine().doCleanup();
  mounted->machine().doCleanup();
  EXPECT_FALSE(mounted->machine().pendingRequest());
  EXPECT_TRUE(simulation_.nextDue().never());
  EXPECT_THAT(run(10), ElementsAre("0 a/b requested"));
}

TEST_F(SimulatedMountSmTest, CleanupOfAMountUnderWay_CancelsItsOutcome) {
  const auto mounted = mount();
  run(0.05);
  mounted->machine().doCleanup();
  EXPECT_THAT(run(10), IsEmpty());
  EXPECT_EQ(mounted->state(), MountState::mounting);
}

TEST_F(SimulatedMountSmTest, RequestFromWithinATurn_CancelsWhatTheTurnWouldSchedule) {
  const auto mounted = mount();
  mounted->onStateIs([&](MountState state) {
    if (state == MountState::mounting) mounted->machine().doUnmount();
  });
  EXPECT_THAT(run(10), ElementsAre("0 a/b requested", "0 a/b mounting", "0 a/b unmounted"));
}

TEST_F(SimulatedMountSmTest, RemountFromWithinATurn_CountsFromThere) {
  behaviourIs(kLeaf1, "{delay: 1}");
  const auto mounted = mount();
  bool again = true;
  mounted->onStateIs([&](MountState state) {
    if (state == MountState::mounting && std::exchange(again, false)) {
      behaviourIs(kLeaf1, "{delay: 2}");
      mounted->machine().doRemount();
    }
  });
  EXPECT_THAT(run(10), ElementsAre("0 a/b requested", "0 a/b mounting", "2 a/b mounted"));
}

TEST_F(SimulatedMountSmTest, Machine_MayBeLetGoWhileItReports) {
  for (const MountState last : {MountState::mounting, MountState::mounted, MountState::unmounted}) {
    const auto mounted = mount();
    mounted->onStateIs([&](MountState state) {
      if (state != last) return;
      mounted->machine().doCleanup();
      mounted->letGo();
    });
    run(clock_->now());
    if (last == MountState::unmounted) mounted->machine().doUnmount();
    run(clock_->now());
    EXPECT_EQ(mounted->state(), last);
    EXPECT_EQ(simulation_.mounts(), 0U);
  }
}

TEST_F(SimulatedMountSmTest, MachineThatIsLetGoWithWorkLeft_DoesItNoMoreOnceCleanedUp) {
  const auto mounted = mount();
  run(0.05);
  mounted->machine().doCleanup();
  mounted->letGo();
  EXPECT_THAT(run(10), IsEmpty());
  EXPECT_EQ(simulation_.mounts(), 0U);
}

TEST_F(SimulatedMountSmTest, MountsOfOneTime_GoInOrderOfRequest) {
  const auto ab = mount(kLeaf1, "a/b");
  const auto cd = mount(kLeaf2, "c/d");
  run(0.05);
  ab->machine().doRemount();
  cd->machine().doRemount();
  ab->machine().doRemount();
  EXPECT_THAT(run(10), ElementsAre("0.15 c/d mounted", "0.15 a/b mounted"));
}

TEST_F(SimulatedMountSmTest, DelayOfNothing_TakesOneMoreTurnAtTheSameTime) {
  behaviourIs(kLeaf1, "{delay: 0}");
  const auto ab = mount(kLeaf1, "a/b");
  const auto cd = mount(kLeaf2, "c/d");
  EXPECT_THAT(run(0), ElementsAre("0 a/b requested", "0 c/d requested", "0 a/b mounting",
                                  "0 c/d mounting", "0 a/b mounted"));
}

TEST_F(SimulatedMountSmTest, TimersOfTheSameTime_GoByOrderOfScheduling) {
  behaviourIs(kLeaf1, "{delay: 1}");
  const auto first = timerAt(0, "first");
  const auto mounted = mount();
  const auto beforeTurn = timerAt(1, "armed before the turn");
  const auto second = timerAt(0, "second");
  std::unique_ptr<Timer> inTurn;
  mounted->onStateIs([&](MountState state) {
    if (state == MountState::mounting) inTurn = timerAt(1, "armed in the turn");
  });
  EXPECT_THAT(run(0), ElementsAre("0 a/b requested", "0 first", "0 a/b mounting", "0 second"));
  const auto afterTurn = timerAt(1, "armed after the turn");
  EXPECT_THAT(run(10), ElementsAre("1 armed before the turn", "1 armed in the turn",
                                   "1 a/b mounted", "1 armed after the turn"));
}

TEST_F(SimulatedMountSmTest, TurnOfTheSameTime_ComesAfterOutcomesThatWereScheduledBefore) {
  behaviourIs(kLeaf1, "{delay: 1}");
  const auto ab = mount(kLeaf1, "a/b");
  const auto cd = mount(kLeaf2, "c/d");
  const auto remount = timerAt(1, "remount");
  remount->onFiredIs([&] { cd->machine().doRemount(); });
  run(0.5);
  const auto timer = timerAt(1, "timer");
  EXPECT_THAT(run(10), ElementsAre("1 remount", "1 a/b mounted", "1 timer", "1 c/d mounting",
                                   "1.1 c/d mounted"));
}

TEST_F(SimulatedMountSmTest, DelaysThatMeetAtOneTime_GoByOrderOfScheduling) {
  behaviourIs(kLeaf1, "{delay: 2}");
  behaviourIs(kLeaf2, "{delay: 1}");
  const auto ab = mount(kLeaf1, "a/b");
  run(1);
  const auto cd = mount(kLeaf2, "c/d");
  EXPECT_THAT(run(10),
              ElementsAre("1 c/d requested", "1 c/d mounting", "2 a/b mounted", "2 c/d mounted"));
}

TEST_F(SimulatedMountSmTest, RequestedAt_IsTheTimeOfTheLastRequest) {
  behaviourIs(kLeaf1, "{outcome: stalled}");
  const auto mounted = mount();
  EXPECT_EQ(mounted->machine().requestedAt(), processTick(0));
  run(3.25);
  EXPECT_EQ(mounted->machine().requestedAt(), processTick(0));
  mounted->machine().doRemount();
  run(8);
  EXPECT_EQ(mounted->machine().requestedAt(), processTick(3.25));
}

TEST_F(SimulatedMountSmTest, Observers_SeeRequestsAndStatesBeforeTheRecordTells) {
  observe();
  const auto mounted = mount();
  EXPECT_THAT(take(), ElementsAre("asked 02:00:00:00:00:01 a/b mount", "seen a/b requested",
                                  "a/b requested"));
  mounted->machine().doRemount();
  mounted->machine().doStatePreservingUnmount();
  EXPECT_THAT(take(), ElementsAre("asked 02:00:00:00:00:01 a/b remount",
                                  "asked 02:00:00:00:00:01 a/b preserving-unmount"));
  EXPECT_THAT(run(1), ElementsAre("0 seen a/b unmounted", "0 a/b unmounted"));
  mounted->machine().doUnmount();
  mounted->machine().doCleanup();
  EXPECT_THAT(take(), ElementsAre("asked 02:00:00:00:00:01 a/b unmount",
                                  "asked 02:00:00:00:00:01 a/b cleanup"));
  stopObserving();
  mounted->machine().doRemount();
  EXPECT_THAT(take(), IsEmpty());
}

TEST_F(SimulatedMountSmTest, StateThatIsThereAlready_IsNotTold) {
  observe();
  const auto mounted = mount();
  run(0.05);
  mounted->machine().doRemount();
  EXPECT_THAT(run(0.1), ElementsAre("0.05 asked 02:00:00:00:00:01 a/b remount"));
}

TEST_F(SimulatedMountSmTest, MountsOfOneEntry_ShareWhatTheyHaveInCommon) {
  auto one = mount(kLeaf1, "a/b");
  auto two = mount(kLeaf2, "a/b");
  auto other = mount(kLeaf1, "c/d");
  EXPECT_EQ(&one->machine().entry(), &two->machine().entry());
  EXPECT_NE(&one->machine().entry(), &other->machine().entry());
  const SimulatedMountEntry* const shared = &two->machine().entry();
  one->machine().doCleanup();
  one = nullptr;
  const auto again = mount(kLeaf1, "a/b");
  EXPECT_EQ(&again->machine().entry(), shared);
}

TEST_F(SimulatedMountSmTest, Mounts_AreCounted) {
  EXPECT_EQ(simulation_.mounts(), 0U);
  auto one = mount(kLeaf1, "a/b");
  const auto two = mount(kLeaf2, "a/b");
  EXPECT_EQ(simulation_.mounts(), 2U);
  run(1);
  one = nullptr;
  EXPECT_EQ(simulation_.mounts(), 1U);
}

}  // namespace
}  // namespace Fabric
