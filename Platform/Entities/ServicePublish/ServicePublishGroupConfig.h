#pragma once

#include "Platform/Entities/MountFilter/MountFilterServiceVersion.h"
#include "Platform/Entities/MountFilter/MountFilterSystem.h"
#include "Platform/Entities/ServicePublish/PublishConfig.h"
#include "Platform/Entities/ServicePublish/PublishDir.h"
#include "Platform/Orm/CollectionOwner.h"

namespace Controller {

/// Local paths and directories that a service wants published together, to the switches that its
/// filters let through.
class ServicePublishGroupConfig : public Orm::CollectionOwner,
                                  private Kobble::Counted<ServicePublishGroupConfig> {
 public:
  struct Attr {
    enum : Orm::AttributeId { publishConfig, publishDir, systemFilter, versionFilter };
  };
  using PublishConfigs = Orm::Collection<Orm::Ptr<PublishConfig>, &PublishConfig::path>;
  using PublishDirs = Orm::Collection<Orm::Ptr<PublishDir>, &PublishDir::path>;

  explicit ServicePublishGroupConfig(Orm::String groupName) : groupName_(std::move(groupName)) {}

  const Orm::String& groupName() const { return groupName_; }

  /// By local path.
  const PublishConfigs& publishConfig() const { return publishConfig_; }
  PublishConfig* publishConfig(const Orm::String& path) const { return publishConfig_.find(path); }
  Orm::Ptr<PublishConfig> publishConfigIs(const Orm::String& path, const Orm::String& remotePath,
                                          const Orm::String& type);
  void publishConfigDel(const Orm::String& path) {
    memberDel(publishConfig_, Attr::publishConfig, path);
  }
  void publishConfigDelAll() { memberDelAll(publishConfig_, Attr::publishConfig); }

  /// By local path.
  const PublishDirs& publishDir() const { return publishDir_; }
  PublishDir* publishDir(const Orm::String& path) const { return publishDir_.find(path); }
  Orm::Ptr<PublishDir> publishDirIs(const Orm::String& path, const Orm::String& type,
                                    const Orm::String& remotePath);
  /// Puts in a directory that was built before, so that it is seen complete. Its key must be
  /// absent.
  void publishDirIs(Orm::Ptr<PublishDir> dir) {
    memberIs(publishDir_, Attr::publishDir, std::move(dir));
  }
  void publishDirDel(const Orm::String& path) { memberDel(publishDir_, Attr::publishDir, path); }
  void publishDirDelAll() { memberDelAll(publishDir_, Attr::publishDir); }

  /// Null: no system is left out.
  const Orm::Ptr<MountFilterSystem const>& systemFilter() const { return systemFilter_; }
  void systemFilterIs(Orm::Ptr<MountFilterSystem const> filter) {
    assign(systemFilter_, std::move(filter), Attr::systemFilter);
  }

  /// Null: no version is left out.
  const Orm::Ptr<MountFilterServiceVersion const>& versionFilter() const { return versionFilter_; }
  void versionFilterIs(Orm::Ptr<MountFilterServiceVersion const> filter) {
    assign(versionFilter_, std::move(filter), Attr::versionFilter);
  }

 private:
  Orm::String groupName_;
  PublishConfigs publishConfig_;
  PublishDirs publishDir_;
  Orm::Ptr<MountFilterSystem const> systemFilter_;
  Orm::Ptr<MountFilterServiceVersion const> versionFilter_;
};

}  // namespace Controller
