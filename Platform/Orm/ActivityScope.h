#pragma once

#include <cstdint>

namespace Orm {

/// Marks that handlers are on the stack. Machines and reactors that are let go meanwhile are
/// *marked for deletion*: they are told nothing more, but their memory stays until the outermost
/// scope ends, so that a handler may remove whatever called it, itself included.
///
/// Every notification, every walk of a collection and every fired clock opens a scope; so do the
/// library's factories. Loop thread only. Costs an increment and a decrement.
class ActivityScope {
 public:
  ActivityScope() { ++depth_; }
  ~ActivityScope() {
    if (depth_ == 1 && zombies_ != 0) [[unlikely]]
      reclaim();
    --depth_;
  }
  ActivityScope(const ActivityScope&) = delete;
  ActivityScope& operator=(const ActivityScope&) = delete;

  static bool active() { return depth_ != 0; }
  /// Objects that wait for the outermost scope's end. For tests.
  static std::uint32_t zombies() { return zombies_; }

 private:
  friend class Reactor;
  friend class Sm;

  using Destroy = void (*)(const void* object);
  static void reclaimLater(const void* object, Destroy destroy);
  static void reclaim();

  static inline constinit std::uint32_t depth_ = 0;
  static inline constinit std::uint32_t zombies_ = 0;
};

}  // namespace Orm
