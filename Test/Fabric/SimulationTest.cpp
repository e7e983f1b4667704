#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Fabric/Simulation.h"
#include "Platform/Flipset/Flipset.h"
#include "Platform/Kobble/Kobble.h"
#include "Platform/Orm/ActivityManagerConfig.h"
#include "Test/Fabric/Recorder.h"
#include "Test/Support/Captured.h"

namespace Fabric {
namespace {

using Controller::MountRequest;
using Controller::MountState;
using Controller::SystemId;
using FabricTest::Lines;
using Orm::Ptr;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kFabric = R"(
controller: {leader: gen-1}
switches:
  "02:00:00:00:00:01": {connected: true, services: {T: 3}}
  "02:00:00:00:00:02": {connected: true, services: {T: 3}, mount: {outcome: failed, delay: 2}}
services:
  T: {mount: {generation: gen-1, groups: {g: {paths: {a/b: {type: X}}}}}}
)";

/// Writes down what the mounts of a simulation do, as "TIME SYSTEM PATH WHAT".
class MountLines final : public MountObserver {
 public:
  explicit MountLines(Simulation& simulation) : simulation_(simulation) {
    simulation_.mounts().observerIs(*this);
  }
  ~MountLines() { simulation_.mounts().observerDel(*this); }

  const Lines& lines() const { return lines_; }

  void mountRequest(const SystemId& systemId, const Orm::String& path,
                    MountRequestKind kind) override {
    add(systemId, path, name(kind));
  }
  void mountState(const SystemId& systemId, const Orm::String& path, MountState state) override {
    add(systemId, path, Controller::name(state));
  }

 private:
  void add(const SystemId& systemId, const Orm::String& path, const char* what) {
    lines_.push_back(Orm::stringForm(simulation_.time()) + " " +
                     Orm::stringForm(systemId).substr(15) + " " + path.str() + " " + what);
  }

  Simulation& simulation_;
  Lines lines_;
};

/// The mounts' lines of a whole run.
Lines run(std::string_view text) {
  const Support::CapturedLog log;
  const Document document = Document::parse("f", text);
  Simulation simulation(document);
  const MountLines mounts(simulation);
  simulation.run();
  return mounts.lines();
}

TEST(SimulationTest, Fabric_Converges) {
  EXPECT_THAT(
      run(kFabric),
      ElementsAre("0 01 a/b mount", "0 01 a/b requested", "0 02 a/b mount", "0 02 a/b requested",
                  "0 01 a/b remount", "0 02 a/b remount", "0 01 a/b mounting", "0 02 a/b mounting",
                  "0.1 01 a/b mounted", "2 02 a/b failed"));
}

TEST(SimulationTest, Run_IsTheSameEachTime) { EXPECT_EQ(run(kFabric), run(kFabric)); }

TEST(SimulationTest, World_IsThereBeforeTheMachinesAre) {
  const Document document = Document::parse("f", kFabric);
  Simulation simulation(document);
  EXPECT_EQ(simulation.machines(), nullptr);
  EXPECT_EQ(simulation.world().peerTable()->peer().size(), 2U);
  EXPECT_TRUE(simulation.world().mountsRegistry()->mountEntry().empty());
  simulation.start();
  EXPECT_EQ(simulation.machines()->mountsRegistrySm()->mountsRegistryEntrySm().size(), 1U);
  EXPECT_EQ(simulation.machines()->mountsRegistrySm()->connectionServiceStatusDirSm().size(), 2U);
  EXPECT_EQ(simulation.mounts().mounts(), 2U);
  EXPECT_EQ(simulation.time(), 0);
}

TEST(SimulationTest, ProcessClock_ReadsAThousandSecondsAtTheStart) {
  const Document document = Document::parse("f", "until: 12.5");
  Simulation simulation(document);
  EXPECT_EQ(Orm::ActivityManagerConfig::instance()->clock(), simulation.clock());
  EXPECT_EQ(simulation.clock()->now(), 1000);
  EXPECT_EQ(simulation.time(), 0);
  simulation.run();
  EXPECT_EQ(simulation.clock()->now(), 1012.5);
  EXPECT_EQ(simulation.time(), 12.5);
}

constexpr const char* kLateFabric = R"(
controller: {leader: g}
switches: {"02:00:00:00:00:01": {connected: true, services: {T: 3}, mount: {delay: 2}}}
services: {T: {mount: {groups: {g: {paths: {a/b: {}}}}}}}
)";

