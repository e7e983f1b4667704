#include <algorithm>
#include <functional>
#include <map>
#include <type_traits>
#include <vector>

#include "Soak/Broken.h"
#include "Soak/Invariants.h"

// What the machines keep to be found again: by a service, by the clock.

namespace Soak {

using Controller::Mounter;
using Controller::MountsRegistryEntrySm;
using Controller::MountsRegistrySm;
using Controller::PublishRegistryEntrySm;
using Orm::Ptr;
using Orm::String;

/// The entries that are found by a service are those of a walk over all of them, in its order.
void Invariants::checkIndexes() const {
  const MountsRegistrySm& machine = *simulation_.machines()->mountsRegistrySm();
  std::map<String, std::vector<const MountsRegistryEntrySm*>> mounts;
  for (const auto& entry : machine.mountsRegistryEntrySm()) {
    std::set<String> services;
    for (const Ptr<Mounter>& mounter : entry->registryEntry()->mounter()) {
      services.insert(Truth::realName(mounter->serviceName()));
    }
    for (const String& service : services) mounts[service].push_back(entry.get());
  }
  std::map<String, std::vector<const PublishRegistryEntrySm*>> publications;
  for (const auto& entry : machine.publishRegistryEntrySm()) {
    publications[Truth::realName(entry->publishEntry()->serviceName())].push_back(entry.get());
  }
  const auto check = [](const auto& all, const auto& index) {
    require(all.size() == index.services(), "an index has the services that have entries");
    for (const auto& [service, entries] : all) {
      std::remove_cvref_t<decltype(entries)> found;
      index.walk(service, [&found](const auto& entry) { found.push_back(&entry); });
      require(found == entries, "an index has the entries of a service:", service.view());
    }
  };
  check(mounts, machine.mountsOfService());
  check(publications, machine.publicationsOfService());
}

/// A timer that the clock knows belongs to a machine that is reached from the top ones, or is a
/// round of a simulated demultiplexer that is there. What it points at is not looked at before.
void Invariants::checkTimers() const {
  const MountsRegistrySm& registry = *simulation_.machines()->mountsRegistrySm();
  std::vector<const Orm::ClockTimer*> living;
  for (const auto& entry : registry.mountsRegistryEntrySm()) {
    living.push_back(&entry->timeoutClock());
  }
  for (const auto& entry : registry.publishRegistryEntrySm()) {
    living.push_back(&entry->entityPresenceCheckClock());
  }
  const Controller::InitialMountSm& initial = *simulation_.machines()->initialMountSm();
  living.push_back(&initial.connectionClock());
  for (const auto& service : initial.serviceInitialMountSm()) {
    for (const auto& group : service->mountGroupInitialMountSm()) {
      living.push_back(&group->mountClock());
      living.push_back(&group->attrlogFlushTimer());
    }
  }
  simulation_.attrlog().walkDemuxers([&living](const Fabric::SimulatedDemuxer& demuxer) {
    demuxer.walkRounds([&living](const Orm::ClockTimer& round) { living.push_back(&round); });
  });
  std::sort(living.begin(), living.end(), std::less<>());
  simulation_.clock()->walkQueued([&living](const Orm::ClockTimer* timer) {
    require(std::binary_search(living.begin(), living.end(), timer, std::less<>()),
            "each timer has an owner that is there");
  });
}

}  // namespace Soak
