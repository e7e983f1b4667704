#pragma once

#include <cstdint>

#include "Controllerdb/MountsRegistry/MountsRegistryEntry.h"
#include "Controllerdb/MountsRegistry/PublishRegistryEntry.h"
#include "Platform/Fennix/Dir.h"
#include "Platform/Orm/CollectionOwner.h"
#include "Platform/Orm/Seconds.h"

namespace Controller {

/// Everything that services want mounted from the switches and published to them. Written by the
/// service configuration machines, read by the registry machine; the controller process owns it,
/// and it outlives both.
class MountsRegistry : public Orm::CollectionOwner, private Kobble::Counted<MountsRegistry> {
 public:
  struct Attr {
    enum : Orm::AttributeId { mountEntry, publishEntry, servicePublishReady };
  };
  using MountEntries = Orm::Collection<Orm::Ptr<MountsRegistryEntry>, &MountsRegistryEntry::name>;
  using PublishEntries =
      Orm::Collection<Orm::Ptr<PublishRegistryEntry>, &PublishRegistryEntry::name>;
  using ReadyServices = Orm::ValueCollection<Orm::String, bool>;

  MountsRegistry(Orm::Ptr<Fennix::Dir> registryDir, Orm::String registryDirPath,
                 Orm::Ptr<Fennix::Dir> rootDir, Orm::String remoteRootPath,
                 std::uint32_t reconnectRetries, Orm::Seconds mountTimeout)
      : registryDir_(std::move(registryDir)),
        registryDirPath_(std::move(registryDirPath)),
        rootDir_(std::move(rootDir)),
        remoteRootPath_(std::move(remoteRootPath)),
        mountTimeout_(mountTimeout),
        reconnectRetries_(reconnectRetries) {}

  /// Below it stand the mounts of entries without a target path of their own.
  const Orm::Ptr<Fennix::Dir>& registryDir() const { return registryDir_; }
  const Orm::String& registryDirPath() const { return registryDirPath_; }
  /// Below it target paths are created and looked up.
  const Orm::Ptr<Fennix::Dir>& rootDir() const { return rootDir_; }
  const Orm::String& remoteRootPath() const { return remoteRootPath_; }
  /// Of every mount; 0 means no limit.
  std::uint32_t reconnectRetries() const { return reconnectRetries_; }
  Orm::Seconds mountTimeout() const { return mountTimeout_; }

  /// By remote path.
  const MountEntries& mountEntry() const { return mountEntry_; }
  MountsRegistryEntry* mountEntry(const Orm::String& name) const { return mountEntry_.find(name); }
  Orm::Ptr<MountsRegistryEntry> mountEntryIs(const Orm::String& name, const Orm::String& targetPath,
                                             const Orm::String& ormType,
                                             const Orm::String& mountFlags);
  void mountEntryDel(const Orm::String& name) { memberDel(mountEntry_, Attr::mountEntry, name); }
  void mountEntryDelAll() { memberDelAll(mountEntry_, Attr::mountEntry); }

  /// By local path.
  const PublishEntries& publishEntry() const { return publishEntry_; }
  PublishRegistryEntry* publishEntry(const Orm::String& name) const {
    return publishEntry_.find(name);
  }
  Orm::Ptr<PublishRegistryEntry> publishEntryIs(
      const Orm::String& name, const Orm::String& remotePath, const Orm::String& type,
      bool isPrefixPath, const Orm::String& serviceName,
      const Orm::Ptr<MountFilterServiceVersion const>& versionFilter,
      const Orm::Ptr<MountFilterSystem const>& systemFilter);
  void publishEntryDel(const Orm::String& name) {
    memberDel(publishEntry_, Attr::publishEntry, name);
  }
  void publishEntryDelAll() { memberDelAll(publishEntry_, Attr::publishEntry); }

  /// Per service: whether it says that its publications are complete.
  const ReadyServices& servicePublishReady() const { return servicePublishReady_; }
  void servicePublishReadyIs(const Orm::String& serviceName, bool ready) {
    valueIs(servicePublishReady_, Attr::servicePublishReady, serviceName, ready);
  }
  void servicePublishReadyDel(const Orm::String& serviceName) {
    valueDel(servicePublishReady_, Attr::servicePublishReady, serviceName);
  }
  void servicePublishReadyDelAll() { valueDelAll(servicePublishReady_, Attr::servicePublishReady); }

 private:
  Orm::Ptr<Fennix::Dir> registryDir_;
  Orm::String registryDirPath_;
  Orm::Ptr<Fennix::Dir> rootDir_;
  Orm::String remoteRootPath_;
  Orm::Seconds mountTimeout_;
  std::uint32_t reconnectRetries_;
  MountEntries mountEntry_;
  PublishEntries publishEntry_;
  ReadyServices servicePublishReady_;
};

}  // namespace Controller
