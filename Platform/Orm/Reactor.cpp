#include "Platform/Orm/Reactor.h"

#include "Platform/Orm/ActivityScope.h"

namespace Orm {

Reactor::~Reactor() {
  if (notifier_) notifier_->notifieeDel(*this);
  Audit::reactorGoes(this);
}

bool Reactor::watchedIs(Ptr<Entity const> entity) {
  if (entity == notifier_) return false;
  if (notifier_) notifier_->notifieeDel(*this);
  notifier_.swap(entity);
  if (notifier_) notifier_->notifieeIs(*this);
  return true;  // the old entity is let go here, when the reactor stands on the new one
}

void Reactor::retire(Reactor* reactor) {
  if (!ActivityScope::active()) {
    delete reactor;
    return;
  }
  // The handle stays until the memory goes: a handler on the stack may still read the entity.
  reactor->flags_ |= kDeleted;
  ActivityScope::reclaimLater(
      reactor, [](const void* object) { delete static_cast<const Reactor*>(object); });
}

}  // namespace Orm
