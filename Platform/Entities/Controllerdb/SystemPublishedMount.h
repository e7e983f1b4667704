#pragma once

#include "Platform/Entities/Controllerdb/MountDesc.h"
#include "Platform/Entities/SystemId/SystemId.h"
#include "Platform/Orm/CollectionOwner.h"

namespace Controllerdb {

/// What is published to one system.
class SystemPublishedMount : public Orm::CollectionOwner,
                             private Kobble::Counted<SystemPublishedMount> {
 public:
  struct Attr {
    enum : Orm::AttributeId { publishedMount, registeredPublishedPathsProcessed };
  };
  using PublishedMounts = Orm::ValueCollection<Orm::String, MountDesc>;
  using ProcessedServices = Orm::ValueCollection<Orm::String, bool>;

  explicit SystemPublishedMount(const Controller::SystemId& systemId) : systemId_(systemId) {}

  const Controller::SystemId& systemId() const { return systemId_; }

  /// The publications, by local path.
  const PublishedMounts& publishedMount() const { return publishedMount_; }
  void publishedMountIs(const MountDesc& mount) {
    valueIs(publishedMount_, Attr::publishedMount, mount.localPath, mount);
  }
  void publishedMountDel(const Orm::String& localPath) {
    valueDel(publishedMount_, Attr::publishedMount, localPath);
  }
  void publishedMountDelAll() { valueDelAll(publishedMount_, Attr::publishedMount); }

  /// Per service: what the switch registered for it has been gone through.
  const ProcessedServices& registeredPublishedPathsProcessed() const { return processed_; }
  void registeredPublishedPathsProcessedIs(const Orm::String& serviceName, bool processed) {
    valueIs(processed_, Attr::registeredPublishedPathsProcessed, serviceName, processed);
  }
  void registeredPublishedPathsProcessedDel(const Orm::String& serviceName) {
    valueDel(processed_, Attr::registeredPublishedPathsProcessed, serviceName);
  }
  void registeredPublishedPathsProcessedDelAll() {
    valueDelAll(processed_, Attr::registeredPublishedPathsProcessed);
  }

 private:
  Controller::SystemId systemId_;
  PublishedMounts publishedMount_;
  ProcessedServices processed_;
};

}  // namespace Controllerdb