TEST(SimulationTest, OutcomeAtTheEnd_StillComes) {
  const std::string events =
      "events: [{at: 1, apply: {services: {T: {mount: {generation: g}}}}}]\nuntil: ";
  EXPECT_THAT(
      run(kLateFabric + events + "3"),
      ElementsAre("1 01 a/b mount", "1 01 a/b requested", "1 01 a/b mounting", "3 01 a/b mounted"));
  EXPECT_THAT(run(kLateFabric + events + "2.999999"),
              ElementsAre("1 01 a/b mount", "1 01 a/b requested", "1 01 a/b mounting"));
}

TEST(SimulationTest, EventAtTheEnd_IsDoneWithItsTurns) {
  EXPECT_THAT(
      run(std::string(kLateFabric) + R"(
events: [{at: 1, apply: {services: {T: {mount: {generation: g}}}}},
         {at: 4, apply: {services: {T: {mount: {generation: h}}}}},
         {at: 5, apply: {services: {T: {mount: {generation: g}}}}}]
until: 4
)"),
      ElementsAre("1 01 a/b mount", "1 01 a/b requested", "1 01 a/b mounting", "3 01 a/b mounted",
                  "4 01 a/b unmount", "4 01 a/b unmounted", "4 01 a/b cleanup"));
}

TEST(SimulationTest, UntilOfTheCaller_ComesBeforeThatOfTheDocument) {
  const Document document = Document::parse("f", kFabric);
  Simulation simulation(document);
  EXPECT_EQ(simulation.until(), 600);
  simulation.untilIs(1);
  simulation.run();
  EXPECT_EQ(simulation.time(), 1);
  EXPECT_FALSE(simulation.mounts().nextDue().never());
}

TEST(SimulationTest, Event_IsNoteThenApplyThenExpect) {
  const Document document = Document::parse("f", R"(
events:
  - at: 1
    expect: {time: 1}
    apply: {controller: {leader: gen-2}}
    note: first
  - {at: 1, note: second}
  - {at: 7.25, expect: {time: 7.25}}
)");
  Simulation simulation(document);
  Lines lines;
  const auto add = [&](const std::string& what) {
    lines.push_back(Orm::stringForm(simulation.time()) + " " + what + ", leader " +
                    simulation.world().controllerdbStatus()->leaderGenId().str());
  };
  simulation.hooksIs(
      {.onNote = [&](const std::string& text) { add(text); },
       .onExpect = [&](const Event& event) { add("expect at " + Orm::stringForm(event.at)); },
       .onProgress = {}});
  simulation.run();
  EXPECT_THAT(lines, ElementsAre("1 first, leader ", "1 expect at 1, leader gen-2",
                                 "1 second, leader gen-2", "7.25 expect at 7.25, leader gen-2"));
}

TEST(SimulationTest, Events_ComeBeforeTurnsAndTimersOfTheSameTime) {
  EXPECT_THAT(
      run(std::string(kFabric) + R"(
events:
  - {at: 0, apply: {switches: {"02:00:00:00:00:02": null}}}
  - {at: 0.1, apply: {switches: {"02:00:00:00:00:01": {connected: false}}}}
)"),
      ElementsAre("0 01 a/b mount", "0 01 a/b requested", "0 02 a/b mount", "0 02 a/b requested",
                  "0 01 a/b remount", "0 02 a/b remount", "0 02 a/b unmount", "0 01 a/b mounting",
                  "0 02 a/b unmounted", "0 02 a/b cleanup", "0.1 01 a/b unmount",
                  "0.1 01 a/b unmounted", "0.1 01 a/b cleanup"));
}

TEST(SimulationTest, TimesAreEqualWhenTheyAreToTheMicrosecond) {
  // 0.1 + 0.2 is not 0.3 in binary.
  const std::string fabric = R"(
controller: {leader: g}
switches: {"02:00:00:00:00:01": {connected: true, services: {T: 3}, mount: {delay: 0.2}}}
services: {T: {mount: {groups: {g: {paths: {a/b: {}}}}}}}
events: [{at: 0.1, apply: {services: {T: {mount: {generation: g}}}}},
         {at: 0.3, apply: {services: {T: {mount: {generation: ''}}}}}]
)";
  const Lines lines = run(fabric);
  EXPECT_THAT(lines, testing::Contains("0.3 01 a/b unmount"));
  EXPECT_THAT(lines, testing::Not(testing::Contains("0.3 01 a/b mounted")));
}

