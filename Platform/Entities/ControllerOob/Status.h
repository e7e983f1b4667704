#pragma once

#include <cstdint>

#include "Platform/Entities/ControllerOob/ClientStatus.h"
#include "Platform/Entities/PeerTable/PeerTable.h"
#include "Platform/Entities/ServiceStatus/NegotiationPart.h"
#include "Platform/Orm/LastAsked.h"

namespace ControllerOob {

/// The controller's out-of-band status: who is connected, who was, and what each connection says.
class Status : public Controller::NegotiationPart, private Kobble::Counted<Status> {
 public:
  struct Attr {
    enum : Orm::AttributeId { peerTable, clientStatus, inactive };
  };
  using ClientStatuses = Orm::Collection<Orm::Ptr<ClientStatus>, &ClientStatus::clientAddress>;
  using InactiveClients = Orm::Collection<Orm::Ptr<Controller::Peer>, &Controller::Peer::systemId>;

  const Orm::Ptr<Controller::PeerTable>& peerTable() const { return peerTable_; }
  void peerTableIs(Orm::Ptr<Controller::PeerTable> table) {
    assign(peerTable_, std::move(table), Attr::peerTable);
  }

  const ClientStatuses& clientStatus() const { return clientStatus_; }
  /// Cheapest for the one that was asked for last: one event concerns one connection.
  ClientStatus* clientStatus(const Pomix::IpAddrPort& address) const {
    return clientStatus_.find(address, lastFound_);
  }
  /// The first client status of a system, null when there is none. O(1).
  ClientStatus* clientStatusOfSystem(const Controller::SystemId& systemId) const;
  Orm::Ptr<ClientStatus> clientStatusIs(const Pomix::IpAddrPort& address,
                                        const Controller::SystemId& systemId);
  void clientStatusDel(const Pomix::IpAddrPort& address);
  void clientStatusDelAll();

  /// Switches that are known, but not active at present.
  const InactiveClients& inactive() const { return inactive_; }
  /// Cheapest for the system that was asked for last.
  bool isInactive(const Controller::SystemId& systemId) const {
    return lastInactive_.find(inactive_, systemId) != nullptr;
  }
  Orm::Ptr<Controller::Peer> inactiveIs(const Controller::SystemId& systemId,
                                        const Pomix::IpAddrPort& clientAddress);
  void inactiveDel(const Controller::SystemId& systemId) {
    memberDel(inactive_, Attr::inactive, systemId);
  }
  void inactiveDelAll() { memberDelAll(inactive_, Attr::inactive); }

 private:
  /// The client statuses of one system: the first, and how many there are.
  struct OfSystem {
    Pomix::IpAddrPort first;
    std::uint32_t count = 0;
    bool operator==(const OfSystem&) const = default;
  };

  Orm::Ptr<Controller::PeerTable> peerTable_;
  ClientStatuses clientStatus_;
  mutable ClientStatuses::Hint lastFound_ = 0;
  Orm::ValueCollection<Controller::SystemId, OfSystem> ofSystem_;
  InactiveClients inactive_;
  Orm::LastAsked<InactiveClients> lastInactive_;
};

}  // namespace ControllerOob
