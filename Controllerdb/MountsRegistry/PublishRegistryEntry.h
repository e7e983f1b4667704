#pragma once

#include "Platform/Entities/MountFilter/MountFilterServiceVersion.h"
#include "Platform/Entities/MountFilter/MountFilterSystem.h"
#include "Platform/Orm/Entity.h"

namespace Controller {

class MountsRegistry;

/// One local path that a service wants published to the switches. A member of the registry.
class PublishRegistryEntry : public Orm::Entity, private Kobble::Counted<PublishRegistryEntry> {
 public:
  struct Attr {
    enum : Orm::AttributeId { remotePath, versionFilter, systemFilter, readyToPublish };
  };

  PublishRegistryEntry(Orm::String name, Orm::String remotePath, Orm::String type,
                       bool isPrefixPath, Orm::String serviceName,
                       Orm::Ptr<MountFilterServiceVersion const> versionFilter,
                       Orm::Ptr<MountFilterSystem const> systemFilter,
                       MountsRegistry* mountsRegistry)
      : name_(std::move(name)),
        remotePath_(std::move(remotePath)),
        type_(std::move(type)),
        serviceName_(std::move(serviceName)),
        versionFilter_(std::move(versionFilter)),
        systemFilter_(std::move(systemFilter)),
        mountsRegistry_(mountsRegistry),
        isPrefixPath_(isPrefixPath) {}

  /// The local path; the entry's key.
  const Orm::String& name() const { return name_; }
  /// The type name of the published entity.
  const Orm::String& type() const { return type_; }
  /// The path is a directory whose members, one a switch, are published.
  bool isPrefixPath() const { return isPrefixPath_; }
  const Orm::String& serviceName() const { return serviceName_; }
  /// The owning registry, which outlives its entries' machines.
  MountsRegistry* mountsRegistry() const { return mountsRegistry_; }

  /// Where the entry is published on the switch.
  const Orm::String& remotePath() const { return remotePath_; }
  void remotePathIs(Orm::String path) { assign(remotePath_, std::move(path), Attr::remotePath); }

  /// Null: no version is left out.
  const Orm::Ptr<MountFilterServiceVersion const>& versionFilter() const { return versionFilter_; }
  void versionFilterIs(Orm::Ptr<MountFilterServiceVersion const> filter) {
    assign(versionFilter_, std::move(filter), Attr::versionFilter);
  }

  /// Null: no switch is left out.
  const Orm::Ptr<MountFilterSystem const>& systemFilter() const { return systemFilter_; }
  void systemFilterIs(Orm::Ptr<MountFilterSystem const> filter) {
    assign(systemFilter_, std::move(filter), Attr::systemFilter);
  }

  /// The service says that the entry may be published.
  bool readyToPublish() const { return readyToPublish_; }
  void readyToPublishIs(bool ready) { assign(readyToPublish_, ready, Attr::readyToPublish); }

 private:
  Orm::String name_;
  Orm::String remotePath_;
  Orm::String type_;
  Orm::String serviceName_;
  Orm::Ptr<MountFilterServiceVersion const> versionFilter_;
  Orm::Ptr<MountFilterSystem const> systemFilter_;
  MountsRegistry* mountsRegistry_;
  bool isPrefixPath_;
  bool readyToPublish_ = false;
};

}  // namespace Controller
