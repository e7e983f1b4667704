#include "Platform/Orm/Sm.h"

#include "Platform/Orm/ActivityScope.h"
#include "Platform/Orm/Assert.h"

namespace Orm {

Sm::~Sm() { assertThat(refCount() == 0, "refCount() == 0"); }

void Sm::onLastRef() const {
  if (!ActivityScope::active()) {
    delete this;
    return;
  }
  if (deleted_) return;
  deleted_ = true;
  const_cast<Sm*>(this)->hasNotificationActiveIs(false);
  ActivityScope::reclaimLater(this,
                              [](const void* object) { delete static_cast<const Sm*>(object); });
}

}  // namespace Orm
