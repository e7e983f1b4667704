#include "Platform/Entities/PeerTable/PeerTable.h"

#include "Platform/Orm/MutatorReinstantiatingError.h"

namespace Controller {

Orm::Ptr<Peer> PeerTable::peerIs(const SystemId& systemId, const Pomix::IpAddrPort& clientAddress) {
  if (Peer* present = peer_.find(systemId)) {
    Orm::requireSame("clientAddress", present->clientAddress(), clientAddress);
    return present;
  }
  return memberIs(peer_, Attr::peer, Orm::make<Peer>(systemId, clientAddress));
}

}  // namespace Controller
