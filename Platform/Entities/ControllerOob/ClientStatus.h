#pragma once

#include "Platform/Entities/ServiceStatus/NegotiationPart.h"
#include "Platform/Entities/ServiceStatus/ServiceStatusDir.h"
#include "Platform/Entities/SystemId/SystemId.h"
#include "Platform/Pomix/IpAddrPort.h"

namespace ControllerOob {

/// The status of one client connection, known by where it comes from.
class ClientStatus : public Controller::NegotiationPart, private Kobble::Counted<ClientStatus> {
 public:
  struct Attr {
    enum : Orm::AttributeId { name, serviceStatusDir };
  };

  ClientStatus(const Pomix::IpAddrPort& clientAddress, const Controller::SystemId& systemId)
      : clientAddress_(clientAddress), systemId_(systemId) {}

  const Pomix::IpAddrPort& clientAddress() const { return clientAddress_; }
  const Controller::SystemId& systemId() const { return systemId_; }

  /// The switch's display name; empty when it has none.
  const Orm::String& name() const { return name_; }
  void nameIs(Orm::String name) { assign(name_, std::move(name), Attr::name); }

  const Orm::Ptr<Controller::ServiceStatusDir>& serviceStatusDir() const {
    return serviceStatusDir_;
  }
  void serviceStatusDirIs(Orm::Ptr<Controller::ServiceStatusDir> dir) {
    assign(serviceStatusDir_, std::move(dir), Attr::serviceStatusDir);
  }

 private:
  Pomix::IpAddrPort clientAddress_;
  Controller::SystemId systemId_;
  Orm::String name_;
  Orm::Ptr<Controller::ServiceStatusDir> serviceStatusDir_;
};

}  // namespace ControllerOob
