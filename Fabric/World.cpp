#include "Fabric/World.h"

#include <string_view>

namespace Fabric {

using Fennix::Dir;
using Orm::make;
using Orm::Ptr;
using Orm::String;

namespace {

/// The directory at a path below a new root.
Ptr<Dir> dirAt(const Ptr<Dir>& root, std::string_view path) {
  Ptr<Dir> dir = root;
  Fennix::eachComponent(path, [&dir](std::string_view component) {
    dir = dir->createDir(String(component));
    return true;
  });
  return dir;
}

Ptr<Controller::MountsRegistry> newRegistry(const ControllerView& controller) {
  const auto root = make<Dir>();
  const Ptr<Dir> registryDir = dirAt(root, controller.registryDir());
  return make<Controller::MountsRegistry>(registryDir, registryDir->path(), root,
                                          String(controller.remoteRoot()),
                                          controller.reconnectRetries(), controller.mountTimeout());
}

}  // namespace

World::World(const ControllerView& controller)
    : mountsRegistry_(newRegistry(controller)),
      controllerdbStatus_(make<Controllerdb::Status>()),
      publishStatus_(make<Controllerdb::PublishStatus>()),
      oobStatus_(make<ControllerOob::Status>()),
      oobConfig_(make<ControllerOob::Config>()),
      serviceConfigDir_(make<Controller::ServiceConfigDir>()),
      mountConfigDir_(make<Dir>()),
      mountStatusDir_(make<Dir>()),
      publishConfigDir_(make<Dir>()),
      publishStatusDir_(make<Dir>()),
      proxyMountConfigDir_(make<Dir>()),
      proxyMountStatusDir_(make<Dir>()) {
  oobStatus_->peerTableIs(make<Controller::PeerTable>());
}

}  // namespace Fabric
