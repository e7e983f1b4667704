#include "Controllerdb/MountsRegistry/InactiveClientSm.h"

#include "Controllerdb/MountsRegistry/Connection.h"
#include "Controllerdb/MountsRegistry/MountsRegistrySm.h"
#include "Controllerdb/MountsRegistry/MountsRegistryTrace.h"

namespace Controller {

using Orm::Ptr;
using Orm::String;

Ptr<InactiveClientSm> inactiveClientSmFactory(const Ptr<ControllerOob::Status const>& oobStatus,
                                              const Ptr<ServiceConfigDir const>& serviceConfigDir,
                                              MountsRegistrySm* mountsRegistrySm) {
  return Orm::make<InactiveClientSm>(oobStatus, serviceConfigDir, mountsRegistrySm);
}

// ---- construct

InactiveClientSm::InactiveClientSm(Ptr<ControllerOob::Status const> oobStatus,
                                   const Ptr<ServiceConfigDir const>& serviceConfigDir,
                                   MountsRegistrySm* mountsRegistrySm)
    : oobStatus_(std::move(oobStatus)),
      mountsRegistrySm_(mountsRegistrySm),
      ormOobStatus_(this),
      ormServiceConfigDir_(this) {
  ormOobStatus_.notifierIs(oobStatus_);
  ormServiceConfigDir_.notifierIs(serviceConfigDir);
  if (serviceConfigDir) {
    serviceConfigDir->service().walk(
        [this](ServiceConfigV1& config) { serviceConfigIs(Ptr<ServiceConfigV1 const>(&config)); });
  }
}

void InactiveClientSm::hasNotificationActiveIs(bool active) {
  ormOobStatus_.hasNotificationActiveIs(active);
  ormServiceConfigDir_.hasNotificationActiveIs(active);
  for (const auto& config : serviceConfig_) config->hasNotificationActiveIs(active);
}

// ---- react

void InactiveClientSm::OrmOobStatus::onAttribute(Orm::AttributeId attribute, const Orm::Key& key) {
  if (attribute == ControllerOob::Status::Attr::inactive) {
    owner()->handleInactivePeer(key.as<SystemId>());
  }
}

void InactiveClientSm::OrmServiceConfigDir::onAttribute(Orm::AttributeId attribute,
                                                        const Orm::Key& key) {
  if (attribute != ServiceConfigDir::Attr::service) return;
  const auto& name = key.as<String>();
  if (const Ptr<ServiceConfigV1 const> config = notifier()->service(name)) {
    owner()->serviceConfigIs(config);
  } else {
    owner()->serviceConfigDel(name);
  }
}

void InactiveClientSm::serviceConfigIs(const Ptr<ServiceConfigV1 const>& config) {
  const Orm::ActivityScope scope;
  if (OrmServiceConfig* present = serviceConfig_.find(config->serviceName())) {
    if (present->notifier() == config.get()) return;
    serviceConfigDel(config->serviceName());
  }
  Orm::Owned<OrmServiceConfig> reactor(new OrmServiceConfig(this));
  OrmServiceConfig& made = *reactor;
  made.notifierIs(config);
  serviceConfig_.insert(std::move(reactor));
  made.handleInitialized();
}

void InactiveClientSm::OrmServiceConfig::onAttribute(Orm::AttributeId attribute, const Orm::Key&) {
  if (attribute == ServiceConfigV1::Attr::enabled) handleEnabled();
}

void InactiveClientSm::OrmServiceConfig::handleInitialized() {
  initialized_ = true;
  handleEnabled();
}

// ---- act

void InactiveClientSm::handleInactivePeer(const SystemId& systemId) {
  // The prefix is the registry machine's in these traces.
  REGISTRY_TRACE(8, "MountsRegistrySm::", "handleInactivePeer", "( ", systemId, " )");
  const Ptr<PeerTable>& peerTable = oobStatus_->peerTable();
  if (oobStatus_->inactive().has(systemId) || (peerTable && peerTable->peer(systemId))) {
    REGISTRY_TRACE(8, "MountsRegistrySm::", "handleInactivePeer", " return");
    return;
  }
  const Connection connection(systemId);
  mountsRegistrySm_->mountsRegistryEntrySm().walk(
      [&](MountsRegistryEntrySm& entry) { entry.handleSwitchConnection(connection); });
  REGISTRY_TRACE(8, "MountsRegistrySm::", "handleInactivePeer", " return");
}

void InactiveClientSm::OrmServiceConfig::handleEnabled() {
  REGISTRY_TRACE(8, "InactiveClientSm::", "handleEnabled", " ", serviceName(), " : ",
                 notifier()->enabled());
  if (notifier()->enabled()) return;
  InactiveClientSm& sm = *owner();
  sm.oobStatus_->inactive().walk([&sm](const Peer& inactive) {
    const Connection connection(inactive);
    sm.mountsRegistrySm_->mountsRegistryEntrySm().walk(
        [&](MountsRegistryEntrySm& entry) { entry.doDisconnectSwitch(connection); });
  });
  REGISTRY_TRACE(8, "InactiveClientSm::", "handleEnabled", "() return");
}

// ---- clean up

void InactiveClientSm::doCleanup() {
  REGISTRY_TRACE(8, "InactiveClientSm::", "doCleanup");
  hasNotificationActiveIs(false);
  serviceConfigDelAll();
}

}  // namespace Controller
