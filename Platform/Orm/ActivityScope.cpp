#include "Platform/Orm/ActivityScope.h"

#include <vector>

namespace Orm {

namespace {

struct Zombie {
  const void* object;
  void (*destroy)(const void*);
};

// Kept between scopes, so that letting go of an object does not allocate in the long run.
constinit std::vector<Zombie> zombieList;

}  // namespace

void ActivityScope::reclaimLater(const void* object, Destroy destroy) {
  zombieList.push_back({object, destroy});
  ++zombies_;
}

void ActivityScope::reclaim() {
  // What a destructor lets go of joins the list and is taken in the same sweep.
  while (!zombieList.empty()) {
    const Zombie zombie = zombieList.back();
    zombieList.pop_back();
    --zombies_;
    zombie.destroy(zombie.object);
  }
}

}  // namespace Orm
