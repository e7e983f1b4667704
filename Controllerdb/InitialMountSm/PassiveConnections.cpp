#include "Controllerdb/InitialMountSm/PassiveConnections.h"

#include "Platform/NboAttrLog/ConnectionDir.h"

namespace Controller {

void getPassiveConnectionsList(std::vector<std::string>& out) {
  using namespace Orm::NboAttrLog;
  for (const Orm::Ptr<Connection>& connection : ConnectionDir::instance()->connection()) {
    if (connection->mode() != Mode::passive) continue;
    if (connection->status() && connection->status()->active()) {
      out.push_back(connection->name().str());
    }
  }
}

}  // namespace Controller
