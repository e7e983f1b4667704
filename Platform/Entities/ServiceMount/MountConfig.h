#pragma once

#include "Platform/Orm/Entity.h"
#include "Platform/Orm/String.h"

namespace Controller {

/// One remote path that a mount group wants mounted.
class MountConfig : public Orm::Entity, private Kobble::Counted<MountConfig> {
 public:
  MountConfig(Orm::String path, Orm::String ormcType, Orm::String mountFlags,
              Orm::String targetPath)
      : path_(std::move(path)),
        ormcType_(std::move(ormcType)),
        mountFlags_(std::move(mountFlags)),
        targetPath_(std::move(targetPath)) {}

  const Orm::String& path() const { return path_; }
  const Orm::String& ormcType() const { return ormcType_; }
  const Orm::String& mountFlags() const { return mountFlags_; }
  /// Where it is to be mounted locally; empty: at the registry's default place.
  const Orm::String& targetPath() const { return targetPath_; }

 private:
  Orm::String path_;
  Orm::String ormcType_;
  Orm::String mountFlags_;
  Orm::String targetPath_;
};

}  // namespace Controller
