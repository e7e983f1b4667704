#include "Fabric/ControllerCarrier.h"

#include "Fabric/ControllerView.h"
#include "Fabric/Object.h"

namespace Fabric {

void ControllerCarrier::carry(const Value& after, const Value& patch) {
  const ControllerView view(&after);
  if (patch.isNull()) {
    leader(view);
    heartbeat(view);
    return;
  }
  for (const Object::Member& member : patch.object()) {
    if (*member.key == "leader") {
      leader(view);
    } else if (*member.key == "heartbeat") {
      heartbeat(view);
    }
  }
}

void ControllerCarrier::leader(const ControllerView& after) {
  world_.controllerdbStatus()->leaderGenIdIs(Orm::String(after.leader()));
}

void ControllerCarrier::heartbeat(const ControllerView& after) {
  const std::optional<double> interval = after.heartbeat();
  if (!interval) {
    world_.oobConfig()->heartbeatConfigIs(nullptr);
  } else if (const auto present = world_.heartbeatConfig()) {
    present->heartbeatIntervalIs(*interval);
  } else {
    const auto config = Orm::make<Controller::Heartbeat::Config>();
    config->heartbeatIntervalIs(*interval);
    world_.oobConfig()->heartbeatConfigIs(config);
  }
}

}  // namespace Fabric
