#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Controllerdb/MountsRegistry/MountsRegistrySm.h"
#include "Controllerdb/ServiceConfigDirSm/ServiceConfigDirSm.h"
#include "Platform/Entities/Controllerdb/Status.h"
#include "Platform/Orm/ActivityLoop.h"
#include "Test/Support/Captured.h"
#include "Test/Support/FakeMountSm.h"
#include "Test/Support/Recorder.h"
#include "Test/Support/ServiceHandles.h"

namespace Support {

/// The versions that a switch has negotiated, by service; version 0: the service is enabled and
/// reported, but no version was negotiated.
using Versions = std::vector<std::pair<Orm::String, std::uint32_t>>;

/// A small controller: the state store, the entities that the machines watch and write, a fake
/// mount machine, virtual time, and traces and log captured. No machine runs until the test starts
/// it, in whatever order it likes:
///
///     startRegistry();
///     startConfig();
///     service("Topology").group("default").path("topology/status");
///     connect("02:00:00:00:00:01", {{"Topology", 3}});
///     mount("02:00:00:00:00:01", "topology/status").reports(MountState::mounted);
///     expectTrace(5, "...");
///
/// Traces are off until `traceIs`. At the end everything is torn down, all process settings are
/// put back and nothing may be left alive.
class ControllerFixture : public testing::Test {
 protected:
  static constexpr const char* kRegistryTrace = "ControllerMountsRegistrySm";
  static constexpr const char* kConfigTrace = "ControllerServiceConfigDirSm";

  ControllerFixture();
  ~ControllerFixture() override;

  // ---- the machines

  Controller::MountsRegistrySm& startRegistry();
  Controller::ServiceConfigDirSm& startConfig();
  /// Both, the configuration first.
  void start();
  void stopRegistry() { registrySm_ = nullptr; }
  void stopConfig() { configSm_ = nullptr; }
  Controller::MountsRegistrySm& registrySm() const { return *registrySm_; }
  Controller::ServiceConfigDirSm& configSm() const { return *configSm_; }

  /// The machine of a mount entry; the test fails when there is none.
  Controller::MountsRegistryEntrySm& entrySm(const Orm::String& path) const;
  bool hasEntrySm(const Orm::String& path) const {
    return registrySm_->mountsRegistryEntrySm().has(path);
  }

  // ---- the entities

  /// Replaces the (still empty) registry by one with other settings.
  void registrySettingsAre(const Orm::String& remoteRoot, std::uint32_t reconnectRetries,
                           Orm::Seconds mountTimeout);

  const Orm::Ptr<Fennix::Dir>& root() const { return root_; }
  const Orm::Ptr<Fennix::Dir>& registryDir() const { return registryDir_; }
  Orm::Ptr<Fennix::Dir> dir(const Orm::String& name) const { return root_->createDir(name); }
  Orm::Ptr<Fennix::Dir> mountConfigDir() const { return dir("mountConfig"); }
  Orm::Ptr<Fennix::Dir> mountStatusDir() const { return dir("mountStatus"); }
  Orm::Ptr<Fennix::Dir> publishConfigDir() const { return dir("publishConfig"); }
  Orm::Ptr<Fennix::Dir> publishStatusDir() const { return dir("publishStatus"); }
  Orm::Ptr<Fennix::Dir> proxyMountConfigDir() const { return dir("proxyMountConfig"); }
  Orm::Ptr<Fennix::Dir> proxyMountStatusDir() const { return dir("proxyMountStatus"); }

  const Orm::Ptr<Controller::MountsRegistry>& registry() const { return registry_; }
  const Orm::Ptr<Controllerdb::Status>& controllerdbStatus() const { return controllerdbStatus_; }
  const Orm::Ptr<Controllerdb::PublishStatus>& publishStatus() const { return publishStatus_; }
  const Orm::Ptr<ControllerOob::Status>& oobStatus() const { return oobStatus_; }
  Controller::PeerTable& peerTable() const { return *oobStatus_->peerTable(); }
  const Orm::Ptr<Controller::ServiceConfigDir>& serviceConfigDir() const {
    return serviceConfigDir_;
  }
  const Orm::Ptr<Controller::Heartbeat::Config>& heartbeatConfig() const {
    return heartbeatConfig_;
  }

  // ---- the switches

  static Controller::SystemId systemId(std::string_view name) {
    return Controller::SystemId::ofName(name);
  }
  /// Where the switch's client connection comes from: one address a switch.
  static Pomix::IpAddrPort address(const Controller::SystemId& systemId);

