#pragma once

#include "Platform/Entities/ServiceMount/MountState.h"
#include "Platform/Entities/SystemId/SystemId.h"
#include "Platform/Orm/Entity.h"

namespace Controller {

/// The record of one mount, shared by the mount machine, which writes its state, and the mount
/// entry's machine, which watches it.
class MountSmData : public Orm::Entity, private Kobble::Counted<MountSmData> {
 public:
  struct Attr {
    enum : Orm::AttributeId { mountState };
  };

  MountSmData(const SystemId& systemId, Orm::String text)
      : systemId_(systemId), text_(std::move(text)) {}

  const SystemId& systemId() const { return systemId_; }
  /// A note for the mount machine; empty in records of the mount entries.
  const Orm::String& text() const { return text_; }

  MountState mountState() const { return mountState_; }
  void mountStateIs(MountState state) { assign(mountState_, state, Attr::mountState); }

 private:
  SystemId systemId_;
  MountState mountState_ = MountState::unmounted;
  Orm::String text_;
};

}  // namespace Controller
