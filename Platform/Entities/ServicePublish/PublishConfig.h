#pragma once

#include "Platform/Orm/Entity.h"
#include "Platform/Orm/String.h"

namespace Controller {

/// One local path that a publish group wants published.
class PublishConfig : public Orm::Entity, private Kobble::Counted<PublishConfig> {
 public:
  PublishConfig(Orm::String path, Orm::String remotePath, Orm::String type)
      : path_(std::move(path)), remotePath_(std::move(remotePath)), type_(std::move(type)) {}

  /// The local path.
  const Orm::String& path() const { return path_; }
  /// Where it is published on the switch.
  const Orm::String& remotePath() const { return remotePath_; }
  /// The type name of the published entity.
  const Orm::String& type() const { return type_; }

 private:
  Orm::String path_;
  Orm::String remotePath_;
  Orm::String type_;
};

}  // namespace Controller
