#pragma once

#include <utility>

#include "Platform/Entities/PeerTable/Peer.h"
#include "Platform/Entities/SystemId/SystemId.h"

namespace Controller {

/// A system together with the name of its connection, so that the many decisions that one event
/// asks for neither parse nor format it.
struct Connection {
  SystemId systemId;
  Orm::String name;

  explicit Connection(const Peer& peer) : systemId(peer.systemId()), name(peer.name()) {}
  explicit Connection(const SystemId& id) : Connection(id, id.stringValue()) {}
  /// Of a system and its name, which the caller has both.
  Connection(const SystemId& id, Orm::String connectionName)
      : systemId(id), name(std::move(connectionName)) {}
  /// Of a connection's name, which must be the text form of a SystemId.
  explicit Connection(const Orm::String& connectionName)
      : systemId(SystemId::ofName(connectionName)), name(connectionName) {}
};

}  // namespace Controller
