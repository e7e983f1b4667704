#pragma once

#include "Platform/Entities/Heartbeat/Config.h"
#include "Platform/Orm/Entity.h"

namespace ControllerOob {

/// The controller's out-of-band configuration.
class Config : public Orm::Entity, private Kobble::Counted<Config> {
 public:
  struct Attr {
    enum : Orm::AttributeId { heartbeatConfig };
  };

  /// Null while there is none.
  const Orm::Ptr<Controller::Heartbeat::Config>& heartbeatConfig() const {
    return heartbeatConfig_;
  }
  void heartbeatConfigIs(Orm::Ptr<Controller::Heartbeat::Config> config) {
    assign(heartbeatConfig_, std::move(config), Attr::heartbeatConfig);
  }

 private:
  Orm::Ptr<Controller::Heartbeat::Config> heartbeatConfig_;
};

}  // namespace ControllerOob
