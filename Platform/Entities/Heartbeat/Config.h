#pragma once

#include "Platform/Orm/Entity.h"
#include "Platform/Orm/Seconds.h"

namespace Controller::Heartbeat {

/// The settings of the switches' heartbeats.
class Config : public Orm::Entity, private Kobble::Counted<Config> {
 public:
  struct Attr {
    enum : Orm::AttributeId { heartbeatInterval };
  };

  /// The time between two heartbeats of a switch.
  Orm::Seconds heartbeatInterval() const { return heartbeatInterval_; }
  void heartbeatIntervalIs(Orm::Seconds interval) {
    assign(heartbeatInterval_, interval, Attr::heartbeatInterval);
  }

 private:
  Orm::Seconds heartbeatInterval_ = 0;
};

}  // namespace Controller::Heartbeat
