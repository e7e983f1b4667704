#include "Platform/Entities/ControllerOob/Status.h"

#include "Platform/Orm/MutatorReinstantiatingError.h"

namespace ControllerOob {

using Controller::Peer;
using Controller::SystemId;
using Orm::Ptr;
using Pomix::IpAddrPort;

ClientStatus* Status::clientStatusOfSystem(const SystemId& systemId) const {
  const OfSystem* found = ofSystem_.find(systemId);
  return found ? clientStatus_.find(found->first) : nullptr;
}

Ptr<ClientStatus> Status::clientStatusIs(const IpAddrPort& address, const SystemId& systemId) {
  if (ClientStatus* present = clientStatus_.find(address)) {
    Orm::requireSame("systemId", present->systemId(), systemId);
    return present;
  }
  OfSystem ofSystem = ofSystem_.value(systemId);
  if (ofSystem.count++ == 0) ofSystem.first = address;
  ofSystem_.set(systemId, ofSystem);
  return memberIs(clientStatus_, Attr::clientStatus, Orm::make<ClientStatus>(address, systemId));
}

void Status::clientStatusDel(const IpAddrPort& address) {
  const Ptr<ClientStatus> gone = clientStatus_.find(address);
  if (!gone) return;
  OfSystem ofSystem = ofSystem_.value(gone->systemId());
  if (--ofSystem.count == 0) {
    ofSystem_.erase(gone->systemId());
  } else {
    // Several connections of one switch are rare: the next one is looked for.
    for (const Ptr<ClientStatus>& other : clientStatus_) {
      if (other == gone || other->systemId() != gone->systemId()) continue;
      ofSystem.first = other->clientAddress();
      break;
    }
    ofSystem_.set(gone->systemId(), ofSystem);
  }
  memberDel(clientStatus_, Attr::clientStatus, gone->clientAddress());
}

void Status::clientStatusDelAll() {
  const Ptr<Status> self(this);
  clientStatus_.walk([this](ClientStatus& status) { clientStatusDel(status.clientAddress()); });
}

Ptr<Peer> Status::inactiveIs(const SystemId& systemId, const IpAddrPort& clientAddress) {
  if (Peer* present = inactive_.find(systemId)) {
    Orm::requireSame("clientAddress", present->clientAddress(), clientAddress);
    return present;
  }
  lastInactive_.memberComes();
  return memberIs(inactive_, Attr::inactive, Orm::make<Peer>(systemId, clientAddress));
}

}  // namespace ControllerOob
