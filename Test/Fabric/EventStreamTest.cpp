#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <iostream>

#include "Fabric/EventStream.h"
#include "Platform/Entities/Controllerdb/PublishStatus.h"
#include "Test/Fabric/RunFixture.h"

namespace Fabric {
namespace {

using testing::ElementsAre;

constexpr const char* kLeaf1 = "02:00:00:00:00:01";

/// The events as texts, with their members in the order of the keys, without the kinds that are
/// not asked for.
std::vector<std::string> eventsOf(const Outcome& outcome,
                                  const std::vector<std::string>& kinds = {}) {
  std::vector<std::string> events;
  for (const auto& event : outcome.events) {
    const auto kind = event.at("event").get<std::string>();
    if (kinds.empty() || std::find(kinds.begin(), kinds.end(), kind) != kinds.end()) {
      events.push_back(event.dump());
    }
  }
  return events;
}

TEST(EventStreamTest, OneMount_EachChangeInItsOrder) {
  const std::string mount = R"("path":"topology/status",)";
  const std::string leaf = R"("switch":"02:00:00:00:00:01",)";
  const auto mountState = [&](const char* state, const char* t) {
    return R"({"event":"mountState",)" + mount + R"("state":")" + state + "\"," + leaf + R"("t":)" +
           t + "}";
  };
  const auto groupState = [&](const char* state, const char* t) {
    return std::string(R"({"event":"groupState","group":"default","service":"Topology",)") +
           R"("state":")" + state + "\"," + leaf + R"("t":)" + t + "}";
  };
  const auto request = [&](const char* kind) {
    return R"({"event":"request",)" + mount + R"("request":")" + kind + "\"," + leaf + R"("t":0})";
  };
  // The registry decides all connections once more when it has been made, and a mount that is under
  // way is asked for again.
  EXPECT_THAT(
      eventsOf(outcomeOf(kOneMount)),
      ElementsAre(request("mount"), mountState("requested", "0"), groupState("requested", "0"),
                  request("remount"), mountState("mounting", "0"), groupState("mounting", "0"),
                  R"({"event":"connectionPeriodComplete","t":0})", mountState("mounted", "0.1"),
                  groupState("mounted", "0.1"),
                  R"({"complete":true,"event":"initialMountsComplete",)"
                  R"("group":"default","service":"Topology","t":0.1})"));
}

TEST(EventStreamTest, EachLineBeginsWithTimeAndKind) {
  const Document document = Document::parse("fabric.yaml", kOneMount);
  std::ostringstream events;
  {
    SimulationRun run(document, events);
    run.eventsIs(events);
    run.run();
  }
  std::istringstream lines(events.str());
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    EXPECT_EQ(line.rfind("{\"t\":", 0), 0U) << line;
    EXPECT_NE(line.find(",\"event\":\""), std::string::npos) << line;
  }
  EXPECT_EQ(count, 10);
}

TEST(EventStreamTest, RequestsOfEachKind) {
  const auto outcome = outcomeOf(R"(
controller: {leader: g}
switches:
  "02:00:00:00:00:01": {name: leaf1, connected: true, services: {A: 1}}
services:
  A:
    mount:
      generation: g
      groups: {keep: {preserve: true, paths: {kept: {}}}, drop: {paths: {dropped: {}}}}
events:
  - at: 0.05
    apply: {switches: {leaf1: {services: {A: 2}}}}
  - at: 1
    apply: {switches: {leaf1: {inactive: true, connected: false}}}
)");
  std::vector<std::string> requests;
  for (const auto& event : outcome.events) {
    if (event.at("event") != "request") continue;
    EXPECT_EQ(event.at("switch"), kLeaf1);
    requests.push_back(event.at("path").get<std::string>() + " " +
                       event.at("request").get<std::string>());
  }
  EXPECT_THAT(requests,
              ElementsAre("kept mount", "dropped mount", "kept remount", "dropped remount",
                          "kept remount", "dropped remount", "kept preserving-unmount",
                          "dropped unmount", "kept cleanup", "dropped cleanup"));
}

