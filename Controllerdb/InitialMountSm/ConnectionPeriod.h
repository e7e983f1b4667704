#pragma once

#include "Platform/Orm/Entity.h"

namespace Controller {

/// Whether the switches that were going to connect after the start have connected.
class ConnectionPeriod : public Orm::Entity, private Kobble::Counted<ConnectionPeriod> {
 public:
  struct Attr {
    enum : Orm::AttributeId { complete };
  };

  bool complete() const { return complete_; }
  void completeIs(bool complete) { assign(complete_, complete, Attr::complete); }

 private:
  bool complete_ = false;
};

}  // namespace Controller
