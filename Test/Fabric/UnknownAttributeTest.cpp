#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "Fabric/Document.h"
#include "Fabric/JsonText.h"
#include "Fabric/SimulationRun.h"

namespace Fabric {
namespace {

using Orm::Ptr;

/// Everything that machines watch is there: filters, a publication and a directory, a switch that
/// is known and not connected, and a mount that takes long.
constexpr const char* kFabric = R"(
controller: {leader: g, heartbeat: 1}
entities: {/local: "Local::Entity", /each: "Orm::Dir"}
services:
  T:
    mount:
      generation: g
      groups: {d: {systems: ["02:00:00:00:00:01"], versions: [3], paths: {a: {type: A}}}}
    publish:
      generation: g
      ready: true
      groups:
        d:
          systems: ["02:00:00:00:00:01"]
          versions: [3]
          paths: {/local: {type: "Local::Entity", remote: r}}
          dirs: {/each: {type: E, remote: e}}
switches:
  "02:00:00:00:00:01": {connected: true, services: {T: 3}, mount: {delay: 100}}
  "02:00:00:00:00:02": {inactive: true, services: {T: 3}}
)";

/// An attribute that no entity has, nor any machine follows.
constexpr Orm::AttributeId kUnknown = 1000;

void tellOf(const Orm::Entity& entity) {
  struct Teller : Orm::Entity {
    static auto unknown() {
      return static_cast<void (Orm::Entity::*)(Orm::AttributeId) const>(&Teller::notify);
    }
  };
  (entity.*Teller::unknown())(kUnknown);
}

template <class T>
void tellOf(const Ptr<T>& entity) {
  if (entity) tellOf(static_cast<const Orm::Entity&>(*entity));
}

template <class Members>
void tellOfEach(const Members& members) {
  for (const auto& member : members) tellOf(member);
}

template <class Groups>
void tellOfGroups(const Groups& groups) {
  for (const auto& group : groups) {
    tellOf(group);
    tellOf(group->systemFilter());
    tellOf(group->versionFilter());
  }
}

void tellOfConfigurations(const World& world) {
  using namespace Controller;
  for (const auto& dir : {world.mountConfigDir(), world.mountStatusDir(), world.publishConfigDir(),
                          world.publishStatusDir(), world.proxyMountConfigDir(),
                          world.proxyMountStatusDir(), world.rootDir()}) {
    tellOf(dir);
    for (const auto& slot : dir->entity()) {
      tellOf(slot.value);
      if (const auto mounts = Orm::dynamicCast<ServiceMountConfig>(slot.value)) {
        tellOfGroups(mounts->mountGroupConfig());
      }
      if (const auto publications = Orm::dynamicCast<ServicePublishConfig>(slot.value)) {
        tellOfGroups(publications->publishGroupConfig());
        for (const auto& group : publications->publishGroupConfig()) {
          tellOfEach(group->publishConfig());
          tellOfEach(group->publishDir());
        }
      }
      if (const auto status = Orm::dynamicCast<ServiceMountStatus>(slot.value)) {
        for (const auto& system : status->systemStatus()) {
          tellOf(system);
          tellOfEach(system->serviceMountGroupStatus());
        }
      }
    }
  }
}

void tellOfSwitches(const World& world) {
  tellOf(world.oobStatus());
  tellOf(world.peerTable());
  tellOfEach(world.peerTable()->peer());
  for (const auto& client : world.oobStatus()->clientStatus()) {
    tellOf(client);
    tellOf(client->serviceStatusDir());
    if (client->serviceStatusDir()) tellOfEach(client->serviceStatusDir()->service());
  }
  tellOf(world.serviceConfigDir());
  tellOfEach(world.serviceConfigDir()->service());
}

void tellOfRegistry(const World& world, const Machines& machines) {
  tellOf(world.mountsRegistry());
  tellOf(world.controllerdbStatus());
  tellOf(world.publishStatus());
  tellOfEach(world.mountsRegistry()->mountEntry());
  tellOfEach(world.mountsRegistry()->publishEntry());
  for (const auto& entry : machines.mountsRegistrySm()->mountsRegistryEntrySm()) {
    for (const auto& mount : entry->mountSmDataSm()) tellOf(mount->mountSmData());
  }
  const Controller::InitialMountSm& initial = *machines.initialMountSm();
  tellOf(initial.connectionPeriod());
  tellOf(initial.initialSwitchSet());
  for (const auto& service : initial.serviceInitialMountSm()) {
    for (const auto& group : service->mountGroupInitialMountSm()) {
      tellOf(group->mountGroupInitialSwitchSet());
      tellOf(group->processedSwitchSetInternal());
    }
  }
}

class UnknownAttributeTest : public testing::TestWithParam<double> {
 protected:
  static std::string stateOf(const SimulationRun& run) {
    std::ostringstream state;
    {
      JsonText json(state, JsonText::Layout::indented);
      run.writeState(json);
    }
    return state.str();
  }
};

/// An attribute that is added to an entity later must not do what another one is for.
TEST_P(UnknownAttributeTest, NoMachineFollowsWhatItDoesNotKnow) {
  const Document document = Document::parse("fabric.yaml", kFabric);
  std::ostringstream errors;
  SimulationRun run(document, errors);
  std::ostringstream events;
  run.eventsIs(events);
  run.simulation().untilIs(GetParam());
  run.run();
  const std::string before = stateOf(run);
  const std::string eventsBefore = events.str();
  EXPECT_NE(before.find("mounting"), std::string::npos);
  const std::uint32_t timers = run.simulation().clock()->armedTimers();

  const World& world = run.simulation().world();
  tellOfConfigurations(world);
  tellOfSwitches(world);
  tellOfRegistry(world, *run.simulation().machines());

  EXPECT_EQ(stateOf(run), before);
  EXPECT_EQ(events.str(), eventsBefore);
  EXPECT_EQ(run.simulation().clock()->armedTimers(), timers);
}

/// In the connection period, and while the group waits for the switch that is outstanding.
INSTANTIATE_TEST_SUITE_P(Phases, UnknownAttributeTest, testing::Values(1.0, 30.0));

}  // namespace
}  // namespace Fabric