  /// The switch joins the peer table, with its services' statuses and a connection configuration.
  void connect(const char* system, const Versions& versions = {}) {
    connect(system, versions, Orm::make<Controller::ConnectionConfig>(address(systemId(system))));
  }
  void connectWithoutConfig(const char* system, const Versions& versions = {}) {
    connect(system, versions, nullptr);
  }
  /// The switch and its client status go; it is remembered as an inactive client only where the
  /// test says so first.
  void disconnect(const char* system);
  void inactive(const char* system);
  void forget(const char* system) { oobStatus_->inactiveDel(systemId(system)); }

  /// What the switch reports of a service, made when it is not there. A version of 0 is not
  /// negotiated.
  Controller::ServiceStatusDir& serviceStatusDir(const char* system) const;
  Controller::ServiceStatusV1& serviceStatus(const char* system, const Orm::String& service) const;
  void versionIs(const char* system, const Orm::String& service, std::uint32_t version) const;

  // ---- the services

  void leaderIs(const Orm::String& generation) { controllerdbStatus_->leaderGenIdIs(generation); }
  /// The service's configuration of the present generation, and its status, made when they are not
  /// there.
  MountService service(const Orm::String& name) const;
  MountService proxyService(const Orm::String& name) const;
  /// The service in the controller's service configuration.
  void enabledIs(const Orm::String& service, bool enabled) const {
    serviceConfigDir_->serviceIs(service)->enabledIs(enabled);
  }

  // ---- the mounts

  FakeMounts& mounts() { return mounts_; }
  bool isMounting(const char* system, std::string_view path) const {
    return mounts_.find(systemId(system), path) != nullptr;
  }
  /// The mount of a path from a switch; the test fails when there is none.
  FakeMountSm& mount(const char* system, std::string_view path) const;

  /// Status as the service reads it; null where there is none.
  Controller::ServiceMountGroupStatus* groupStatus(const char* system, const Orm::String& service,
                                                   const Orm::String& group) const;
  Controller::MountStatus* mountStatus(const char* system, const Orm::String& service,
                                       const Orm::String& group, const Orm::String& path) const;

  // ---- time

  const Orm::Ptr<Orm::Clock>& clock() const { return clock_; }
  Orm::Seconds now() const { return clock_->now(); }
  /// Lets time pass and does what comes due.
  void run(Orm::Seconds seconds) { loop_->run(now() + seconds); }

  // ---- traces and log

  static void traceIs(int level) { CapturedTraces::levelIs(level); }
  CapturedTraces& traces() { return traces_; }
  /// The texts of a level since the last clear, in order.
  std::vector<std::string> traced(int level) const { return traces_.texts(level); }
  std::size_t timesTraced(int level, std::string_view text) const;
  /// One line or more of that level has exactly this text; or none has.
  void expectTrace(int level, const std::string& text) const {
    EXPECT_THAT(traced(level), testing::Contains(text));
  }
  void expectNoTrace(int level, const std::string& text) const {
    EXPECT_THAT(traced(level), testing::Not(testing::Contains(text)));
  }
  CapturedLog& log() { return log_; }

 private:
  void connect(const char* system, const Versions& versions,
               const Orm::Ptr<Controller::ConnectionConfig const>& config);
  MountService serviceIn(const Orm::Ptr<Fennix::Dir>& configs,
                         const Orm::Ptr<Fennix::Dir>& statuses, const Orm::String& name) const;

  CapturedTraces traces_;
  CapturedLog log_;
  std::size_t liveAtStart_;
  FakeMounts mounts_;
  Controller::MountSm::Factory* previousFactory_;

  Orm::Ptr<Orm::Clock> clock_;
  std::optional<Orm::ActivityLoop> loop_;
  Orm::Ptr<Fennix::Dir> root_;
  Orm::Ptr<Fennix::Dir> registryDir_;
  Orm::Ptr<Controller::MountsRegistry> registry_;
  Orm::Ptr<Controllerdb::Status> controllerdbStatus_;
  Orm::Ptr<Controllerdb::PublishStatus> publishStatus_;
  Orm::Ptr<ControllerOob::Status> oobStatus_;
  Orm::Ptr<Controller::ServiceConfigDir> serviceConfigDir_;
  Orm::Ptr<Controller::Heartbeat::Config> heartbeatConfig_;

  Orm::Ptr<Controller::ServiceConfigDirSm> configSm_;
  Orm::Ptr<Controller::MountsRegistrySm> registrySm_;
};

}  // namespace Support
