#pragma once

#include "Controllerdb/InitialMountSm/InitialSwitchSet.h"

namespace Controller {

/// Whether the switches that were going to connect after the start have connected.
class ConnectionPeriod : public Orm::Entity, private Kobble::Counted<ConnectionPeriod> {
 public:
  struct Attr {
    enum : Orm::AttributeId { complete };
  };

  bool complete() const { return complete_; }
  void completeIs(bool complete) { assign(complete_, complete, Attr::complete); }

  /// The switches that were connected when it ended; null before.
  const Orm::Ptr<InitialSwitchSet const>& connectedAtEnd() const { return connectedAtEnd_; }
  void connectedAtEndIs(Orm::Ptr<InitialSwitchSet const> set) { connectedAtEnd_ = std::move(set); }

 private:
  Orm::Ptr<InitialSwitchSet const> connectedAtEnd_;
  bool complete_ = false;
};

}  // namespace Controller
