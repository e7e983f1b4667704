#include "Platform/Orm/Entity.h"

#include <algorithm>

#include "Platform/Orm/ActivityScope.h"
#include "Platform/Orm/Reactor.h"

namespace Orm {

/// More than one notifiee (or one that is left of several): reactors in order of registration,
/// with null where one has gone. The reactors stand behind the head, in the same block.
struct Entity::NotifieeList {
  std::uint32_t size;
  std::uint32_t capacity;
  std::uint32_t dead;
  std::uint32_t walks;

  Reactor** reactors() { return reinterpret_cast<Reactor**>(this + 1); }

  static std::size_t bytes(std::uint32_t capacity) {
    return sizeof(NotifieeList) + capacity * sizeof(Reactor*);
  }
  static NotifieeList* make(std::uint32_t capacity) {
    return ::new (Kobble::allocate(bytes(capacity))) NotifieeList{0, capacity, 0, 0};
  }
  static void free(NotifieeList* list) { Kobble::deallocate(list, bytes(list->capacity)); }
};

/// Keeps the entity and its list while they are walked; sweeps when the outermost walk ends.
class Entity::ListWalk {
 public:
  explicit ListWalk(const Entity& entity) : entity_(&entity) { ++entity.list()->walks; }
  ~ListWalk() {
    NotifieeList* const list = entity_->list();
    if (--list->walks == 0 && list->dead != 0) entity_->sweep();
  }
  ListWalk(const ListWalk&) = delete;
  ListWalk& operator=(const ListWalk&) = delete;

 private:
  Ptr<Entity const> entity_;
};

Entity::~Entity() {
  // Reactors hold the entity, so that none is registered any more.
  assertThat(notifiees_ == 0, "notifiees_ == 0");
}

std::uint32_t Entity::notifieeCount() const {
  if (notifiees_ == 0) return 0;
  NotifieeList* const many = list();
  return many ? many->size - many->dead : 1;
}

const char* Entity::notifieesFault(const std::function<bool(const Reactor*)>& isThere) const {
  if (notifiees_ == 0) return nullptr;
  NotifieeList* const many = list();
  if (!many) {
    const auto* const one = reinterpret_cast<const Reactor*>(notifiees_);
    if (!isThere(one)) return "a notifiee is gone";
    return one->notifier_.get() == this ? nullptr : "a notifiee watches something else";
  }
  std::uint32_t dead = 0;
  for (std::uint32_t at = 0; at != many->size; ++at) {
    const Reactor* const reactor = many->reactors()[at];
    if (!reactor) {
      ++dead;
    } else if (!isThere(reactor)) {
      return "a notifiee is gone";
    } else if (reactor->notifier_.get() != this) {
      return "a notifiee watches something else";
    } else if (reactor->place_ != at) {
      return "a notifiee is there twice or does not know its place";
    }
  }
  return dead == many->dead ? nullptr : "notifiees that have gone are not counted";
}

bool Entity::isNotifiee(const Reactor& reactor) const {
  NotifieeList* const many = list();
  if (!many) return notifiees_ == reinterpret_cast<std::uintptr_t>(&reactor);
  return reactor.place_ < many->size && many->reactors()[reactor.place_] == &reactor;
}

void Entity::tell(AttributeId attribute, const Key& key) const {
  if (!notificationActive_) return;
  if (hasList()) {
    tellAll(attribute, key);
    return;
  }
  const ActivityScope scope;
  // Nothing of the entity is touched after the call: it may go during it.
  Reactor& reactor = *reinterpret_cast<Reactor*>(notifiees_);
  if (reactor.flags_ == 0) reactor.onAttribute(attribute, key);
}

// Apart, because one notifiee is what most entities have, and the registers that a walk needs would
// be saved for it as well.
[[gnu::noinline]] void Entity::tellAll(AttributeId attribute, const Key& key) const {
  const ActivityScope scope;
  const ListWalk walk(*this);
  for (std::uint32_t at = 0, end = list()->size; at != end; ++at) {
    Reactor* const reactor = list()->reactors()[at];
    if (reactor && reactor->flags_ == 0) reactor->onAttribute(attribute, key);
  }
}

void Entity::notifieeJoins(Reactor& reactor) const {
  NotifieeList* many = list();
  if (!many) {
    auto* const first = reinterpret_cast<Reactor*>(notifiees_);
    many = NotifieeList::make(4);
    first->place_ = many->size;
    many->reactors()[many->size++] = first;
  } else if (many->size == many->capacity) {
    NotifieeList* const larger = NotifieeList::make(many->capacity * 2);
    std::copy_n(many->reactors(), many->size, larger->reactors());
    larger->size = many->size;
    larger->dead = many->dead;
    larger->walks = many->walks;
    NotifieeList::free(many);
    many = larger;
  }
  notifiees_ = reinterpret_cast<std::uintptr_t>(many) | kList;
  reactor.place_ = many->size;
  many->reactors()[many->size++] = &reactor;
}

void Entity::notifieeLeaves(Reactor& reactor) const {
  NotifieeList* const many = list();
  many->reactors()[reactor.place_] = nullptr;
  ++many->dead;
  // Sweeping only when half are dead keeps the cost of each removal constant.
  if (many->walks == 0 && many->dead * 2 >= many->size) sweep();
}

void Entity::sweep() const {
  NotifieeList* const many = list();
  if (many->dead == many->size) {
    NotifieeList::free(many);
    notifiees_ = 0;
    return;
  }
  Reactor** const reactors = many->reactors();
  std::uint32_t to = 0;
  for (std::uint32_t at = 0; at != many->size; ++at) {
    if (!reactors[at]) continue;
    reactors[at]->place_ = to;
    reactors[to++] = reactors[at];
  }
  many->size = to;
  many->dead = 0;
}

}  // namespace Orm
