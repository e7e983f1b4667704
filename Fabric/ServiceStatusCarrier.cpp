#include "Fabric/ServiceStatusCarrier.h"

#include "Fabric/CarryMembers.h"
#include "Fabric/Object.h"
#include "Fabric/ServiceStatusView.h"
#include "Fabric/Writable.h"

namespace Fabric {

using Controller::ServiceStatusDir;
using Controller::ServiceStatusV1;
using Controller::ServiceVersionStatusV1;
using Orm::Ptr;
using Orm::String;

namespace {

/// Null without a version.
Ptr<ServiceVersionStatusV1> newVersionStatus(const ServiceStatusView& view) {
  const auto version = view.version();
  if (!version) return nullptr;
  return Orm::make<ServiceVersionStatusV1>(view.reported(), view.negotiated(), *version);
}

Ptr<ServiceStatusV1> newStatus(const String& name, const ServiceStatusView& view) {
  auto status = Orm::make<ServiceStatusV1>(name);
  status->enabledIs(view.enabled());
  status->versionStatusIs(newVersionStatus(view));
  return status;
}

void changeStatus(ServiceStatusV1& status, const ServiceStatusView& after, const Object& patch) {
  for (const Object::Member& member : patch) {
    const auto version = writable(status.versionStatus());
    if (*member.key == "enabled") {
      status.enabledIs(after.enabled());
    } else if (*member.key == "version" && (!version || !after.version())) {
      status.versionStatusIs(newVersionStatus(after));
    } else if (!version) {
      continue;
    } else if (*member.key == "version") {
      version->versionIs(*after.version());
    } else if (*member.key == "reported") {
      version->reportedIs(after.reported());
    } else if (*member.key == "negotiated") {
      version->negotiatedIs(after.negotiated());
    }
  }
}

}  // namespace

Ptr<ServiceStatusDir> newServiceStatusDir(const SwitchView& view) {
  auto dir = Orm::make<ServiceStatusDir>();
  for (const Object::Member& service : view.services()) {
    dir->serviceIs(newStatus(String(*service.key), ServiceStatusView(&service.value)));
  }
  return dir;
}

void carryServiceStatuses(ServiceStatusDir& dir, const SwitchView& after, const Value& patch) {
  carryMembers(
      patch, [&] { dir.serviceDelAll(); }, [&](const String& name) { dir.serviceDel(name); },
      [&](const String& name, const Value& statusPatch) {
        const ServiceStatusView view(after.services().find(name.view()));
        if (const Ptr<ServiceStatusV1> present = dir.service(name)) {
          changeStatus(*present, view, statusPatch.object());
        } else {
          dir.serviceIs(newStatus(name, view));
        }
      });
}

}  // namespace Fabric
