#pragma once

#include <utility>

#include "Platform/Orm/ActivityScope.h"
#include "Platform/Orm/Ptr.h"

namespace Orm {

/// Base of the state machines.
///
/// A machine is held by its parent's keyed collection (or by the controller process); it may be
/// let go while one of its own handlers is on the stack, and is then marked for deletion: its
/// notification is switched off at once and its memory goes when the handlers have returned; a
/// handle that was taken on it meanwhile must be gone by then.
class Sm : public PtrInterface {
 public:
  bool isDeleted() const { return deleted_; }

  /// Switches notification of the machine's reactors and children on or off together.
  virtual void hasNotificationActiveIs(bool active) = 0;

 protected:
  Sm() = default;
  ~Sm() override;

  void onLastRef() const override;

 private:
  mutable bool deleted_ = false;
};

/// Puts a machine that was just made into its parent's collection and starts it, in this order:
/// whoever is told of what the machine does at once may take it away, or what it stands for, and
/// finds it. Null when that has happened.
template <class Children, class Machine>
Ptr<Machine> childIs(Children& children, Ptr<Machine> child) {
  const ActivityScope scope;
  Machine& made = *child;
  children.insert(std::move(child));
  made.start();
  return made.isDeleted() ? nullptr : &made;
}

}  // namespace Orm
