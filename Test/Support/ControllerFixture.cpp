#include "Test/Support/ControllerFixture.h"

#include <algorithm>
#include <stdexcept>

#include "Platform/Flipset/Flipset.h"
#include "Platform/Orm/ActivityManagerConfig.h"

namespace Support {

using namespace Controller;
using Orm::Ptr;
using Orm::String;

namespace {

constexpr Orm::Seconds kStart = 1000;
constexpr const char* kGeneration = "gen-1";

[[noreturn]] void missing(const std::string& what) {
  throw std::runtime_error("the test asks for what is not there: " + what);
}

}  // namespace

ControllerFixture::ControllerFixture()
    : liveAtStart_(Kobble::liveObjects()), previousFactory_(MountSm::factoryIs(&mounts_)) {
  Orm::ActivityManagerConfig::instanceIs(nullptr);
  clock_ = Orm::make<Orm::Clock>(std::make_unique<Orm::VirtualTime>(kStart));
  Orm::ActivityManagerConfig::instanceIs(clock_);
  loop_.emplace(clock_);
  root_ = Orm::make<Fennix::Dir>();
  registryDir_ = root_->createDir("controller")->createDir("mounts");
  registrySettingsAre("/switch", 0, 0);
  controllerdbStatus_ = Orm::make<Controllerdb::Status>();
  controllerdbStatus_->leaderGenIdIs(kGeneration);
  publishStatus_ = Orm::make<Controllerdb::PublishStatus>();
  oobStatus_ = Orm::make<ControllerOob::Status>();
  oobStatus_->peerTableIs(Orm::make<PeerTable>());
  serviceConfigDir_ = Orm::make<ServiceConfigDir>();
  heartbeatConfig_ = Orm::make<Heartbeat::Config>();
  heartbeatConfig_->heartbeatIntervalIs(5);
}

ControllerFixture::~ControllerFixture() {
  configSm_ = nullptr;
  registrySm_ = nullptr;
  registry_ = nullptr;
  publishStatus_ = nullptr;
  controllerdbStatus_ = nullptr;
  oobStatus_ = nullptr;
  serviceConfigDir_ = nullptr;
  heartbeatConfig_ = nullptr;
  registryDir_ = nullptr;
  root_ = nullptr;
  EXPECT_EQ(0U, clock_->armedTimers());
  EXPECT_EQ(0U, clock_->notifieeCount());
  loop_.reset();
  clock_ = nullptr;
  Orm::ActivityManagerConfig::instanceIs(nullptr);
  Flipset::toggleDelAll();
  MountSm::factoryIs(previousFactory_);
  Dualog::fastTraceIs(false);
  EXPECT_TRUE(mounts_.live().empty());
  for (const auto& type : Kobble::liveTypes()) {
    if (Kobble::liveObjects() != liveAtStart_) ADD_FAILURE() << type.live << " " << type.name;
  }
}

void ControllerFixture::registrySettingsAre(const String& remoteRoot,
                                            std::uint32_t reconnectRetries,
                                            Orm::Seconds mountTimeout) {
  registry_ = Orm::make<MountsRegistry>(registryDir_, registryDir_->path(), root_, remoteRoot,
                                        reconnectRetries, mountTimeout);
}

// ---- the machines

MountsRegistrySm& ControllerFixture::startRegistry() {
  registrySm_ = mountsRegistrySmFactory(registry_, oobStatus_, heartbeatConfig_, root_,
                                        publishStatus_, serviceConfigDir_);
  return *registrySm_;
}

ServiceConfigDirSm& ControllerFixture::startConfig() {
  configSm_ = serviceConfigDirSmFactory(
      controllerdbStatus_, mountConfigDir(), mountStatusDir(), publishConfigDir(),
      publishStatusDir(), proxyMountConfigDir(), proxyMountStatusDir(), publishStatus_, registry_);
  return *configSm_;
}

void ControllerFixture::start() {
  startConfig();
  startRegistry();
}

MountsRegistryEntrySm& ControllerFixture::entrySm(const String& path) const {
  MountsRegistryEntrySm* const entry = registrySm_->mountsRegistryEntrySm().find(path);
  if (!entry) missing("the machine of the mount entry " + path.str());
  return *entry;
}

// ---- the switches

Pomix::IpAddrPort ControllerFixture::address(const SystemId& systemId) {
  const auto number = static_cast<std::uint32_t>(systemId.address().value());
  return {Pomix::IpAddr::fromV4(number), 9000};
}

void ControllerFixture::connect(const char* system, const Versions& versions,
                                const Ptr<ConnectionConfig const>& config) {
  const SystemId id = systemId(system);
  const Ptr<ServiceStatusDir> services = Orm::make<ServiceStatusDir>();
  for (const auto& [service, version] : versions) {
    const Ptr<ServiceStatusV1> status = Orm::make<ServiceStatusV1>(service);
    status->enabledIs(true);
    status->versionStatusIs(Orm::make<ServiceVersionStatusV1>(true, version != 0, version));
    services->serviceIs(status);
  }
  oobStatus_->clientStatusIs(address(id), id)->serviceStatusDirIs(services);
  const Ptr<Peer> peer = Orm::make<Peer>(id, address(id));
  peer->connectionConfigIs(config);
  peerTable().peerIs(peer);
}

void ControllerFixture::disconnect(const char* system) {
  const SystemId id = systemId(system);
  peerTable().peerDel(id);
  oobStatus_->clientStatusDel(address(id));
}

void ControllerFixture::inactive(const char* system) {
  oobStatus_->inactiveIs(systemId(system), address(systemId(system)));
}

ServiceStatusDir& ControllerFixture::serviceStatusDir(const char* system) const {
  const ControllerOob::ClientStatus* const client =
      oobStatus_->clientStatus(address(systemId(system)));
  if (!client) missing("the client status of " + std::string(system));
  return *client->serviceStatusDir();
}

ServiceStatusV1& ControllerFixture::serviceStatus(const char* system, const String& service) const {
  ServiceStatusDir& dir = serviceStatusDir(system);
  if (!dir.service(service)) {
    const Ptr<ServiceStatusV1> status = Orm::make<ServiceStatusV1>(service);
    status->enabledIs(true);
    dir.serviceIs(status);
  }
  return *dir.service(service);
}

void ControllerFixture::versionIs(const char* system, const String& service,
                                  std::uint32_t version) const {
  serviceStatus(system, service)
      .versionStatusIs(Orm::make<ServiceVersionStatusV1>(true, version != 0, version));
}

// ---- the services

MountService ControllerFixture::service(const String& name) const {
  return serviceIn(mountConfigDir(), mountStatusDir(), name);
}

MountService ControllerFixture::proxyService(const String& name) const {
  return serviceIn(proxyMountConfigDir(), proxyMountStatusDir(), name);
}

MountService ControllerFixture::serviceIn(const Ptr<Fennix::Dir>& configs,
                                          const Ptr<Fennix::Dir>& statuses,
                                          const String& name) const {
  Ptr<ServiceMountStatus> status = statuses->entityAs<ServiceMountStatus>(name);
  if (!status) {
    status = Orm::make<ServiceMountStatus>();
    statuses->entityIs(name, status);
  }
  Ptr<ServiceMountConfig> config = configs->entityAs<ServiceMountConfig>(name);
  if (!config) {
    config = Orm::make<ServiceMountConfig>();
    config->serviceNameIs(name);
    config->genIdIs(controllerdbStatus_->leaderGenId());
    configs->entityIs(name, config);
  }
  return {config, status};
}

// ---- the mounts

FakeMountSm& ControllerFixture::mount(const char* system, std::string_view path) const {
  FakeMountSm* const mount = mounts_.find(systemId(system), path);
  if (!mount) missing("the mount of " + std::string(path) + " from " + system);
  return *mount;
}

ServiceMountGroupStatus* ControllerFixture::groupStatus(const char* system, const String& service,
                                                        const String& group) const {
  Ptr<ServiceMountStatus> status = mountStatusDir()->entityAs<ServiceMountStatus>(service);
  if (!status) status = proxyMountStatusDir()->entityAs<ServiceMountStatus>(service);
  const SystemStatus* const ofSystem = status ? status->systemStatus(system) : nullptr;
  return ofSystem ? ofSystem->serviceMountGroupStatus(group) : nullptr;
}

MountStatus* ControllerFixture::mountStatus(const char* system, const String& service,
                                            const String& group, const String& path) const {
  const ServiceMountGroupStatus* const status = groupStatus(system, service, group);
  return status ? status->mountStatus(path) : nullptr;
}

// ---- traces

std::size_t ControllerFixture::timesTraced(int level, std::string_view text) const {
  const std::vector<std::string> texts = traced(level);
  return static_cast<std::size_t>(std::count(texts.begin(), texts.end(), text));
}

}  // namespace Support
