#pragma once

#include <cstdint>
#include <utility>

#include "Platform/Orm/CollectionOwner.h"

namespace Controller {

/// Base of the entities that tell which versions were negotiated on which connections, from the
/// tables of peers and clients down to one service's result. It counts the changes of all of them,
/// so that who has looked a version up, which leads through one of each, may keep the answer as
/// long as changes() stays what it was. Costs one increment a change.
class NegotiationPart : public Orm::CollectionOwner {
 public:
  /// Grows before anything changes, in any of them.
  static std::uint64_t changes() { return changes_; }

 protected:
  // These stand before those of the bases, so that no setter of such an entity can forget to count.

  template <class T, class V>
  void assign(T& stored, V&& value, Orm::AttributeId attribute) {
    ++changes_;
    CollectionOwner::assign(stored, std::forward<V>(value), attribute);
  }
  template <class T, auto KeyOf>
  Orm::Ptr<T> memberIs(Orm::Collection<Orm::Ptr<T>, KeyOf>& collection, Orm::AttributeId attribute,
                       Orm::Ptr<T> member) {
    ++changes_;
    return CollectionOwner::memberIs(collection, attribute, std::move(member));
  }
  template <class T, auto KeyOf, class K>
  bool memberDel(Orm::Collection<Orm::Ptr<T>, KeyOf>& collection, Orm::AttributeId attribute,
                 const K& key) {
    ++changes_;
    return CollectionOwner::memberDel(collection, attribute, key);
  }
  template <class T, auto KeyOf>
  void memberDelAll(Orm::Collection<Orm::Ptr<T>, KeyOf>& collection, Orm::AttributeId attribute) {
    const Orm::Ptr<Orm::Entity const> self(this);
    collection.walk([&](T& member) { memberDel(collection, attribute, (member.*KeyOf)()); });
  }

 private:
  static inline constinit std::uint64_t changes_ = 0;
};

}  // namespace Controller
