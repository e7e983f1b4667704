#include "Test/Support/InitialMountFixture.h"

#include <stdexcept>

namespace Support {

using namespace Controller;
using Orm::Ptr;
using Orm::String;
namespace Log = Orm::NboAttrLog;

InitialMountFixture::InitialMountFixture() : oobConfig_(Orm::make<ControllerOob::Config>()) {
  heartbeatConfig()->heartbeatIntervalIs(kHeartbeat);
  oobConfig_->heartbeatConfigIs(heartbeatConfig());
}

InitialMountFixture::~InitialMountFixture() {
  initialSm_ = nullptr;
  Log::ConnectionDir::instanceDel();
  Orm::globalNboAttrLogDemuxerManagerDel();
}

// ---- the machines

InitialMountSm& InitialMountFixture::startInitialMounts() {
  initialSm_ = initialMountSmFactory(mountConfigDir(), mountStatusDir(), oobConfig_, oobStatus(),
                                     controllerdbStatus());
  return *initialSm_;
}

ServiceInitialMountSm* InitialMountFixture::serviceSm(const String& service) const {
  return initialSm_->serviceInitialMountSm().find(service);
}

MountGroupInitialMountSm* InitialMountFixture::groupSm(const String& service,
                                                       const String& group) const {
  const ServiceInitialMountSm* const machine = serviceSm(service);
  return machine ? machine->mountGroupInitialMountSm().find(group) : nullptr;
}

bool InitialMountFixture::isRemaining(const char* system, const String& service,
                                      const String& group) const {
  const MountGroupInitialMountSm* const machine = groupSm(service, group);
  return machine && machine->remainingSwitch().has(system);
}

// ---- the entities

ServiceMountStatus& InitialMountFixture::mountStatusOf(const String& service) const {
  const auto status = mountStatusDir()->entityAs<ServiceMountStatus>(service);
  if (!status) throw std::runtime_error("the service has no mount status: " + service.str());
  return *status;
}

ServiceMountGroupStatus& InitialMountFixture::status(const char* system, const String& service,
                                                     const String& group) const {
  return *mountStatusOf(service).systemStatusIs(system)->serviceMountGroupStatusIs(group);
}

void InitialMountFixture::owes(const char* system, const String& service,
                               const String& group) const {
  ServiceMountGroupStatus& groupStatus = status(system, service, group);
  groupStatus.mountStatusIs(kPath);
  groupStatus.mountStateIs(MountState::mounting);
  groupStatus.processedIs(true);
}

// ---- the attribute log

Log::Connection& InitialMountFixture::connection(const String& name) {
  const auto connection = Log::ConnectionDir::instance()->connectionIs(name);
  connection->modeIs(Log::Mode::passive);
  if (!connection->status()) connection->statusIs(Orm::make<Log::ConnectionStatus>());
  connection->status()->activeIs(true);
  return *connection;
}

Log::Demuxer& InitialMountFixture::demuxer(const String& name) {
  connection(name);
  const auto demuxer = Orm::globalNboAttrLogDemuxerManager()->demuxerIs(name);
  demuxer->connectStatusIs(Log::In::Status::connected);
  return *demuxer;
}

}  // namespace Support
