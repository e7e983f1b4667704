#pragma once

#include <cstdint>
#include <functional>
#include <type_traits>
#include <utility>

#include "Platform/Orm/Key.h"
#include "Platform/Orm/Ptr.h"

namespace Orm {

class Reactor;

/// Base of everything in the state store: counted, watched, told apart by its attributes.
///
/// A setter stores and tells every notifiee, in order of registration, before it returns.
/// Notifiees may come, go or be marked for deletion meanwhile: one that has gone is not told any
/// more, one that came is not told of this change. The entity itself may be let go while it
/// notifies; the notifiees that are left are told all the same, and then it goes.
///
/// Loop thread only (reference counts aside). A change costs one call per notifiee and allocates
/// nothing; without notifiees it costs one test. An entity takes 24 bytes over its data, and the
/// first notifiee none.
class Entity : public PtrInterface {
 public:
  /// Whether changes are told; switched on when the entity has been made (see make).
  bool hasNotificationActive() const { return notificationActive_; }
  void hasNotificationActiveIs(bool active) { notificationActive_ = active; }

  /// Registered reactors. O(number of registrations); for tests.
  std::uint32_t notifieeCount() const;
  /// What is wrong with the notifiees, null when nothing is: one that is gone (`isThere` says),
  /// null, there twice, or that watches something else. O(number of registrations); for checks.
  const char* notifieesFault(const std::function<bool(const Reactor*)>& isThere) const;

 protected:
  Entity() = default;
  ~Entity() override;

  /// A byte that is the derived entity's, in room that nothing else can use: of some entities there
  /// are millions.
  std::uint8_t ownByte_ = 0;

  bool hasNotifiees() const { return notifiees_ != 0; }
  /// This entity when letting go of a T before telling might take its last handle. Without
  /// notifiees nothing is told, and an entity that is being made has no handle yet.
  template <class T>
  const Entity* heldWhileTelling() const {
    return !std::is_trivially_destructible_v<T> && hasNotifiees() ? this : nullptr;
  }

  void notify(AttributeId attribute) const {
    if (notifiees_ != 0) tell(attribute, kNoKey);
  }
  template <class K>
  void notify(AttributeId attribute, const K& key) const {
    if (notifiees_ != 0) tell(attribute, Key(key));
  }

  /// The scalar setter: stores and tells unless the value is already there.
  template <class T, class V>
  void assign(T& stored, V&& value, AttributeId attribute) {
    static_assert(std::is_same_v<T, std::remove_cvref_t<V>>);
    if (stored == value) return;
    // What was stored is let go before anyone is told, and may have been what held this entity.
    const Ptr<Entity const> self(heldWhileTelling<T>());
    const bool told = hasNotifiees();
    {
      using std::swap;
      T old(std::forward<V>(value));
      swap(stored, old);
    }
    if (told) notify(attribute);
  }

 private:
  friend class Reactor;
  struct NotifieeList;
  class ListWalk;

  // notifiees_ is 0, the one Reactor, or a NotifieeList with its lowest bit set.
  static constexpr std::uintptr_t kList = 1;
  NotifieeList* list() const {
    return hasList() ? reinterpret_cast<NotifieeList*>(notifiees_ ^ kList) : nullptr;
  }
  bool hasList() const { return (notifiees_ & kList) != 0; }

  void tell(AttributeId attribute, const Key& key) const;
  void tellAll(AttributeId attribute, const Key& key) const;
  void notifieeIs(Reactor& reactor) const {
    if (notifiees_ == 0) {
      notifiees_ = reinterpret_cast<std::uintptr_t>(&reactor);
    } else {
      notifieeJoins(reactor);
    }
  }
  void notifieeDel(Reactor& reactor) const {
    if (!hasList()) {
      notifiees_ = 0;
    } else {
      notifieeLeaves(reactor);
    }
  }
  void notifieeJoins(Reactor& reactor) const;
  void notifieeLeaves(Reactor& reactor) const;
  void sweep() const;
  bool isNotifiee(const Reactor& reactor) const;

  bool notificationActive_ = false;
  mutable std::uintptr_t notifiees_ = 0;
};

static_assert(sizeof(Entity) == 24);

/// Makes an entity (or any counted object) and switches its notification on.
template <class T, class... Arguments>
Ptr<T> make(Arguments&&... arguments) {
  Ptr<T> made(new T(std::forward<Arguments>(arguments)...));
  made->hasNotificationActiveIs(true);
  return made;
}

}  // namespace Orm
