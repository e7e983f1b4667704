#pragma once

#include "Platform/Orm/Entity.h"

namespace Orm::NboAttrLog {

/// The status that is linked to a connection.
class ConnectionStatus : public Entity, private Kobble::Counted<ConnectionStatus> {
 public:
  struct Attr {
    enum : AttributeId { active };
  };

  bool active() const { return active_; }
  void activeIs(bool active) { assign(active_, active, Attr::active); }

 private:
  bool active_ = false;
};

}  // namespace Orm::NboAttrLog
