#include "Fabric/SwitchCarrier.h"

#include "Fabric/Object.h"
#include "Fabric/ServiceStatusCarrier.h"

namespace Fabric {

using Controller::ConnectionConfig;
using Controller::Peer;
using Controller::SystemId;
using Orm::Ptr;
using Orm::String;
using Pomix::IpAddr;
using Pomix::IpAddrPort;

namespace {

constexpr std::uint16_t kClientPort = 50000;

Ptr<ConnectionConfig const> connectionConfig(const SystemId& systemId, bool reachable) {
  if (!reachable) return nullptr;
  return Orm::make<ConnectionConfig>(clientAddressOf(systemId));
}

}  // namespace

IpAddrPort clientAddressOf(const SystemId& systemId) {
  std::array<std::uint8_t, 16> bytes{0xfd};
  std::uint64_t address = systemId.address().value();
  for (std::size_t at = bytes.size(); at-- != bytes.size() - 6; address >>= 8) {
    bytes[at] = static_cast<std::uint8_t>(address);
  }
  return {IpAddr::fromV6(bytes), kClientPort};
}

void SwitchCarrier::carry(const Text& key, const Value& before, const Value& after,
                          const Value& patch) {
  const SystemId systemId = SystemId::ofName(*key);
  if (after.isNull()) return disappear(systemId);
  if (before.isNull()) return appear(systemId, after);
  change(systemId, before, after, patch);
}

void SwitchCarrier::appear(const SystemId& systemId, const Value& after) {
  const SwitchView view(&after);
  const auto status = world_.oobStatus()->clientStatusIs(clientAddressOf(systemId), systemId);
  status->nameIs(String(view.name()));
  status->serviceStatusDirIs(newServiceStatusDir(view));
  mount(systemId, after);
  inactive(systemId, view.inactive());
  connected(systemId, view.connected(), view.reachable());
}

void SwitchCarrier::change(const SystemId& systemId, const Value& before, const Value& after,
                           const Value& patch) {
  const SwitchView view(&after);
  const Ptr<ControllerOob::ClientStatus> status =
      world_.oobStatus()->clientStatus(clientAddressOf(systemId));
  // A peer comes as reachable as the switch is when the patch gets to it.
  bool isReachable = SwitchView(&before).reachable();
  for (const Object::Member& member : patch.object()) {
    if (*member.key == "name") {
      status->nameIs(String(view.name()));
    } else if (*member.key == "connected") {
      connected(systemId, view.connected(), isReachable);
    } else if (*member.key == "reachable") {
      isReachable = view.reachable();
      reachable(systemId, isReachable);
    } else if (*member.key == "inactive") {
      inactive(systemId, view.inactive());
    } else if (*member.key == "services") {
      carryServiceStatuses(*status->serviceStatusDir(), view, member.value);
    } else if (*member.key == "mount") {
      mount(systemId, after);
    }
  }
}

void SwitchCarrier::disappear(const SystemId& systemId) {
  world_.peerTable()->peerDel(systemId);
  world_.oobStatus()->inactiveDel(systemId);
  world_.oobStatus()->clientStatusDel(clientAddressOf(systemId));
  mounts_.behaviourIs(systemId, Value());
}

void SwitchCarrier::connected(const SystemId& systemId, bool connected, bool reachable) {
  Controller::PeerTable& peers = *world_.peerTable();
  if (!connected) {
    peers.peerDel(systemId);
  } else if (!peers.peer(systemId)) {
    const auto peer = Orm::make<Peer>(systemId, clientAddressOf(systemId));
    peer->connectionConfigIs(connectionConfig(systemId, reachable));
    peers.peerIs(peer);
  }
}

void SwitchCarrier::reachable(const SystemId& systemId, bool reachable) {
  const Ptr<Peer> peer = world_.peerTable()->peer(systemId);
  if (!peer || reachable == static_cast<bool>(peer->connectionConfig())) return;
  peer->connectionConfigIs(connectionConfig(systemId, reachable));
}

void SwitchCarrier::inactive(const SystemId& systemId, bool inactive) {
  if (inactive) {
    world_.oobStatus()->inactiveIs(systemId, clientAddressOf(systemId));
  } else {
    world_.oobStatus()->inactiveDel(systemId);
  }
}

void SwitchCarrier::mount(const SystemId& systemId, const Value& after) {
  const Value* mount = after.find("mount");
  mounts_.behaviourIs(systemId, mount == nullptr ? Value() : *mount);
}

}  // namespace Fabric
