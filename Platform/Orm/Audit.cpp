#include "Platform/Orm/Audit.h"

#include <cstdlib>
#include <functional>
#include <mutex>
#include <new>
#include <typeinfo>
#include <unordered_map>
#include <unordered_set>

#include "Platform/Orm/Entity.h"
#include "Platform/Orm/Reactor.h"

namespace Orm::Audit {

namespace {

/// Takes memory from the system, so that whoever counts what the library allocates does not count
/// the books.
template <class T>
struct Unseen {
  using value_type = T;

  Unseen() = default;
  template <class U>
  Unseen(const Unseen<U>&) {}

  T* allocate(std::size_t count) {
    void* const place = std::malloc(count * sizeof(T));
    if (!place) throw std::bad_alloc();
    return static_cast<T*>(place);
  }
  void deallocate(T* place, std::size_t) { std::free(place); }

  template <class U>
  bool operator==(const Unseen<U>&) const {
    return true;
  }
};

template <class T>
using Set = std::unordered_set<T, std::hash<T>, std::equal_to<>, Unseen<T>>;
template <class K, class V>
using Map = std::unordered_map<K, V, std::hash<K>, std::equal_to<>, Unseen<std::pair<const K, V>>>;

struct Books {
  std::mutex mutex;
  Set<const PtrInterface*> objects;
  Map<const void*, const void*> handles;
  Set<const Reactor*> reactors;
};

/// Kept for the life of the process, as handles may be.
Books& books() {
  static Books& books = *new Books;
  return books;
}

}  // namespace

void noteObject(const PtrInterface* object) {
  const std::lock_guard lock(books().mutex);
  books().objects.insert(object);
}

void noteObjectGone(const PtrInterface* object) {
  const std::lock_guard lock(books().mutex);
  books().objects.erase(object);
}

void noteHandle(const void* handle, const void* object) {
  const std::lock_guard lock(books().mutex);
  if (object) {
    books().handles[handle] = object;
  } else {
    books().handles.erase(handle);
  }
}

void noteReactor(const Reactor* reactor) {
  const std::lock_guard lock(books().mutex);
  books().reactors.insert(reactor);
}

void noteReactorGone(const Reactor* reactor) {
  const std::lock_guard lock(books().mutex);
  books().reactors.erase(reactor);
}

std::string findings() {
  Books& all = books();
  const std::lock_guard lock(all.mutex);
  std::unordered_map<const void*, std::uint32_t> counts;
  for (const auto& [handle, object] : all.handles) ++counts[object];
  std::size_t found = 0;
  for (const PtrInterface* object : all.objects) {
    const auto count = counts.find(object);
    const std::uint32_t handles = count == counts.end() ? 0 : count->second;
    if (handles != object->refCount()) {
      return std::string("an object counts ") + std::to_string(object->refCount()) + " handles, " +
             std::to_string(handles) + " there are: " + typeid(*object).name();
    }
    if (handles != 0) ++found;
    const auto* const entity = dynamic_cast<const Entity*>(object);
    if (!entity) continue;
    const char* const fault = entity->notifieesFault(
        [&all](const Reactor* reactor) { return all.reactors.contains(reactor); });
    if (fault) return std::string(fault) + ": " + typeid(*entity).name();
  }
  if (found != counts.size()) return "a handle holds what is no object";
  for (const Reactor* reactor : all.reactors) {
    if (!reactor->isRegistered()) {
      return std::string("a reactor is not among the notifiees of what it watches: ") +
             typeid(*reactor).name();
    }
  }
  return {};
}

}  // namespace Orm::Audit
