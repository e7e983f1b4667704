#pragma once

#include "Platform/Entities/ServicePublish/PublishState.h"
#include "Platform/Orm/Entity.h"
#include "Platform/Orm/String.h"

namespace Controller {

/// What became of one path that a publish group configures. A member of the group's status.
class PublishStatus : public Orm::Entity, private Kobble::Counted<PublishStatus> {
 public:
  struct Attr {
    enum : Orm::AttributeId { publishState };
  };

  explicit PublishStatus(Orm::String path) : path_(std::move(path)) {}

  /// The local path.
  const Orm::String& path() const { return path_; }

  PublishState publishState() const { return publishState_; }
  void publishStateIs(PublishState state) { assign(publishState_, state, Attr::publishState); }

 private:
  Orm::String path_;
  PublishState publishState_ = PublishState::unknown;
};

}  // namespace Controller
