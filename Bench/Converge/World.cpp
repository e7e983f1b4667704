#include "Bench/Converge/World.h"

#include <memory>
#include <string_view>

#include "Platform/Orm/ActivityManagerConfig.h"

namespace Bench {

using namespace Controller;
using Orm::make;
using Orm::String;

namespace {

constexpr const char* kGeneration = "generation-1";
constexpr const char* kOtherGeneration = "generation-2";
constexpr std::string_view kMountRoot = "/mnt";
constexpr Orm::Seconds kHeartbeat = 5;
constexpr Orm::Seconds kConnectionPeriod = InitialMountSm::kTimeoutHeartbeatMultiple * kHeartbeat;
constexpr int kHighestTraced = 9;

/// Takes the lines of the text trace and forgets them.
class ForgetfulSink final : public Dualog::Sink {
 public:
  void line(const Dualog::Line&) override {}
};
ForgetfulSink forgetfulSink;

/// The group as the workload names it: without what tells the filter classes apart.
std::string_view plainGroup(const String& libraryGroup) {
  return libraryGroup.view().substr(0, libraryGroup.view().find(' '));
}

String libraryGroup(const Scenario& scenario, std::uint32_t entry) {
  const std::string plain = Scenario::groupName(scenario.groupOf(entry));
  if (!scenario.filtered(entry)) return plain;
  return plain + " filter-" + std::to_string(Scenario::filterClass(entry));
}

/// The library mounts a path below a directory of its own, under the switch's name; in the digest
/// the switch comes first.
std::string switchFirst(const Fennix::ChildPath& mounted) {
  if (mounted.empty()) return {};
  std::string text(kMountRoot);
  text.append("/").append(mounted.name().view());
  return text.append(mounted.directory().view().substr(kMountRoot.size()));
}

}  // namespace

// ---- construct

World::World(const Scenario& scenario)
    : scenario_(scenario),
      clock_(make<Orm::Clock>(std::make_unique<Orm::VirtualTime>(0))),
      loop_(clock_),
      root_(make<Fennix::Dir>()),
      configDir_(make<Fennix::Dir>()),
      statusDir_(make<Fennix::Dir>()),
      registry_(make<MountsRegistry>(root_, "/", root_, "/switch", 0U, 0.0)),
      database_(make<Controllerdb::Status>()),
      publications_(make<Controllerdb::PublishStatus>()),
      serviceConfigs_(make<ServiceConfigDir>()),
      oobConfig_(make<ControllerOob::Config>()),
      oob_(make<ControllerOob::Status>()) {
  MountSm::factoryIs(&mounts_);
  Orm::ActivityManagerConfig::instanceIs(clock_);
  tracesAre(scenario.options().traces);
  database_->leaderGenIdIs(kGeneration);
  oob_->peerTableIs(make<PeerTable>());
  const auto heartbeat = make<Heartbeat::Config>();
  heartbeat->heartbeatIntervalIs(kHeartbeat);
  oobConfig_->heartbeatConfigIs(heartbeat);
}

World::~World() {
  initialSm_ = nullptr;
  registrySm_ = nullptr;
  configSm_ = nullptr;
  MountSm::factoryIs(nullptr);
  Orm::ActivityManagerConfig::instanceIs(nullptr);
}

void World::tracesAre(Options::Traces traces) {
  if (traces == Options::Traces::fast) Dualog::fastTraceIs(true);
  if (traces != Options::Traces::text) return;
  Dualog::sinkIs(&forgetfulSink);
  for (Dualog::Handle* handle : Dualog::handles()) handle->levelIs(kHighestTraced);
}

void World::configure() {
  const Options& options = scenario_.options();
  for (std::uint32_t sw = 0; sw != options.switches; ++sw) {
    const SystemId systemId = SystemId::ofName(Scenario::switchName(sw));
    switches_.push_back({systemId, systemId.stringValue(),
                         Pomix::IpAddrPort(Pomix::IpAddr::fromV4(0x0a000000 + sw), 40000),
                         mounts_.switchIs(systemId)});
  }
  for (std::uint32_t service = 0; service != options.services; ++service) {
    const Service made{Scenario::serviceName(service), make<ServiceMountConfig>(),
                       make<ServiceMountStatus>()};
    made.config->serviceNameIs(made.name);
    made.config->genIdIs(kGeneration);
    services_.push_back(made);
  }
  for (std::uint32_t entry = 0; entry != options.entries; ++entry) addEntry(entry);
  for (const Service& service : services_) {
    libraryGroups_ += service.config->mountGroupConfig().size();
    configDir_->entityIs(service.name, service.config);
    statusDir_->entityIs(service.name, service.status);
  }
  configSm_ = serviceConfigDirSmFactory(database_, configDir_, statusDir_, nullptr, nullptr,
                                        nullptr, nullptr, publications_, registry_);
  registrySm_ = mountsRegistrySmFactory(registry_, oob_, oobConfig_->heartbeatConfig(), root_,
                                        publications_, serviceConfigs_);
  if (options.initial) {
    initialSm_ = initialMountSmFactory(configDir_, statusDir_, oobConfig_, oob_, database_);
  }
}

void World::addEntry(std::uint32_t entry) {
  ServiceMountConfig& config = *services_[scenario_.serviceOf(entry)].config;
  const String name = libraryGroup(scenario_, entry);
  const bool isNew = !config.mountGroupConfig(name);
  ServiceMountGroupConfig& group = *config.mountGroupConfigIs(name);
  if (isNew && scenario_.filtered(entry)) setFilters(group, Scenario::filterClass(entry));
  const String path = scenario_.path(entry);
  group.mountConfigIs(path, "Bench::Item", "r", String({kMountRoot, path.view()}));
}

void World::setFilters(ServiceMountGroupConfig& group, std::uint32_t filterClass) {
  const auto systems = make<MountFilterSystem>(group.groupName());
  const auto versions = make<MountFilterServiceVersion>(group.groupName());
  for (std::uint32_t from = 0; from != Scenario::kContributors; ++from) {
    for (std::uint32_t sw = 0; sw != switches_.size(); ++sw) {
      if (!Scenario::contributorNames(from, filterClass, sw)) continue;
      systems->includedSystemIs(switches_[sw].name, true);
    }
    for (const std::uint32_t version : Scenario::contributorVersions(from)) {
      versions->includedServiceVersionIs(version, true);
    }
  }
  group.systemFilterIs(systems);
  group.versionFilterIs(versions);
  lastFilter_ = Filter(systems);
}

// ---- the switches

void World::connect(std::uint32_t sw) {
  const Switch& it = switches_[sw];
  const auto client = oob_->clientStatusIs(it.address, it.systemId);
  client->serviceStatusDirIs(make<ServiceStatusDir>());
  const auto peer = make<Peer>(it.systemId, it.address);
  peer->connectionConfigIs(make<ConnectionConfig>(it.address));
  oob_->peerTable()->peerIs(peer);
}

void World::connected() {
  if (initialSm_) loop_.run(clock_->now() + kConnectionPeriod);
}

void World::announce(std::uint32_t sw) {
  ServiceStatusDir& services = *oob_->clientStatus(switches_[sw].address)->serviceStatusDir();
  for (std::uint32_t service = 0; service != services_.size(); ++service) {
    const std::uint32_t version = Scenario::negotiated(sw, service);
    auto status = make<ServiceStatusV1>(services_[service].name);
    status->enabledIs(true);
    status->versionStatusIs(make<ServiceVersionStatusV1>(true, version != 0, version));
    services.serviceIs(std::move(status));
  }
}

void World::progress(std::uint32_t sw) { mounts_.advance(switches_[sw].number); }

void World::converged() {
  if (initialSm_) loop_.run(clock_->now() + 1);
}

void World::disconnect(std::uint32_t sw) {
  const Switch& it = switches_[sw];
  oob_->peerTable()->peerDel(it.systemId);
  oob_->clientStatusDel(it.address);
  mounts_.settle();
  mounts_.sweep(it.number);
}

// ---- events

void World::filterEdit(bool included) {
  if (!lastFilter_) return;
  bool isFirst = true;  // it stays: a union without a member would let everyone in
  lastFilter_->includedSystem().walk([&](const String& system, bool) {
    if (!isFirst) lastFilter_->includedSystemIs(system, included);
    isFirst = false;
  });
  mounts_.settle();
}

void World::leaderIs(bool ours) {
  database_->leaderGenIdIs(ours ? kGeneration : kOtherGeneration);
  mounts_.settle();
}

// ---- outcome

Outcome World::outcome() const {
  Outcome outcome;
  for (const Service& service : services_) {
    for (const auto& system : service.status->systemStatus()) {
      groupOutcome(service, *system, outcome);
    }
  }
  return outcome;
}

void World::groupOutcome(const Service& service, const SystemStatus& system,
                         Outcome& outcome) const {
  for (std::uint32_t number = 0; number != scenario_.options().groups; ++number) {
    const std::string plain = Scenario::groupName(number);
    bool exists = false;
    bool converged = true;
    for (const auto& group : system.serviceMountGroupStatus()) {
      if (plainGroup(group->groupName()) != plain || group->mountStatus().empty()) continue;
      exists = true;
      converged = converged && group->mountState() == MountState::mounted;
      for (const auto& leaf : group->mountStatus()) {
        ++outcome.mounts;
        outcome.digest += leafDigest(
            service.name.view(), system.name().view(), plain, leaf->path().view(),
            static_cast<std::uint32_t>(leaf->mountState()), switchFirst(leaf->mountedPath()));
      }
    }
    outcome.groups += exists ? 1 : 0;
    outcome.groupsConverged += exists && converged ? 1 : 0;
  }
}

std::uint32_t World::initialMountsComplete() const {
  std::uint32_t complete = 0;
  for (const Service& service : services_) {
    for (const auto& group : service.status->initialMountsComplete()) {
      complete += group.value ? 1 : 0;
    }
  }
  return complete;
}

}  // namespace Bench
