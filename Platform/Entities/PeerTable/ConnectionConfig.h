#pragma once

#include "Platform/Orm/Entity.h"
#include "Platform/Pomix/IpAddrPort.h"

namespace Controller {

/// How a switch is reached: where its mounts are asked for. Its presence at a peer is what the
/// library acts on; its content is for the mount machine.
class ConnectionConfig : public Orm::Entity, private Kobble::Counted<ConnectionConfig> {
 public:
  explicit ConnectionConfig(const Pomix::IpAddrPort& address) : address_(address) {}

  const Pomix::IpAddrPort& address() const { return address_; }

 private:
  Pomix::IpAddrPort address_;
};

}  // namespace Controller
