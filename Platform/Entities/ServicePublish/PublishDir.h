#pragma once

#include "Platform/Orm/Entity.h"
#include "Platform/Orm/String.h"

namespace Controller {

/// One local directory whose members, one a switch, a publish group wants published.
class PublishDir : public Orm::Entity, private Kobble::Counted<PublishDir> {
 public:
  struct Attr {
    enum : Orm::AttributeId { remotePath, readyToPublish };
  };

  PublishDir(Orm::String path, Orm::String type, Orm::String remotePath)
      : path_(std::move(path)), type_(std::move(type)), remotePath_(std::move(remotePath)) {}

  /// The directory's local path.
  const Orm::String& path() const { return path_; }
  /// The type name of its members.
  const Orm::String& type() const { return type_; }

  /// Where each switch finds its member.
  const Orm::String& remotePath() const { return remotePath_; }
  void remotePathIs(Orm::String path) { assign(remotePath_, std::move(path), Attr::remotePath); }

  /// The directory's content is complete and may be published.
  bool readyToPublish() const { return readyToPublish_; }
  void readyToPublishIs(bool ready) { assign(readyToPublish_, ready, Attr::readyToPublish); }

 private:
  Orm::String path_;
  Orm::String type_;
  Orm::String remotePath_;
  bool readyToPublish_ = false;
};

}  // namespace Controller
