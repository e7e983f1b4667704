#pragma once

#include <cstdint>
#include <initializer_list>
#include <utility>
#include <vector>

#include "Platform/Entities/ServicePublish/ServicePublishConfig.h"
#include "Platform/Entities/ServicePublish/ServicePublishStatus.h"
#include "Test/Support/ControllerFixture.h"

namespace Support {

using SystemFilter = Orm::Ptr<Controller::MountFilterSystem>;
using VersionFilter = Orm::Ptr<Controller::MountFilterServiceVersion>;

/// A filter whose members are all true.
inline SystemFilter systemFilter(std::initializer_list<const char*> systems,
                                 const Orm::String& name = "systems") {
  auto filter = Orm::make<Controller::MountFilterSystem>(name);
  for (const char* system : systems) filter->includedSystemIs(system, true);
  return filter;
}
inline VersionFilter versionFilter(std::initializer_list<std::uint32_t> versions,
                                   const Orm::String& name = "versions") {
  auto filter = Orm::make<Controller::MountFilterServiceVersion>(name);
  for (const std::uint32_t version : versions) filter->includedServiceVersionIs(version, true);
  return filter;
}

/// A service's publish configuration and its publish status.
struct PublishService {
  Orm::Ptr<Controller::ServicePublishConfig> config;
  Orm::Ptr<Controller::ServicePublishStatus> status;

  Controller::ServicePublishGroupConfig& group(const Orm::String& name) const {
    return *config->publishGroupConfigIs(name);
  }
  Controller::ServicePublishGroupStatus* groupStatus(const Orm::String& name) const {
    return status->servicePublishGroupStatus(name);
  }
};

/// A small controller in which things are published.
class PublishFixture : public ControllerFixture {
 protected:
  static constexpr const char* kOne = "02:00:00:00:00:01";
  static constexpr const char* kTwo = "02:00:00:00:00:02";
  static constexpr const char* kThree = "02:00:00:00:00:03";
  static constexpr const char* kService = "Topology";
  static constexpr const char* kPath = "/controller/config";

  // ---- the local entities

  /// Puts an entity of the type at the path; parents that are missing become directories.
  void entityIs(std::string_view path, const Orm::String& type = "Topology::Config") const {
    const auto [parent, name] = parentOf(path);
    parent->createEntity(type, name);
  }
  void entityDel(std::string_view path) const {
    const auto [parent, name] = parentOf(path);
    parent->entityDel(name);
  }

  // ---- the registry's publish entries

  Orm::Ptr<Controller::PublishRegistryEntry> entryIs(const Orm::String& path,
                                                     const Orm::String& service = kService,
                                                     const VersionFilter& versions = nullptr,
                                                     const SystemFilter& systems = nullptr) const {
    return registry()->publishEntryIs(path, "remote/config", "Topology::Config", false, service,
                                      versions, systems);
  }
  Orm::Ptr<Controller::PublishRegistryEntry> readyEntryIs(
      const Orm::String& path, const Orm::String& service = kService,
      const VersionFilter& versions = nullptr, const SystemFilter& systems = nullptr) const {
    auto entry = entryIs(path, service, versions, systems);
    entry->readyToPublishIs(true);
    return entry;
  }
  Orm::Ptr<Controller::PublishRegistryEntry> readyPrefixEntryIs(
      const Orm::String& path, const Orm::String& service = kService) const {
    auto entry = registry()->publishEntryIs(path, "remote/mine", "Topology::Mine", true, service,
                                            nullptr, nullptr);
    entry->readyToPublishIs(true);
    return entry;
  }
  Controller::PublishRegistryEntrySm& publishSm(const Orm::String& path) const {
    auto* const machine = registrySm().publishRegistryEntrySm().find(path);
    if (!machine) throw std::runtime_error("no machine of the publish entry " + path.str());
    return *machine;
  }

  // ---- the publications

  Controllerdb::SystemPublishedMount* record(const char* system) const {
    return publishStatus()->system(systemId(system));
  }
  Controllerdb::MountDesc published(const char* system, const Orm::String& path) const {
    const auto* const ofSystem = record(system);
    return ofSystem ? ofSystem->publishedMount().value(path) : Controllerdb::MountDesc();
  }
  bool isPublished(const char* system, const Orm::String& path) const {
    return static_cast<bool>(published(system, path));
  }
  bool isMirroredReady(const Orm::String& service) const {
    return publishStatus()->servicePublishReady().has(service);
  }

  // ---- the services

  /// The service's configuration of the present generation, and its status, made when they are not
  /// there.
  PublishService publisher(const Orm::String& name) const {
    auto config = publishConfigDir()->entityAs<Controller::ServicePublishConfig>(name);
    if (!config) {
      config = Orm::make<Controller::ServicePublishConfig>();
      config->serviceNameIs(name);
      config->genIdIs(controllerdbStatus()->leaderGenId());
      publishConfigDir()->entityIs(name, config);
    }
    auto status = publishStatusDir()->entityAs<Controller::ServicePublishStatus>(name);
    if (!status) {
      status = Orm::make<Controller::ServicePublishStatus>();
      publishStatusDir()->entityIs(name, status);
    }
    return {config, status};
  }
  Controller::ServicePublishConfigSm* publishConfigSm(const Orm::String& name) const {
    return configSm().servicePublishConfigSm().find(name);
  }

 private:
  std::pair<Orm::Ptr<Fennix::Dir>, Orm::String> parentOf(std::string_view path) const {
    Orm::Ptr<Fennix::Dir> parent = root();
    Orm::String name;
    Fennix::eachComponent(path, [&](std::string_view component) {
      if (!name.empty()) parent = parent->createDir(name);
      name = component;
      return true;
    });
    return {parent, name};
  }
};

}  // namespace Support
