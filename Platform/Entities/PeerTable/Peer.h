#pragma once

#include "Platform/Entities/PeerTable/ConnectionConfig.h"
#include "Platform/Entities/SystemId/SystemId.h"
#include "Platform/Orm/Entity.h"
#include "Platform/Pomix/IpAddrPort.h"

namespace Controller {

/// A connected switch, or an inactive client. A member of the table that made it.
class Peer : public Orm::Entity, private Kobble::Counted<Peer> {
 public:
  struct Attr {
    enum : Orm::AttributeId { connectionConfig };
  };

  Peer(const SystemId& systemId, const Pomix::IpAddrPort& clientAddress)
      : systemId_(systemId), name_(systemId.stringValue()), clientAddress_(clientAddress) {}

  const SystemId& systemId() const { return systemId_; }
  /// The text form of systemId, made once.
  const Orm::String& name() const { return name_; }
  /// The key of its client status.
  const Pomix::IpAddrPort& clientAddress() const { return clientAddress_; }

  /// Null while it is not known how the switch is reached.
  const Orm::Ptr<ConnectionConfig const>& connectionConfig() const { return connectionConfig_; }
  void connectionConfigIs(Orm::Ptr<ConnectionConfig const> config) {
    assign(connectionConfig_, std::move(config), Attr::connectionConfig);
  }

 private:
  SystemId systemId_;
  Orm::String name_;
  Pomix::IpAddrPort clientAddress_;
  Orm::Ptr<ConnectionConfig const> connectionConfig_;
};

}  // namespace Controller
