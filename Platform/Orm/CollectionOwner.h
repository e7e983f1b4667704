#pragma once

#include "Platform/Orm/Collection.h"
#include "Platform/Orm/Entity.h"

namespace Orm {

/// An entity with keyed collections: what every `<attr>Is`, `<attr>Del` and `<attr>DelAll` of a
/// collection has in common. Each change is told with the attribute and the key.
class CollectionOwner : public Entity {
 protected:
  /// Switches the new member's notification on, puts it in and tells.
  template <class T, auto KeyOf>
  Ptr<T> memberIs(Collection<Ptr<T>, KeyOf>& collection, AttributeId attribute, Ptr<T> member) {
    member->hasNotificationActiveIs(true);
    collection.insert(member);
    notify(attribute, ((*member).*KeyOf)());
    return member;
  }

  /// Takes the member out and tells, only when there was one.
  template <class T, auto KeyOf, class K>
  bool memberDel(Collection<Ptr<T>, KeyOf>& collection, AttributeId attribute, const K& key) {
    return memberGone<KeyOf>(collection.take(key), attribute);
  }
  /// The same for who has just looked for the member.
  template <class T, auto KeyOf, class K>
  bool memberDel(Collection<Ptr<T>, KeyOf>& collection, AttributeId attribute, const K& key,
                 typename Collection<Ptr<T>, KeyOf>::Hint& hint) {
    return memberGone<KeyOf>(collection.take(key, hint), attribute);
  }

  /// Clears at once when nobody watches; otherwise each removal is told singly.
  template <class T, auto KeyOf>
  void memberDelAll(Collection<Ptr<T>, KeyOf>& collection, AttributeId attribute) {
    if (!hasNotifiees()) {
      collection.clear();
      return;
    }
    const Ptr<Entity const> self(this);
    collection.walk([&](T& member) { memberDel(collection, attribute, (member.*KeyOf)()); });
  }

  /// Inserts or overwrites, and tells unless the value was there already.
  template <class K, class V>
  bool valueIs(ValueCollection<K, V>& collection, AttributeId attribute, const K& key, V value) {
    if (!hasNotifiees()) return collection.set(key, std::move(value));
    const Ptr<Entity const> self(this);  // what is overwritten may be what held this entity
    const K kept(key);                   // the caller's may be the member's own
    if (!collection.set(kept, std::move(value))) return false;
    notify(attribute, kept);
    return true;
  }

  template <class K, class V>
  bool valueDel(ValueCollection<K, V>& collection, AttributeId attribute, const K& key) {
    if (!hasNotifiees()) return collection.erase(key);
    const Ptr<Entity const> self(this);  // what is removed may be what held this entity
    const K kept(key);                   // the caller's may be the member's own
    if (!collection.erase(kept)) return false;
    notify(attribute, kept);
    return true;
  }

  template <class K, class V>
  void valueDelAll(ValueCollection<K, V>& collection, AttributeId attribute) {
    if (!hasNotifiees()) {
      collection.clear();
      return;
    }
    const Ptr<Entity const> self(this);
    collection.walk([&](const K& key, const V&) { valueDel(collection, attribute, key); });
  }

 private:
  template <auto KeyOf, class T>
  bool memberGone(const Ptr<T>& gone, AttributeId attribute) {
    if (!gone) return false;
    notify(attribute, ((*gone).*KeyOf)());
    return true;
  }
};

}  // namespace Orm