TEST(EventStreamTest, NoteComesBeforeWhatItsPatchDoes) {
  const auto events = eventsOf(outcomeOf(std::string(kOneMount) + R"(
events:
  - at: 1
    note: "gone: \"leaf1\""
    apply: {switches: {leaf1: {connected: false}}}
)"),
                               {"note", "request", "mountState"});
  ASSERT_EQ(events.size(), 9U);
  EXPECT_EQ(events[5], R"({"event":"note","t":1,"text":"gone: \"leaf1\""})");
  EXPECT_THAT(events[6], testing::HasSubstr("\"unmount\""));
  EXPECT_THAT(events[7], testing::HasSubstr("\"unmounted\""));
  EXPECT_THAT(events[8], testing::HasSubstr("\"cleanup\""));
}

TEST(EventStreamTest, Log) {
  EXPECT_THAT(eventsOf(outcomeOf(R"(
controller: {leader: g}
switches: {"02:00:00:00:00:01": {connected: true, services: {A: 1}, mount: {outcome: stalled}}}
services: {A: {mount: {generation: g, groups: {g: {paths: {p: {}}}}}}}
)"),
                       {"log"}),
              ElementsAre(R"({"event":"log","id":"ZORB_MOUNT_TIMEOUT","severity":3,"t":300,)"
                          R"("text":"ZORB is unable to mount from switch 02:00:00:00:00:01."})"));
}

TEST(EventStreamTest, ServiceThatComesLater_ItsGroupsAreSeen) {
  EXPECT_THAT(
      eventsOf(outcomeOf(R"(
controller: {leader: g}
switches: {"02:00:00:00:00:01": {connected: true, services: {A: 1}}}
events:
  - at: 1
    apply: {services: {A: {mount: {generation: g, groups: {one: {paths: {p: {}}}}}}}}
  - at: 2
    apply: {services: {A: null}}
  - at: 3
    apply: {services: {A: {mount: {generation: g, groups: {two: {paths: {p: {}}}}}}}}
until: 3
)"),
               {"groupState"}),
      ElementsAre(
          R"({"event":"groupState","group":"one","service":"A","state":"requested","switch":"02:00:00:00:00:01","t":1})",
          R"({"event":"groupState","group":"one","service":"A","state":"mounting","switch":"02:00:00:00:00:01","t":1})",
          R"({"event":"groupState","group":"one","service":"A","state":"mounted","switch":"02:00:00:00:00:01","t":1.1})",
          R"({"event":"groupState","group":"two","service":"A","state":"requested","switch":"02:00:00:00:00:01","t":3})",
          R"({"event":"groupState","group":"two","service":"A","state":"mounting","switch":"02:00:00:00:00:01","t":3})"));
}

TEST(EventStreamTest, EndOfTheRunMakesNoEvents) {
  const auto outcome = outcomeOf(std::string(kOneMount) + "until: 5\n");
  EXPECT_EQ(outcome.events.back().at("event"), "initialMountsComplete");
  EXPECT_EQ(outcome.events.back().at("complete"), true);
}

// ---- what no machine of a simulation with mounts alone changes

class EventStreamWatchTest : public testing::Test {
 protected:
  Orm::Ptr<Orm::Clock> clock_ = Orm::make<Orm::Clock>(std::make_unique<Orm::VirtualTime>(1002.5));
  std::ostringstream out_;
  EventStream events_{out_, clock_};

  std::string lines() {
    events_.flush();
    return out_.str();
  }
};

TEST_F(EventStreamWatchTest, Publications) {
  const auto status = Orm::make<Controllerdb::PublishStatus>();
  PublishStatusWatch watch(status, events_);
  const auto system = status->systemIs(*Controller::SystemId::parse(kLeaf1));
  system->publishedMountIs({"/a", "b", "T", "rti", "S"});
  system->publishedMountIs({"/a", "c", "T", "rti", "S"});
  system->publishedMountDel("/a");
  status->servicePublishReadyIs("S", true);
  status->servicePublishReadyDel("S");
  EXPECT_EQ(
      lines(),
      R"({"t":2.5,"event":"published","switch":"02:00:00:00:00:01","path":"/a","remotePath":"b","type":"T","service":"S"}
{"t":2.5,"event":"published","switch":"02:00:00:00:00:01","path":"/a","remotePath":"c","type":"T","service":"S"}
{"t":2.5,"event":"unpublished","switch":"02:00:00:00:00:01","path":"/a"}
{"t":2.5,"event":"publishReady","service":"S","ready":true}
{"t":2.5,"event":"publishReady","service":"S","ready":false}
)");
}

