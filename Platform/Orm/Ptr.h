#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "Platform/Kobble/Kobble.h"
#include "Platform/Orm/Audit.h"
#include "Platform/Orm/Inline.h"

namespace Orm {

namespace detail {
inline constinit bool threadSafePtrs = false;
}

/// Whether reference counts are changed atomically. A process setting, to be made before handles
/// are shared between threads; off by default, and then counting is a plain increment.
inline bool threadSafePtrs() { return detail::threadSafePtrs; }
inline void threadSafePtrsIs(bool on) { detail::threadSafePtrs = on; }

namespace detail {

// Counting is everywhere, so it is put where it is used whatever the compiler thinks of its size;
// for that the atomic kind stands apart.
[[gnu::noinline, gnu::cold]] inline void countUpAtomically(std::uint32_t& count) {
  std::atomic_ref(count).fetch_add(1, std::memory_order_relaxed);
}
[[gnu::noinline, gnu::cold]] inline bool countDownAtomically(std::uint32_t& count) {
  return std::atomic_ref(count).fetch_sub(1, std::memory_order_acq_rel) == 1;
}

ORM_ALWAYS_INLINE inline void countUp(std::uint32_t& count) {
  if (threadSafePtrs) [[unlikely]] {
    countUpAtomically(count);
  } else {
    ++count;
  }
}

/// True when the count has reached zero.
ORM_ALWAYS_INLINE inline bool countDown(std::uint32_t& count) {
  if (threadSafePtrs) [[unlikely]]
    return countDownAtomically(count);
  return --count == 0;
}

}  // namespace detail

/// Base of everything that is held by Ptr: an intrusive count, slab memory, and what happens when
/// the last handle goes (by default the object is destroyed there and then).
class PtrInterface {
 public:
  PtrInterface(const PtrInterface&) = delete;
  PtrInterface& operator=(const PtrInterface&) = delete;

  static void* operator new(std::size_t size) { return Kobble::allocate(size); }
  static void operator delete(void* block, std::size_t size) { Kobble::deallocate(block, size); }

  /// The number of handles. For tests and checks.
  std::uint32_t refCount() const { return refCount_; }

 protected:
  PtrInterface() { Audit::objectCame(this); }
  virtual ~PtrInterface() { Audit::objectGoes(this); }

  virtual void onLastRef() const { delete this; }

 private:
  template <class>
  friend class Ptr;

  ORM_ALWAYS_INLINE void ref() const { detail::countUp(refCount_); }
  ORM_ALWAYS_INLINE void unref() const {
    if (detail::countDown(refCount_)) onLastRef();
  }

  mutable std::uint32_t refCount_ = 0;
};

/// A counted handle to a T; `Ptr<T const>` gives read access only. Null is a valid value.
template <class T>
class Ptr {
 public:
  constexpr Ptr() noexcept = default;
  constexpr Ptr(std::nullptr_t) noexcept {}
  ORM_ALWAYS_INLINE Ptr(T* object) : object_(object) {
    if (object_) counted(object_)->ref();
    Audit::handleIs(this, object_);
  }
  Ptr(const Ptr& other) : Ptr(other.object_) {}
  Ptr(Ptr&& other) noexcept : object_(other.release()) { Audit::handleIs(this, object_); }
  template <class U>
  requires std::is_convertible_v<U*, T*> Ptr(const Ptr<U>& other) : Ptr(other.get()) {}
  template <class U>
  requires std::is_convertible_v<U*, T*> Ptr(Ptr<U>&& other)
  noexcept : object_(other.release()) { Audit::handleIs(this, object_); }
  ORM_ALWAYS_INLINE ~Ptr() {
    Audit::handleIs(this, nullptr);
    if (object_) counted(object_)->unref();
  }

  // The new object is counted before the old one is let go.
  Ptr& operator=(const Ptr& other) {  // NOLINT(bugprone-unhandled-self-assignment): copies first
    Ptr(other).swap(*this);
    return *this;
  }
  Ptr& operator=(Ptr&& other) noexcept {
    Ptr(std::move(other)).swap(*this);
    return *this;
  }

  void swap(Ptr& other) noexcept {
    std::swap(object_, other.object_);
    Audit::handleIs(this, object_);
    Audit::handleIs(&other, other.object_);
  }

  T* get() const noexcept { return object_; }
  T* operator->() const noexcept { return object_; }
  T& operator*() const noexcept { return *object_; }
  explicit operator bool() const noexcept { return object_ != nullptr; }

  friend bool operator==(const Ptr& a, const Ptr& b) noexcept { return a.object_ == b.object_; }
  friend bool operator==(const Ptr& a, std::nullptr_t) noexcept { return a.object_ == nullptr; }

 private:
  template <class>
  friend class Ptr;

  static const PtrInterface* counted(const PtrInterface* object) { return object; }
  T* release() noexcept {
    Audit::handleIs(this, nullptr);
    return std::exchange(object_, nullptr);
  }

  T* object_ = nullptr;
};

/// The object behind `ptr` when it is a U, else null.
template <class U, class T>
Ptr<U> dynamicCast(const Ptr<T>& ptr) {
  return Ptr<U>(dynamic_cast<U*>(ptr.get()));
}

}  // namespace Orm
