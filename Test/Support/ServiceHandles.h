#pragma once

#include <cstdint>
#include <initializer_list>
#include <utility>

#include "Platform/Entities/ServiceMount/ServiceMountConfig.h"
#include "Platform/Entities/ServiceMount/ServiceMountStatus.h"

namespace Support {

/// A mount group of a service's configuration, written as prose:
/// `service("Topology").group("default").systems({"02:00:00:00:00:01"}).path("topology/status")`.
/// Each call is seen by the machines at once, so a filter stands before the paths that it is to
/// hold for from the start.
class MountGroup {
 public:
  explicit MountGroup(Orm::Ptr<Controller::ServiceMountGroupConfig> config)
      : config_(std::move(config)) {}

  Controller::ServiceMountGroupConfig& config() const { return *config_; }

  MountGroup& path(const Orm::String& path, const Orm::String& type = "Topology::Status",
                   const Orm::String& flags = "r", const Orm::String& targetPath = {}) {
    config_->mountConfigIs(path, type, flags, targetPath);
    return *this;
  }
  MountGroup& withoutPath(const Orm::String& path) {
    config_->mountConfigDel(path);
    return *this;
  }

  /// A new system filter with these members, all true; the next changes one of its members.
  MountGroup& systems(std::initializer_list<const char*> systems) {
    auto filter = Orm::make<Controller::MountFilterSystem>(config_->groupName());
    for (const char* system : systems) filter->includedSystemIs(system, true);
    config_->systemFilterIs(filter);
    return *this;
  }
  MountGroup& system(const Orm::String& system, bool included) {
    systemFilter().includedSystemIs(system, included);
    return *this;
  }
  MountGroup& withoutSystem(const Orm::String& system) {
    systemFilter().includedSystemDel(system);
    return *this;
  }
  MountGroup& anySystem() {
    config_->systemFilterIs(nullptr);
    return *this;
  }

  /// The same for versions.
  MountGroup& versions(std::initializer_list<std::uint32_t> versions) {
    auto filter = Orm::make<Controller::MountFilterServiceVersion>(config_->groupName());
    for (const std::uint32_t version : versions) filter->includedServiceVersionIs(version, true);
    config_->versionFilterIs(filter);
    return *this;
  }
  MountGroup& version(std::uint32_t version, bool included) {
    versionFilter().includedServiceVersionIs(version, included);
    return *this;
  }
  MountGroup& withoutVersion(std::uint32_t version) {
    versionFilter().includedServiceVersionDel(version);
    return *this;
  }
  MountGroup& anyVersion() {
    config_->versionFilterIs(nullptr);
    return *this;
  }

  MountGroup& preserve(bool preserve = true) {
    config_->preserveIs(preserve);
    return *this;
  }

  // The group hands its filters out for reading; here is who writes them.
  Controller::MountFilterSystem& systemFilter() const {
    return const_cast<Controller::MountFilterSystem&>(*config_->systemFilter());
  }
  Controller::MountFilterServiceVersion& versionFilter() const {
    return const_cast<Controller::MountFilterServiceVersion&>(*config_->versionFilter());
  }

 private:
  Orm::Ptr<Controller::ServiceMountGroupConfig> config_;
};

/// A service's mount configuration and its mount status.
class MountService {
 public:
  MountService(Orm::Ptr<Controller::ServiceMountConfig> config,
               Orm::Ptr<Controller::ServiceMountStatus> status)
      : config_(std::move(config)), status_(std::move(status)) {}

  Controller::ServiceMountConfig& config() const { return *config_; }
  Controller::ServiceMountStatus& status() const { return *status_; }
  const Orm::Ptr<Controller::ServiceMountConfig>& configPtr() const { return config_; }
  const Orm::Ptr<Controller::ServiceMountStatus>& statusPtr() const { return status_; }

  /// The group of that name, made when there is none.
  MountGroup group(const Orm::String& name) const {
    return MountGroup(config_->mountGroupConfigIs(name));
  }
  const MountService& withoutGroup(const Orm::String& name) const {
    config_->mountGroupConfigDel(name);
    return *this;
  }
  const MountService& generation(const Orm::String& genId) const {
    config_->genIdIs(genId);
    return *this;
  }

 private:
  Orm::Ptr<Controller::ServiceMountConfig> config_;
  Orm::Ptr<Controller::ServiceMountStatus> status_;
};

}  // namespace Support