TEST(SimulationTest, Model_IsAsTheEventsLeftIt) {
  const Document document = Document::parse("f", R"(
switches: {"02:00:00:00:00:01": {name: leaf1}}
events: [{at: 1, apply: {switches: {leaf1: {name: leaf2}}}}]
)");
  Simulation simulation(document);
  EXPECT_EQ(simulation.model().switchId("leaf1"), "02:00:00:00:00:01");
  simulation.run();
  EXPECT_EQ(simulation.model().switchId("leaf2"), "02:00:00:00:00:01");
  EXPECT_EQ(document.start().switchId("leaf1"), "02:00:00:00:00:01");
}

TEST(SimulationTest, MountMonitor_IsTheToggleOfTheProcess) {
  const auto monitored = [] {
    return Flipset::toggle("ControllerCommon.json", "ControllerMountMonitor", true);
  };
  for (const bool on : {false, true}) {
    const Document document = Document::parse(
        "f", std::string("controller: {mountMonitor: ") + (on ? "true" : "false") + "}");
    const Simulation simulation(document);
    EXPECT_EQ(monitored(), on);
  }
  EXPECT_TRUE(monitored());
}

class DummyFactory final : public Controller::MountSm::Factory {
 public:
  Ptr<Controller::MountSm> mountSm(const MountRequest&) override { return nullptr; }
};

TEST(SimulationTest, SettingsOfTheProcess_AreWhatTheyWereAfterwards) {
  constexpr const char* kFile = "ControllerCommon.json";
  constexpr const char* kToggle = "ControllerMountMonitor";
  const Document document = Document::parse("f", "{}");
  DummyFactory factory;
  Controller::MountSm::factoryIs(&factory);
  Flipset::toggleIs(kFile, kToggle, false);
  { const Simulation simulation(document); }
  EXPECT_EQ(Controller::MountSm::factoryIs(nullptr), &factory);
  EXPECT_FALSE(Flipset::toggle(kFile, kToggle, true));
  Flipset::toggleDel(kFile, kToggle);
  { const Simulation simulation(document); }
  EXPECT_EQ(Controller::MountSm::factoryIs(nullptr), nullptr);
  EXPECT_TRUE(Flipset::toggle(kFile, kToggle, true));
  EXPECT_FALSE(Flipset::toggle(kFile, kToggle, false));
}

TEST(SimulationTest, NothingIsAliveAfterwards_WhereverTheRunEnds) {
  const Support::CapturedLog log;
  const std::size_t before = Kobble::liveObjects();
  for (const double until : {0.0, 0.05, 0.1, 1.0, 400.0}) {
    const Document document = Document::parse("f", kFabric);
    {
      Simulation simulation(document);
      simulation.untilIs(until);
      simulation.run();
      EXPECT_GT(Kobble::liveObjects(), before);
    }
    EXPECT_EQ(Kobble::liveObjects(), before) << until;
  }
}

TEST(SimulationTest, SimulationThatIsNeverRun_LeavesNothing) {
  const std::size_t before = Kobble::liveObjects();
  const Document document = Document::parse("f", kFabric);
  { const Simulation simulation(document); }
  EXPECT_EQ(Kobble::liveObjects(), before);
}

TEST(SimulationTest, Progress_IsToldNowAndThen) {
  // Each mount is two pieces of work.
  const Document document = Document::parse("f", R"(
controller: {leader: g}
switches: {"02:00:00:00:00:01": {count: 10000, connected: true, services: {T: 3}}}
services: {T: {mount: {generation: g, groups: {g: {paths: {a/b: {}}}}}}}
)");
  Simulation simulation(document);
  Lines lines;
  simulation.hooksIs(
      {.onNote = {}, .onExpect = {}, .onProgress = [&](Orm::Seconds time, std::size_t mounts) {
         lines.push_back(Orm::stringForm(time) + " " + std::to_string(mounts));
       }});
  simulation.run();
  EXPECT_THAT(lines, ElementsAre("0.1 10000"));
}

}  // namespace
}  // namespace Fabric
