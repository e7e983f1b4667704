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
      : systemId_(systemId), hasText_(!text.empty()) {
    if (hasText_) keep(std::move(text));
  }
  ~MountSmData() override {
    if (hasText_) forget();
  }

  const SystemId& systemId() const { return systemId_; }
  /// A note for the mount machine; empty in records of the mount entries. As they are millions, a
  /// record has no room for it: what texts there are stand in a table beside the records.
  const Orm::String& text() const;

  MountState mountState() const { return mountState_; }
  void mountStateIs(MountState state) { assign(mountState_, state, Attr::mountState); }

 private:
  void keep(Orm::String text) const;
  void forget() const;

  SystemId systemId_;
  MountState mountState_ = MountState::unmounted;
  bool hasText_;
};

static_assert(sizeof(MountSmData) == 32);

}  // namespace Controller
