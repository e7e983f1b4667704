#pragma once

#include "Platform/NboAttrLog/Connection.h"
#include "Platform/Orm/CollectionOwner.h"

namespace Orm::NboAttrLog {

/// The connections of the attribute-log output: a singleton of its module. Without a host that
/// puts connections in there are none.
class ConnectionDir : public CollectionOwner, private Kobble::Counted<ConnectionDir> {
 public:
  struct Attr {
    enum : AttributeId { connection };
  };
  using Connections = Collection<Ptr<Connection>, &Connection::name>;

  /// The singleton; created when there is none.
  static const Ptr<ConnectionDir>& instance();
  /// Drops the singleton.
  static void instanceDel();

  const Connections& connection() const { return connection_; }
  Connection* connection(const String& name) const { return connection_.find(name); }
  Ptr<Connection> connectionIs(const String& name) {
    if (Connection* present = connection_.find(name)) return present;
    return memberIs(connection_, Attr::connection, make<Connection>(name));
  }
  void connectionDel(const String& name) { memberDel(connection_, Attr::connection, name); }
  void connectionDelAll() { memberDelAll(connection_, Attr::connection); }

 private:
  Connections connection_;
};

}  // namespace Orm::NboAttrLog
