#pragma once

#include <concepts>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "Platform/Orm/DenseTable.h"
#include "Platform/Orm/Entity.h"
#include "Platform/Orm/String.h"

namespace Orm {

/// The hash of a key of a collection: 32 bits that are mixed well, those of the upper half best.
inline std::uint32_t hashOf(const String& key) { return key.hash(); }
inline std::uint32_t hashOf(std::uint32_t key) { return (key ^ key >> 15) * 0x9e3779b1U; }
template <class K>
requires requires(const K& key) {
  { key.hash() } -> std::convertible_to<std::uint32_t>;
}
std::uint32_t hashOf(const K& key) { return key.hash(); }

namespace detail {

/// Members that know their key; a handle of 8 bytes is all that the table keeps. It does not mind
/// where it stands, but books of handles know each by its place.
template <class Handle, auto KeyOf>
struct MemberTraits {
  static constexpr bool kMovesAsBytes = !Audit::kOn;
  using Slot = Handle;
  using Key = std::remove_cvref_t<decltype(((*std::declval<const Handle&>()).*KeyOf)())>;
  static decltype(auto) key(const Slot& slot) { return ((*slot).*KeyOf)(); }
  static bool live(const Slot& slot) { return static_cast<bool>(slot); }
  static void kill(Slot& slot) { slot = Slot(); }
  static std::uint32_t hash(const Key& key) { return hashOf(key); }
};

template <class K, class V>
struct PairTraits {
  static constexpr bool kMovesAsBytes = false;
  using Key = K;
  struct Slot {
    K key{};
    V value{};
    bool live = false;
  };
  static Slot make(const K& key, V value) { return {key, std::move(value), true}; }
  static bool storable(const V&) { return true; }
  static const K& key(const Slot& slot) { return slot.key; }
  static bool live(const Slot& slot) { return slot.live; }
  static void kill(Slot& slot) { slot = Slot(); }
  static std::uint32_t hash(const K& key) { return hashOf(key); }
};

/// Handles are never null in a collection, so that a null one tells that the slot is not live.
template <class K, class T>
struct PairTraits<K, Ptr<T>> {
  static constexpr bool kMovesAsBytes = false;
  using Key = K;
  struct Slot {
    K key{};
    Ptr<T> value{};
  };
  static Slot make(const K& key, Ptr<T> value) { return {key, std::move(value)}; }
  static bool storable(const Ptr<T>& value) { return static_cast<bool>(value); }
  static const K& key(const Slot& slot) { return slot.key; }
  static bool live(const Slot& slot) { return static_cast<bool>(slot.value); }
  static void kill(Slot& slot) { slot = Slot(); }
  static std::uint32_t hash(const K& key) { return hashOf(key); }
};

}  // namespace detail

/// Members held by Handle (a Ptr, or an Owned) under a key that each member itself gives by the
/// member function KeyOf and never changes. Walks in order of insertion; see DenseTable.
template <class Handle, auto KeyOf>
class Collection {
  using Traits = detail::MemberTraits<Handle, KeyOf>;

 public:
  using Key = typename Traits::Key;
  using Member = std::remove_reference_t<decltype(*std::declval<const Handle&>())>;

  std::uint32_t size() const { return table_.size(); }
  bool empty() const { return table_.empty(); }

  /// The member under `key`, null when there is none.
  Member* find(const Key& key) const {
    const Handle* slot = table_.find(key);
    return slot ? slot->get() : nullptr;
  }
  /// The same for who looks for one member many times in a row and keeps the hint, which is 0 at
  /// first, beside the collection. Costs a compare when it is the member that was found last.
  using Hint = typename DenseTable<Traits>::Hint;
  Member* find(const Key& key, Hint& hint) const {
    const Handle* slot = table_.find(key, hint);
    return slot ? slot->get() : nullptr;
  }
  /// The member that the hint leads to, null when it has another key, or there is none.
  Member* findAt(Hint hint, const Key& key) const {
    const Handle* slot = table_.findAt(hint, key);
    return slot ? slot->get() : nullptr;
  }
  /// The member that most probably has the key, and the hint leads to it; null when there is
  /// probably none, or so few that they would have to be looked at. Looks at no member: for who is
  /// about to ask many collections for one key, and fetches what they will have to read.
  Member* probable(const Key& key, Hint& hint) const {
    const Handle* slot = table_.probable(key, hint);
    return slot ? slot->get() : nullptr;
  }
  bool has(const Key& key) const { return table_.find(key) != nullptr; }

