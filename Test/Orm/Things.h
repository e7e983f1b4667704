#pragma once

#include <string>
#include <vector>

#include "Platform/Orm/Collection.h"
#include "Test/Orm/Samples.h"

namespace OrmTest {

/// A collection of things whose names are numbered.
using Things = Orm::Collection<Orm::Ptr<Thing>, &Thing::name>;

inline Orm::String nameOf(int number) { return Orm::String("thing-" + std::to_string(number)); }

/// Inserts the first `count` things; none of them may be there.
inline void fill(Things& things, int count) {
  for (int number = 0; number != count; ++number) things.insert(Orm::make<Thing>(nameOf(number)));
}

/// The names in the order of a walk.
inline std::vector<std::string> walked(const Things& things) {
  std::vector<std::string> names;
  things.walk([&](const Thing& thing) { names.push_back(thing.name().str()); });
  return names;
}

}  // namespace OrmTest
