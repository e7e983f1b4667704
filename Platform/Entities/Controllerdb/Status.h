#pragma once

#include "Platform/Orm/Entity.h"
#include "Platform/Orm/String.h"

namespace Controllerdb {

/// The status of the controller database.
class Status : public Orm::Entity, private Kobble::Counted<Status> {
 public:
  struct Attr {
    enum : Orm::AttributeId { leaderGenId };
  };

  /// The generation of the current leader; empty while no leader is known.
  const Orm::String& leaderGenId() const { return leaderGenId_; }
  void leaderGenIdIs(Orm::String id) { assign(leaderGenId_, std::move(id), Attr::leaderGenId); }

 private:
  Orm::String leaderGenId_;
};

}  // namespace Controllerdb
