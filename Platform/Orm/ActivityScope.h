#pragma once

#include <cstdint>

#include "Platform/Orm/Inline.h"

namespace Orm {

/// Marks that handlers are on the stack. Machines and reactors that are let go meanwhile are
/// *marked for deletion*: they are told nothing more, but their memory stays until the outermost
/// scope ends, so that a handler may remove whatever called it, itself included.
///
/// Every notification, every walk of a collection and every fired clock opens a scope; so do the
/// library's factories. Loop thread only. Costs two stores, which nothing waits for.
class ActivityScope {
 public:
  // Put where they are used, for then a scope is a register and has no address.
  ORM_ALWAYS_INLINE ActivityScope() : nested_(active_) { active_ = true; }
  ORM_ALWAYS_INLINE ~ActivityScope() {
    if (nested_) return;
    if (zombies_ != 0) [[unlikely]]
      reclaim();
    active_ = false;
  }
  ActivityScope(const ActivityScope&) = delete;
  ActivityScope& operator=(const ActivityScope&) = delete;

  static bool active() { return active_; }
  /// Objects that wait for the outermost scope's end. For tests.
  static std::uint32_t zombies() { return zombies_; }

 private:
  friend class Reactor;
  friend class Sm;

  using Destroy = void (*)(const void* object);
  static void reclaimLater(const void* object, Destroy destroy);
  static void reclaim();

  const bool nested_;

  static inline constinit bool active_ = false;
  static inline constinit std::uint32_t zombies_ = 0;
};

}  // namespace Orm
