#include "Platform/Entities/PeerTable/PeerTable.h"

#include "Platform/Orm/MutatorReinstantiatingError.h"

namespace Controller {

Orm::Ptr<Peer> PeerTable::peerIs(const SystemId& systemId, const Pomix::IpAddrPort& clientAddress) {
  if (Peer* present = peer_.find(systemId)) {
    Orm::requireSame("clientAddress", present->clientAddress(), clientAddress);
    return present;
  }
  Orm::Ptr<Peer> made = Orm::make<Peer>(systemId, clientAddress);
  peerIs(made);
  return made;
}

}  // namespace Controller