  /// Puts in a member whose key is absent.
  Member& insert(Handle member) {
    assertThat(member, "member");
    return *table_.insert(std::move(member));
  }
  /// The same for a member that will be looked for next.
  Member& insert(Handle member, Hint& hint) {
    Member& inserted = insert(std::move(member));
    hint = table_.last();
    return inserted;
  }
  /// Makes room for that many members, for who knows how many will come.
  void reserve(std::uint32_t count) { table_.reserve(count); }
  /// Takes the member out and hands it over; null when there is none.
  Handle take(const Key& key) { return table_.take(key); }
  Handle take(const Key& key, Hint& hint) { return table_.take(key, hint); }
  void clear() { table_.clear(); }

  /// Calls visit(member) for each; members may come and go meanwhile. A counted member is kept
  /// alive while it is visited; one behind Owned by the walk's scope.
  template <class Visit>
  void walk(Visit&& visit) const {
    table_.walk([&visit](const Handle& slot) {
      if constexpr (std::is_copy_constructible_v<Handle>) {
        const Handle member(slot);
        visit(*member);
      } else {
        visit(*slot);
      }
    });
  }

  /// Plain iteration over the handles, for bodies that do not change the collection.
  auto begin() const { return table_.begin(); }
  auto end() const { return table_.end(); }

 private:
  DenseTable<Traits> table_;
};

/// Plain values under keys. Walks in order of insertion; see DenseTable.
template <class K, class V>
class ValueCollection {
  using Traits = detail::PairTraits<K, V>;

 public:
  using Key = K;

  std::uint32_t size() const { return table_.size(); }
  bool empty() const { return table_.empty(); }
  bool has(const K& key) const { return table_.find(key) != nullptr; }

  /// The value under `key`, null when there is none; valid until the collection changes.
  const V* find(const K& key) const {
    const auto* slot = table_.find(key);
    return slot ? &slot->value : nullptr;
  }
  /// The value under `key`, or V() when there is none.
  V value(const K& key) const {
    const V* found = find(key);
    return found ? *found : V();
  }
  /// The same for who asks for one key many times in a row, or for one after the other in the order
  /// in which they came, and keeps the hint, which is 0 at first, beside the collection.
  using Hint = typename DenseTable<Traits>::Hint;
  const V* find(const K& key, Hint& hint) const {
    const auto* slot = table_.find(key, hint);
    return slot ? &slot->value : nullptr;
  }
  const V* findAt(Hint hint, const K& key) const {
    const auto* slot = table_.findAt(hint, key);
    return slot ? &slot->value : nullptr;
  }
  V value(const K& key, Hint& hint) const {
    const V* found = find(key, hint);
    return found ? *found : V();
  }

  /// Makes room for that many values, for who knows how many will come.
  void reserve(std::uint32_t count) { table_.reserve(count); }
  /// Inserts or overwrites; false when the value was there already. A handle must not be null.
  bool set(const K& key, V value) {
    assertThat(Traits::storable(value), "storable( value )");
    if (auto* slot = table_.find(key)) {
      if (slot->value == value) return false;
      slot->value = std::move(value);
      return true;
    }
    table_.insert(Traits::make(key, std::move(value)));
    return true;
  }
  /// False when there was none.
  bool erase(const K& key) { return Traits::live(table_.take(key)); }
  void clear() { table_.clear(); }

  /// Calls visit(key, value) with copies for each; members may come and go meanwhile.
  template <class Visit>
  void walk(Visit&& visit) const {
    table_.walk([&visit](const auto& slot) {
      const K key(slot.key);
      const V value(slot.value);
      visit(key, value);
    });
  }

  /// Plain iteration over slots with `key` and `value`, for bodies that do not change it.
  auto begin() const { return table_.begin(); }
  auto end() const { return table_.end(); }

 private:
  DenseTable<Traits> table_;
};

}  // namespace Orm
