#pragma once

#include "Controllerdb/MountsRegistry/MountsRegistry.h"
#include "Fabric/ControllerView.h"
#include "Platform/Entities/ControllerOob/Config.h"
#include "Platform/Entities/ControllerOob/Status.h"
#include "Platform/Entities/Controllerdb/PublishStatus.h"
#include "Platform/Entities/Controllerdb/Status.h"
#include "Platform/Entities/PeerTable/PeerTable.h"
#include "Platform/Entities/ServiceConfig/ServiceConfigDir.h"
#include "Platform/Fennix/Dir.h"

namespace Fabric {

/// The entities of one controller process that its top machines are given: inputs, which the
/// Carrier writes, and outputs, which the machines write.
///
/// Built empty; only what counts at start alone (the registry's directory and limits) is taken from
/// the document here. The directories of the service configuration are roots of their own, outside
/// of the tree of local entities, so that no path of a document reaches them.
///
/// Owned by the run, which keeps it longer than all machines. Loop thread only.
class World {
 public:
  explicit World(const ControllerView& controller);

  // ---- the tree of local entities

  const Orm::Ptr<Fennix::Dir>& rootDir() const { return mountsRegistry_->rootDir(); }
  const Orm::Ptr<Fennix::Dir>& registryDir() const { return mountsRegistry_->registryDir(); }

  // ---- the controller

  const Orm::Ptr<Controller::MountsRegistry>& mountsRegistry() const { return mountsRegistry_; }
  const Orm::Ptr<Controllerdb::Status>& controllerdbStatus() const { return controllerdbStatus_; }
  const Orm::Ptr<Controllerdb::PublishStatus>& publishStatus() const { return publishStatus_; }
  const Orm::Ptr<ControllerOob::Status>& oobStatus() const { return oobStatus_; }
  const Orm::Ptr<Controller::PeerTable>& peerTable() const { return oobStatus_->peerTable(); }
  const Orm::Ptr<ControllerOob::Config>& oobConfig() const { return oobConfig_; }
  /// Null while the document has none.
  const Orm::Ptr<Controller::Heartbeat::Config>& heartbeatConfig() const {
    return oobConfig_->heartbeatConfig();
  }
  const Orm::Ptr<Controller::ServiceConfigDir>& serviceConfigDir() const {
    return serviceConfigDir_;
  }

  // ---- what the services say, and what they are told: their entities, by service key

  const Orm::Ptr<Fennix::Dir>& mountConfigDir() const { return mountConfigDir_; }
  const Orm::Ptr<Fennix::Dir>& mountStatusDir() const { return mountStatusDir_; }
  const Orm::Ptr<Fennix::Dir>& publishConfigDir() const { return publishConfigDir_; }
  const Orm::Ptr<Fennix::Dir>& publishStatusDir() const { return publishStatusDir_; }
  const Orm::Ptr<Fennix::Dir>& proxyMountConfigDir() const { return proxyMountConfigDir_; }
  const Orm::Ptr<Fennix::Dir>& proxyMountStatusDir() const { return proxyMountStatusDir_; }

 private:
  Orm::Ptr<Controller::MountsRegistry> mountsRegistry_;
  Orm::Ptr<Controllerdb::Status> controllerdbStatus_;
  Orm::Ptr<Controllerdb::PublishStatus> publishStatus_;
  Orm::Ptr<ControllerOob::Status> oobStatus_;
  Orm::Ptr<ControllerOob::Config> oobConfig_;
  Orm::Ptr<Controller::ServiceConfigDir> serviceConfigDir_;
  Orm::Ptr<Fennix::Dir> mountConfigDir_;
  Orm::Ptr<Fennix::Dir> mountStatusDir_;
  Orm::Ptr<Fennix::Dir> publishConfigDir_;
  Orm::Ptr<Fennix::Dir> publishStatusDir_;
  Orm::Ptr<Fennix::Dir> proxyMountConfigDir_;
  Orm::Ptr<Fennix::Dir> proxyMountStatusDir_;
};

}  // namespace Fabric
