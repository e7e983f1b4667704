#include "Fabric/ServiceCarrier.h"

#include "Fabric/Object.h"

namespace Fabric {

using Controller::ServiceConfigV1;
using Orm::String;

void ServiceCarrier::carry(const Text& key, const Value& before, const Value& after,
                           const Value& patch) {
  const String name(*key);
  if (after.isNull()) return remove(name, ServiceView(&before).proxy());
  const ServiceView view(&after);
  // Without a word on it a new service is enabled, before anything refers to it.
  if (before.isNull() && patch.find("enabled") == nullptr) enabled(name, view);
  for (const Object::Member& member : patch.object()) {
    if (*member.key == "enabled") {
      enabled(name, view);
    } else if (*member.key == "mount") {
      mounts(view.proxy()).carry(name, after.find("mount"), member.value);
    } else if (*member.key == "publish") {
      publications().carry(name, after.find("publish"), member.value);
    }
  }
}

void ServiceCarrier::remove(const String& name, bool proxy) {
  mounts(proxy).remove(name);
  publications().remove(name);
  world_.serviceConfigDir()->serviceDel(name);
}

void ServiceCarrier::enabled(const String& name, const ServiceView& after) {
  Controller::ServiceConfigDir& services = *world_.serviceConfigDir();
  const std::optional<bool> enabled = after.enabled();
  if (!enabled) {
    services.serviceDel(name);
  } else if (ServiceConfigV1* present = services.service(name)) {
    present->enabledIs(*enabled);
  } else {
    const auto config = Orm::make<ServiceConfigV1>(name);
    config->enabledIs(*enabled);
    services.serviceIs(config);
  }
}

ServiceBlockCarrier<MountBlockPolicy> ServiceCarrier::mounts(bool proxy) const {
  return proxy ? ServiceBlockCarrier<MountBlockPolicy>(world_.proxyMountConfigDir(),
                                                       world_.proxyMountStatusDir())
               : ServiceBlockCarrier<MountBlockPolicy>(world_.mountConfigDir(),
                                                       world_.mountStatusDir());
}

ServiceBlockCarrier<PublishBlockPolicy> ServiceCarrier::publications() const {
  return {world_.publishConfigDir(), world_.publishStatusDir()};
}

}  // namespace Fabric
