#include "Soak/Invariants.h"

#include <array>
#include <vector>

#include "Fabric/SimulatedMountSm.h"
#include "Platform/Orm/ActivityScope.h"
#include "Soak/Broken.h"

namespace Soak {

using Controller::MountConfig;
using Controller::Mounter;
using Controller::MountsRegistryEntry;
using Controller::MountsRegistrySm;
using Controller::MountState;
using Controller::MountStatus;
using Controller::Peer;
using Controller::PublishRegistryEntry;
using Controller::PublishRegistryEntrySm;
using Controller::ServiceMountConfig;
using Controller::ServiceMountGroupConfig;
using Controller::ServiceMountGroupStatus;
using Controller::ServiceMountStatus;
using Controller::SystemId;
using Controller::SystemStatus;
using Fabric::MountRequestKind;
using Fabric::SimulatedMountSm;
using Orm::Ptr;
using Orm::String;

namespace {

/// Collections have no iterators for the standard's algorithms.
template <class Members, class Predicate>
bool anyOf(const Members& members, const Predicate& predicate) {
  for (const auto& member : members) {
    if (predicate(member)) return true;
  }
  return false;
}

const MountsRegistrySm& registrySm(const Fabric::Simulation& simulation) {
  return *simulation.machines()->mountsRegistrySm();
}

}  // namespace

void Invariants::check() {
  require(Orm::ActivityScope::zombies() == 0, "a machine waits to be reclaimed after the event");
  if (!simulation_.machines()) return;
  require(seen_.empty(), "no entry waits when its service gets ready:", seen_);
  checkRegistryMachine();
  checkIndexes();
  checkTimers();
  for (const Ptr<MountsRegistryEntry>& entry : world().mountsRegistry()->mountEntry()) {
    const auto* const machine = registrySm(simulation_).mountsRegistryEntrySm().find(entry->name());
    require(machine != nullptr, "a mount entry without its machine:", entry->name().view());
    checkEntry(*entry, *machine);
    checkMounters(*entry);
  }
  checkStatuses(*world().mountStatusDir(), *world().mountConfigDir());
  checkStatuses(*world().proxyMountStatusDir(), *world().proxyMountConfigDir());
  checkConfigurations(*world().mountConfigDir(), *world().mountStatusDir(), false);
  checkConfigurations(*world().proxyMountConfigDir(), *world().proxyMountStatusDir(), true);
  checkPublications();
  checkReadiness();
}

std::set<std::string> Invariants::untold() const {
  std::set<std::string> names;
  for (const Ptr<MountsRegistryEntry>& entry : world().mountsRegistry()->mountEntry()) {
    for (const Ptr<Mounter>& mounter : entry->mounter()) {
      for (const auto& [untold, systemId] : untold_) {
        if (untold != mounter.get()) continue;
        names.insert(mounter->serviceName().str() + ' ' + systemId.stringValue().str() + ' ' +
                     entry->name().str());
      }
    }
  }
  return names;
}

void Invariants::readinessCame(std::string_view service, bool ready) {
  if (ready && simulation_.machines() && hasWaitingEntry(String(service))) seen_ = service;
}

bool Invariants::hasWaitingEntry(const String& service) const {
  return anyOf(registrySm(simulation_).publishRegistryEntrySm(), [&service](const auto& machine) {
    return machine->publishEntry()->serviceName() == service &&
           machine->entityPresenceCheckClockTimeMin() != Orm::kNever;
  });
}

void Invariants::checkRegistryMachine() const {
  const Controller::MountsRegistry& registry = *world().mountsRegistry();
  const MountsRegistrySm& machine = registrySm(simulation_);
  require(registry.mountEntry().size() == machine.mountsRegistryEntrySm().size(),
          "as many machines as mount entries");
  require(registry.publishEntry().size() == machine.publishRegistryEntrySm().size(),
          "as many machines as publish entries");
  require(machine.peerTable() == world().peerTable().get(), "the peer table that is there");
  require(world().peerTable()->peer().size() == machine.connectionServiceStatusDirSm().size(),
          "as many machines as peers");
  for (const Ptr<Peer>& peer : world().peerTable()->peer()) {
    const auto* const connection = machine.connectionServiceStatusDirSm().find(peer->name());
    require(connection != nullptr, "a peer without its machine:", peer->name().view());
    require(connection->peer() == peer, "the machine of another peer:", peer->name().view());
  }
}

// ---- mounts

void Invariants::checkEntry(const Entry& entry, const EntrySm& machine) {
  require(machine.registryEntry().get() == &entry,
          "the machine of another entry:", entry.name().view());
  require(entry.mounter().size() == machine.mounterConfigSm().size(),
          "as many machines as mounters:", entry.name().view());
  for (const Ptr<Mounter>& mounter : entry.mounter()) {
    require(machine.mounterConfigSm().find(mounter->serviceName()) != nullptr,
            "a mounter without its machine:", entry.name().view(), mounter->serviceName().view());
  }
  const Truth::Filters filters = Truth::filtersOf(entry);
  checkFilters(filters, machine);
  for (const Ptr<Peer>& peer : world().peerTable()->peer()) {
    checkMount(entry, machine, filters, *peer);
  }
  checkRecords(entry, machine);
}

void Invariants::checkFilters(const Truth::Filters& filters, const EntrySm& machine) const {
  const std::string_view path = machine.entryName().view();
  require(filters.wildcard == machine.wildcard(), "wildcard as the mounters say:", path);
  require(filters.systems.size() == machine.connectionFilter().size(),
          "the connection filter has the mounters' systems:", path);
  for (const Truth::Filters::System& system : filters.systems) {
    require(machine.connectionFilter().value(system.name) == system.count,
            "the connection filter counts the mounters:", path, system.name.view());
  }
  std::size_t versions = 0;
  for (const auto& filter : machine.versionFilter()) {
    require(!filter->version().empty(), "no version filter without versions:", path);
    versions += filter->version().size();
  }
  require(filters.versions.size() == versions,
          "the version filters have the mounters' versions:", path);
  for (const Truth::Filters::Version& version : filters.versions) {
    const auto* const filter = machine.versionFilter().find(version.service);
    require(filter && filter->version().value(version.version),
            "a mounter's version is in the version filter:", path, version.service.view());
  }
}

void Invariants::checkMount(const Entry& entry, const EntrySm& machine,
                            const Truth::Filters& filters, const Peer& peer) {
  if (excuses_.isUndecided(peer.systemId())) return;
  const bool admitted = truth_.admits(entry, filters, peer);
  const auto* const mount = static_cast<SimulatedMountSm*>(machine.mountSm(peer.systemId()));
  const auto pending = mount ? mount->pending() : std::nullopt;
  const bool leaving = pending && *pending != MountRequestKind::mount;
  require(!admitted || (mount && !leaving),
          "a mount that is admitted is there:", entry.name().view(), peer.name().view());
  require(admitted || !mount || leaving,
          "a mount that is not admitted is on its way out:", entry.name().view(),
          peer.name().view());
  if (admitted) {
    require(machine.admission(peer.systemId()) == Controller::Admission::admitted,
            "a mount that is there was admitted:", entry.name().view(), peer.name().view());
    checkStatusOfMount(entry, machine, peer);
  } else if (!entry.mounter().empty()) {
    require(machine.admission(peer.systemId()) != Controller::Admission::admitted,
            "a switch that is refused has a reason:", entry.name().view(), peer.name().view());
  }
}

void Invariants::checkRecords(const Entry& entry, const EntrySm& machine) const {
  for (const auto& record : machine.mountSmDataSm()) {
    const String system = record->systemId().stringValue();
    require(static_cast<bool>(record->mountSm()),
            "a record has its mount machine:", entry.name().view(), system.view());
    require(record->lastMountState() == record->mountSmData()->mountState(),
            "a record's state was seen:", entry.name().view(), system.view());
    if (truth_.peer(record->systemId())) continue;
    const auto pending = static_cast<SimulatedMountSm*>(record->mountSm().get())->pending();
    require(pending && *pending != MountRequestKind::mount,
            "a mount from a switch that has gone is on its way out:", entry.name().view(),
            system.view());
  }
}

/// A mount whose outcome is there has a status with each mounter that wants the switch.
void Invariants::checkStatusOfMount(const Entry& entry, const EntrySm& machine, const Peer& peer) {
  const auto* const mount = static_cast<SimulatedMountSm*>(machine.mountSm(peer.systemId()));
  const bool pending = mount->pending().has_value();
  // A filter that gains or loses a system that another one includes decides nothing.
  std::size_t systemFilters = 0;
  for (const Ptr<Mounter>& mounter : entry.mounter()) {
    if (mounter->mountGroupConfig()->systemFilter()) ++systemFilters;
  }
  const MountState state = machine.mountSmDataSm(peer.systemId())->lastMountState();
  for (const Ptr<Mounter>& mounter : entry.mounter()) {
    if (excuses_.isRenamed(mounter->serviceName().view())) continue;
    const SystemStatus* const system = mounter->serviceMountStatus()->systemStatus(peer.name());
    const ServiceMountGroupStatus* const group =
        system ? system->serviceMountGroupStatus(mounter->groupName()) : nullptr;
    const MountStatus* const status = group ? group->mountStatus(entry.name()) : nullptr;
    const auto key = std::pair(mounter.get(), peer.systemId());
    if (!group) untold_.insert(key);
    if (status) untold_.erase(key);
    if (pending || systemFilters > 1 || untold_.contains(key)) continue;
    const bool wanted =
        truth_.wants(*mounter, peer) && mounter->mountGroupConfig()->mountConfig(entry.name());
    if (!wanted) {
      require(!status || state != MountState::mounted,
              "no status for a mounter that does not want the switch:", entry.name().view(),
              mounter->serviceName().view(), peer.name().view());
      continue;
    }
    require(status != nullptr, "a mounter that wants the switch has a status:", entry.name().view(),
            mounter->serviceName().view(), peer.name().view());
    require(status->mountState() == state,
            "a mounter is told the state of the mount:", entry.name().view(),
            mounter->serviceName().view(), peer.name().view());
  }
}

// ---- what the services are told

void Invariants::checkStatuses(const Fennix::Dir& statuses, const Fennix::Dir& configs) {
  for (const auto& slot : statuses.entity()) {
    const auto status = Orm::dynamicCast<ServiceMountStatus>(slot.value);
    if (!status) continue;
    for (const Ptr<SystemStatus>& system : status->systemStatus()) {
      checkSystem(slot.key, *status, *system);
    }
    const auto config = configs.entityAs<ServiceMountConfig>(slot.key);
    for (const auto& complete : status->initialMountsComplete()) {
      require(config && config->mountGroupConfig(complete.key),
              "initial mounts of a group that is there:", slot.key.view(), complete.key.view());
    }
    for (const auto& prefix : status->mountedPathPrefix()) {
      const MountsRegistryEntry* const entry = world().mountsRegistry()->mountEntry(prefix.key);
      require(entry && entry->targetPath() == prefix.value,
              "a path prefix is an entry's target:", slot.key.view(), prefix.key.view());
    }
  }
}

void Invariants::patchCame() {
  if (!simulation_.machines()) return;
  lookForLeftBehind(*world().mountStatusDir());
  lookForLeftBehind(*world().proxyMountStatusDir());
}

void Invariants::lookForLeftBehind(const Fennix::Dir& statuses) {
  for (const auto& slot : statuses.entity()) {
    const auto status = Orm::dynamicCast<ServiceMountStatus>(slot.value);
    if (!status || hasMounter(*status)) continue;
    for (const Ptr<SystemStatus>& system : status->systemStatus()) {
      if (isKnown(SystemId::ofName(system->name().view()))) continue;
      leftBehind_.insert({status.get(), system->name().str()});
    }
  }
}

bool Invariants::isKnown(const SystemId& systemId) const {
  return truth_.peer(systemId) || world().oobStatus()->inactive().has(systemId);
}

bool Invariants::hasMounter(const ServiceMountStatus& status) const {
  return anyOf(world().mountsRegistry()->mountEntry(), [&](const auto& entry) {
    return anyOf(entry->mounter(),
                 [&](const auto& one) { return one->serviceMountStatus().get() == &status; });
  });
}

void Invariants::checkSystem(const String& service, const ServiceMountStatus& status,
                             const SystemStatus& system) {
  const auto key = std::pair(&status, system.name().str());
  if (isKnown(SystemId::ofName(system.name().view()))) {
    leftBehind_.erase(key);
  } else {
    if (!hasMounter(status)) leftBehind_.insert(key);
    require(leftBehind_.contains(key), "no status of a switch that is forgotten:", service.view(),
            system.name().view());
  }
  for (const Ptr<ServiceMountGroupStatus>& group : system.serviceMountGroupStatus()) {
    checkGroup(service, status, system, *group);
  }
}

void Invariants::checkGroup(const String& service, const ServiceMountStatus& status,
                            const SystemStatus& system,
                            const ServiceMountGroupStatus& group) const {
  const SystemId systemId = SystemId::ofName(system.name().view());
  std::array<std::uint32_t, Controller::kMountStates> counts{};
  const bool renamed = excuses_.isRenamed(service.view());
  for (const Ptr<MountStatus>& path : group.mountStatus()) {
    ++counts[static_cast<std::size_t>(path->mountState())];
    const std::string_view name = path->path().view();
    const MountsRegistryEntry* const entry = world().mountsRegistry()->mountEntry(path->path());
    require(entry != nullptr, "a mount status of an entry that is there:", service.view(), name);
    require(renamed || anyOf(entry->mounter(),
                             [&](const auto& mounter) {
                               return mounter->serviceMountStatus().get() == &status &&
                                      mounter->groupName() == group.groupName() &&
                                      mounter->mountGroupConfig()->mountConfig(path->path());
                             }),
            "a mount status of a mounter that is there:", service.view(), name);
    const auto* const machine = registrySm(simulation_).mountsRegistryEntrySm().find(path->path());
    const auto* const record = machine->mountSmDataSm(systemId);
    require(record != nullptr, "a mount status of a mount that is there:", service.view(), name,
            system.name().view());
    require(record->lastMountState() == path->mountState(),
            "a mount status has its mount's state:", service.view(), name, system.name().view());
    require(path->mountState() != MountState::mounted || !path->mountedPath().empty(),
            "what is mounted has a path:", service.view(), name, system.name().view());
  }
  for (std::size_t state = 0; state != counts.size(); ++state) {
    require(counts[state] == group.mountStatusCount(static_cast<MountState>(state)),
            "a group counts its mount statuses by state:", service.view(), group.groupName().view(),
            system.name().view());
  }
  const bool failed = counts[static_cast<std::size_t>(MountState::failed)] != 0;
  require(!failed || group.mountState() == MountState::failed,
          "a group with a failed mount failed:", service.view(), group.groupName().view(),
          system.name().view());
  const std::uint32_t mounted = counts[static_cast<std::size_t>(MountState::mounted)];
  require(
      renamed || group.mountState() != MountState::mounted || mounted == group.mountStatus().size(),
      "all mounts of a group that is mounted are:", service.view(), group.groupName().view(),
      system.name().view());
  require(group.mountStatus().empty() || group.processed(),
          "a group with a mount was processed:", service.view(), group.groupName().view(),
          system.name().view());
}

// ---- configuration

/// What a service names while the generations agree is in the registry.
void Invariants::checkConfigurations(const Fennix::Dir& configs, const Fennix::Dir& statuses,
                                     bool proxies) const {
  const String& leader = world().controllerdbStatus()->leaderGenId();
  for (const auto& slot : configs.entity()) {
    const auto config = Orm::dynamicCast<ServiceMountConfig>(slot.value);
    if (!config || !statuses.entityAs<ServiceMountStatus>(slot.key)) continue;
    const bool open = proxies || (!leader.empty() && config->genId() == leader);
    if (!open || config->serviceName().empty() || excuses_.isRenamed(slot.key.view())) continue;
    for (const Ptr<ServiceMountGroupConfig>& group : config->mountGroupConfig()) {
      for (const Ptr<MountConfig>& path : group->mountConfig()) {
        if (excuses_.isNamedTwice(config->serviceName().view(), path->path().view())) continue;
        const MountsRegistryEntry* const entry = world().mountsRegistry()->mountEntry(path->path());
        const Mounter* const mounter = entry ? entry->mounter(config->serviceName()) : nullptr;
        require(mounter && mounter->groupName() == group->groupName(),
                "what a service wants mounted is in the registry:", slot.key.view(),
                group->groupName().view(), path->path().view());
      }
    }
  }
}

/// Each mounter stands for a group that is there and an open gate.
void Invariants::checkMounters(const Entry& entry) const {
  const String& leader = world().controllerdbStatus()->leaderGenId();
  for (const Ptr<Mounter>& mounter : entry.mounter()) {
    const String& service = mounter->serviceName();
    if (excuses_.isRenamed(service.view())) continue;
    const bool proxy =
        static_cast<bool>(world().proxyMountConfigDir()->entityAs<ServiceMountConfig>(service));
    const Fennix::Dir& configs = proxy ? *world().proxyMountConfigDir() : *world().mountConfigDir();
    const Fennix::Dir& statuses =
        proxy ? *world().proxyMountStatusDir() : *world().mountStatusDir();
    const auto config = configs.entityAs<ServiceMountConfig>(service);
    require(config && (proxy || (!leader.empty() && config->genId() == leader)),
            "a mounter of a service whose gate is open:", entry.name().view(), service.view());
    require(config->mountGroupConfig(mounter->groupName()) == mounter->mountGroupConfig().get(),
            "a mounter of a group that is there:", entry.name().view(), service.view());
    require(mounter->mountGroupConfig()->mountConfig(entry.name()) != nullptr,
            "a mounter of a path that its group names:", entry.name().view(), service.view());
    require(statuses.entityAs<ServiceMountStatus>(service) == mounter->serviceMountStatus(),
            "a mounter writes the status that is there:", entry.name().view(), service.view());
  }
}

// ---- publications

void Invariants::checkPublications() const {
  for (const Ptr<PublishRegistryEntry>& entry : world().mountsRegistry()->publishEntry()) {
    const auto* const machine =
        registrySm(simulation_).publishRegistryEntrySm().find(entry->name());
    require(machine != nullptr, "a publish entry without its machine:", entry->name().view());
    require(machine->publishEntry() == entry,
            "the machine of another publish entry:", entry->name().view());
    for (const Ptr<Peer>& peer : world().peerTable()->peer()) checkPublication(*machine, *peer);
  }
  for (const auto& system : world().publishStatus()->system()) checkPublished(*system);
}

void Invariants::checkPublication(const PublishRegistryEntrySm& machine, const Peer& peer) const {
  if (excuses_.isUndecided(peer.systemId())) return;
  const PublishRegistryEntry& entry = *machine.publishEntry();
  const auto* const system = world().publishStatus()->system(peer.systemId());
  require(system != nullptr, "a peer has a publish record:", peer.name().view());
  const String path =
      entry.isPrefixPath() ? String({entry.name().view(), "/", peer.name().view()}) : entry.name();
  const Controllerdb::MountDesc* const mount = system->publishedMount().find(path);
  const bool wanted = truth_.publishes(entry, peer);
  const bool waits = machine.entityPresenceCheckClockTimeMin() != Orm::kNever;
  require(!wanted || waits || mount || excuses_.hasLostEntity(entry.name().view()),
          "what may be published is:", path.view(), peer.name().view());
  require(wanted || !mount || !truth_.hasLocalEntity(entry),
          "what may not be published is not:", path.view(), peer.name().view());
}

void Invariants::checkPublished(const Controllerdb::SystemPublishedMount& system) const {
  const String name = system.systemId().stringValue();
  for (const auto& slot : system.publishedMount()) {
    require(truth_.peer(system.systemId()) != nullptr, "publications to a peer:", name.view());
    const std::string_view path = slot.key.view();
    const auto& registry = *world().mountsRegistry();
    const PublishRegistryEntry* entry = registry.publishEntry(slot.key);
    if (!entry) {
      entry = registry.publishEntry(String(path.substr(0, path.rfind('/'))));
      require(entry && entry->isPrefixPath() && path.substr(path.rfind('/') + 1) == name.view(),
              "a publication of an entry that is there:", path, name.view());
    }
    require(slot.value.serviceName == entry->serviceName() && slot.value.type == entry->type(),
            "a publication says what its entry says:", path, name.view());
  }
}

void Invariants::checkReadiness() const {
  const auto& wanted = world().mountsRegistry()->servicePublishReady();
  const auto& told = world().publishStatus()->servicePublishReady();
  for (const auto& slot : told) {
    require(!slot.value || wanted.value(slot.key), "ready is who says so:", slot.key.view());
  }
  for (const auto& slot : wanted) {
    if (!slot.value || told.value(slot.key)) continue;
    require(hasWaitingEntry(slot.key),
            "who says so is ready, unless an entry waits:", slot.key.view());
  }
}

}  // namespace Soak
