#pragma once

#include <optional>

#include "Platform/Entities/PeerTable/Peer.h"
#include "Platform/Entities/ServiceStatus/NegotiationPart.h"

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
  Peer* peer(const SystemId& systemId) const {
    if (Peer* const found = peer_.findAt(lastFound_, systemId)) return found;
    if (lastMissed_ == systemId) return nullptr;
    Peer* const found = peer_.find(systemId, lastFound_);
    if (!found) lastMissed_ = systemId;
    return found;
  }

  Orm::Ptr<Peer> peerIs(const SystemId& systemId, const Pomix::IpAddrPort& clientAddress);
  /// Puts in a peer that was built before, so that it is seen complete. Its key must be absent.
  void peerIs(Orm::Ptr<Peer> peer) {
    lastMissed_.reset();
    memberIs(peer_, Attr::peer, std::move(peer));
  }
  void peerDel(const SystemId& systemId) { memberDel(peer_, Attr::peer, systemId); }
  void peerDelAll() { memberDelAll(peer_, Attr::peer); }

 private:
  Peers peer_;
  mutable Peers::Hint lastFound_ = 0;
  mutable std::optional<SystemId> lastMissed_;  // none since the last peer that came
};

}  // namespace Controller
