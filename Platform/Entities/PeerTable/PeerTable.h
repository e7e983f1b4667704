#pragma once

#include "Platform/Entities/PeerTable/Peer.h"
#include "Platform/Entities/ServiceStatus/NegotiationPart.h"
#include "Platform/Orm/LastAsked.h"

namespace Controller {

/// The switches that are connected: a key that is present means that the switch is.
class PeerTable : public NegotiationPart, private Kobble::Counted<PeerTable> {
 public:
  struct Attr {
    enum : Orm::AttributeId { peer };
  };
  using Peers = Orm::Collection<Orm::Ptr<Peer>, &Peer::systemId>;

  const Peers& peer() const { return peer_; }
  /// Cheapest for the peer that was asked for last, also when there was none: one event asks for
  /// one peer many times, one that has gone as well.
  Peer* peer(const SystemId& systemId) const { return lastAsked_.find(peer_, systemId); }

  Orm::Ptr<Peer> peerIs(const SystemId& systemId, const Pomix::IpAddrPort& clientAddress);
  /// Puts in a peer that was built before, so that it is seen complete. Its key must be absent.
  void peerIs(Orm::Ptr<Peer> peer) {
    lastAsked_.memberComes();
    memberIs(peer_, Attr::peer, std::move(peer));
  }
  void peerDel(const SystemId& systemId) { memberDel(peer_, Attr::peer, systemId); }
  void peerDelAll() { memberDelAll(peer_, Attr::peer); }

 private:
  Peers peer_;
  Orm::LastAsked<Peers> lastAsked_;
};

}  // namespace Controller