TEST_F(EventStreamWatchTest, PublicationsToASwitchThatWasThereBefore) {
  const auto status = Orm::make<Controllerdb::PublishStatus>();
  const auto system = status->systemIs(*Controller::SystemId::parse(kLeaf1));
  system->publishedMountIs({"/before", "b", "T", "rti", "S"});
  PublishStatusWatch watch(status, events_);
  system->publishedMountDel("/before");
  EXPECT_EQ(lines(),
            "{\"t\":2.5,\"event\":\"unpublished\",\"switch\":\"02:00:00:00:00:01\",\"path\":"
            "\"/before\"}\n");
}

TEST_F(EventStreamWatchTest, InitialMountsComplete) {
  const auto dir = Orm::make<Fennix::Dir>();
  const auto status = Orm::make<Controller::ServiceMountStatus>();
  dir->entityIs("S", status);
  MountStatusWatch watch(dir, events_);
  status->initialMountsCompleteIs("g", true);
  status->initialMountsCompleteDel("g");
  EXPECT_EQ(lines(),
            R"({"t":2.5,"event":"initialMountsComplete","service":"S","group":"g","complete":true}
{"t":2.5,"event":"initialMountsComplete","service":"S","group":"g","complete":false}
)");
}

TEST_F(EventStreamWatchTest, StatusThatIsReplacedIsFollowed) {
  const auto dir = Orm::make<Fennix::Dir>();
  const auto before = Orm::make<Controller::ServiceMountStatus>();
  const auto after = Orm::make<Controller::ServiceMountStatus>();
  dir->entityIs("S", before);
  MountStatusWatch watch(dir, events_);
  const auto group = before->systemStatusIs(kLeaf1)->serviceMountGroupStatusIs("g");
  dir->entityIs("S", after);
  group->mountStateIs(Controller::MountState::mounted);
  EXPECT_EQ(lines(), "");
  after->systemStatusIs(kLeaf1)->serviceMountGroupStatusIs("g")->mountStateIs(
      Controller::MountState::failed);
  EXPECT_EQ(lines(), R"({"t":2.5,"event":"groupState","service":"S","group":"g",)"
                     R"("switch":"02:00:00:00:00:01","state":"failed"})"
                     "\n");
}

TEST_F(EventStreamWatchTest, GroupThatIsReplacedIsFollowed) {
  const auto dir = Orm::make<Fennix::Dir>();
  const auto status = Orm::make<Controller::ServiceMountStatus>();
  dir->entityIs("S", status);
  MountStatusWatch watch(dir, events_);
  const auto system = status->systemStatusIs(kLeaf1);
  const auto before = system->serviceMountGroupStatusIs("g");
  system->serviceMountGroupStatusDel("g");
  EXPECT_EQ(before->notifieeCount(), 0U);
  system->serviceMountGroupStatusIs("g")->mountStateIs(Controller::MountState::mounted);
  status->systemStatusDel(kLeaf1);
  EXPECT_EQ(system->notifieeCount(), 0U);
  EXPECT_NE(lines(), "");
}

TEST_F(EventStreamWatchTest, ConnectionPeriodComplete) {
  events_.connectionPeriodComplete();
  EXPECT_EQ(lines(), "{\"t\":2.5,\"event\":\"connectionPeriodComplete\"}\n");
}

// ---- assertions

TEST(EventStreamDeathTest, Assertion_LastLineAndMessageWithTimeAndPlace) {
  const auto failing = [] {
    const Document document = Document::parse("fabric.yaml", std::string(kOneMount) + R"(
events:
  - at: 1.5
    apply: {services: {Topology: {mount: {groups: {default: {paths: {topology/status: {type: X}}}}}}}}
)");
    SimulationRun run(document, std::cerr);
    run.eventsIs(std::cerr);
    run.run();
  };
  EXPECT_EXIT(
      failing(), testing::KilledBySignal(SIGABRT),
      testing::HasSubstr(
          "{\"t\":1.5,\"event\":\"assertion\",\"text\":\"mre->ormType() == "
          "mountConfig->ormcType()\"}\n"
          "assertion failed: mre->ormType() == mountConfig->ormcType() (at 1.5 s, Controllerdb/"));
}

}  // namespace
}  // namespace Fabric
