#pragma once

#include "Platform/Entities/Controllerdb/SystemPublishedMount.h"
#include "Platform/Orm/CollectionOwner.h"

namespace Controllerdb {

/// The controller database's publications: what is published to each system, and which services'
/// publications are ready.
class PublishStatus : public Orm::CollectionOwner, private Kobble::Counted<PublishStatus> {
 public:
  struct Attr {
    enum : Orm::AttributeId { system, servicePublishReady };
  };
  using Systems = Orm::Collection<Orm::Ptr<SystemPublishedMount>, &SystemPublishedMount::systemId>;
  using ReadyServices = Orm::ValueCollection<Orm::String, bool>;

  const Systems& system() const { return system_; }
  SystemPublishedMount* system(const Controller::SystemId& systemId) const {
    return system_.find(systemId);
  }
  Orm::Ptr<SystemPublishedMount> systemIs(const Controller::SystemId& systemId) {
    if (SystemPublishedMount* present = system_.find(systemId)) return present;
    return memberIs(system_, Attr::system, Orm::make<SystemPublishedMount>(systemId));
  }
  void systemDel(const Controller::SystemId& systemId) {
    memberDel(system_, Attr::system, systemId);
  }
  void systemDelAll() { memberDelAll(system_, Attr::system); }

  const ReadyServices& servicePublishReady() const { return servicePublishReady_; }
  void servicePublishReadyIs(const Orm::String& serviceName, bool ready) {
    valueIs(servicePublishReady_, Attr::servicePublishReady, serviceName, ready);
  }
  void servicePublishReadyDel(const Orm::String& serviceName) {
    valueDel(servicePublishReady_, Attr::servicePublishReady, serviceName);
  }
  void servicePublishReadyDelAll() { valueDelAll(servicePublishReady_, Attr::servicePublishReady); }

 private:
  Systems system_;
  ReadyServices servicePublishReady_;
};

}  // namespace Controllerdb
