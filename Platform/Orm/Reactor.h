#pragma once

#include <cstdint>
#include <utility>

#include "Platform/Orm/Entity.h"

namespace Orm {

/// A notifiee: registered on at most one entity at a time, to which it holds a handle.
///
/// Owned by the machine that it is a member of, or through Owned when it stands in a collection or
/// may go while it is being called. Going ends the registration at once, during a notification
/// too. Loop thread only. Registering and deregistering cost O(1), amortised.
class Reactor {
 public:
  Reactor(const Reactor&) = delete;
  Reactor& operator=(const Reactor&) = delete;
  virtual ~Reactor();

  static void* operator new(std::size_t size) { return Kobble::allocate(size); }
  static void operator delete(void* block, std::size_t size) { Kobble::deallocate(block, size); }

  /// Tells of a change of the watched entity; attributes that do not concern are ignored.
  /// Called by the entity, never on a reactor that is marked for deletion or switched off.
  virtual void onAttribute(AttributeId attribute, const Key& key) = 0;

  /// True once the reactor was let go while handlers were on the stack.
  bool isDeleted() const { return (flags_ & kDeleted) != 0; }

  /// Whether what it watches knows of it; for checks.
  bool isRegistered() const { return !notifier_ || notifier_->isNotifiee(*this); }

  /// Whether changes are dispatched; on from construction.
  bool hasNotificationActive() const { return (flags_ & kMuted) == 0; }
  void hasNotificationActiveIs(bool active) {
    flags_ = static_cast<std::uint8_t>(active ? flags_ & ~kMuted : flags_ | kMuted);
  }

  /// Ends the life of a reactor that was made with new: now, or when the handlers that are on the
  /// stack have returned.
  static void retire(Reactor* reactor);

 protected:
  explicit Reactor(void* owner = nullptr) : owner_(owner) { Audit::reactorCame(this); }
  /// Registered from the start, and silent until it is switched on.
  Reactor(void* owner, Ptr<Entity const> entity)
      : notifier_(std::move(entity)), owner_(owner), flags_(kMuted) {
    notifier_->notifieeIs(*this);
    Audit::reactorCame(this);
  }

  void* rawOwner() const { return owner_; }
  const Entity* watched() const { return notifier_.get(); }
  /// Registers on `entity` (null: on nothing). False when it is the one already watched.
  bool watchedIs(Ptr<Entity const> entity);

 private:
  friend class Entity;
  static constexpr std::uint8_t kDeleted = 1;
  static constexpr std::uint8_t kMuted = 2;

  Ptr<Entity const> notifier_;
  void* owner_;
  // Last, so that what a derived reactor has of its own begins in what would be padding.
  std::uint32_t place_ = 0;  // in the entity's list of notifiees
  std::uint8_t flags_ = 0;
};

/// A reactor of an Owner (a machine, or another reactor) on an entity of type T.
template <class T, class Owner>
class ReactorOn : public Reactor {
 public:
  /// The watched entity, null while there is none.
  const T* notifier() const { return static_cast<const T*>(watched()); }

  /// Points the reactor at another entity; the same entity changes nothing. A reactor whose
  /// onNotifier() says so then deals with the new entity's present state.
  void notifierIs(const Ptr<T const>& entity) {
    if (watchedIs(entity) && entity && !isDeleted() && owner()) onNotifier();
  }

 protected:
  explicit ReactorOn(Owner* owner) : Reactor(owner) {}
  ReactorOn(Owner* owner, Ptr<T const> entity) : Reactor(owner, std::move(entity)) {}

  Owner* owner() const { return static_cast<Owner*>(rawOwner()); }

  virtual void onNotifier() {}
};

/// `entity` as the T that a reactor accepts; any other type counts as null.
template <class T>
Ptr<T const> accepted(const Ptr<Entity const>& entity) {
  return dynamicCast<T const>(entity);
}

/// The one owner of a reactor that was made with new; letting go is Reactor::retire.
template <class R>
class Owned {
 public:
  constexpr Owned() noexcept = default;
  constexpr Owned(std::nullptr_t) noexcept {}
  explicit Owned(R* reactor) noexcept : reactor_(reactor) {}
  Owned(Owned&& other) noexcept : reactor_(std::exchange(other.reactor_, nullptr)) {}
  Owned& operator=(Owned&& other) noexcept {
    Owned(std::move(other)).swap(*this);
    return *this;
  }
  ~Owned() {
    if (reactor_) Reactor::retire(reactor_);
  }

  void swap(Owned& other) noexcept { std::swap(reactor_, other.reactor_); }

  R* get() const noexcept { return reactor_; }
  R* operator->() const noexcept { return reactor_; }
  R& operator*() const noexcept { return *reactor_; }
  explicit operator bool() const noexcept { return reactor_ != nullptr; }

 private:
  R* reactor_ = nullptr;
};

}  // namespace Orm
