#pragma once

#include <cstdint>
#include <string_view>

#include "Platform/Orm/CollectionOwner.h"

namespace Fennix {

/// A directory of the state store: entities by name, directories among them.
///
/// Held by its parent's collection; the root by its maker. Its path starts with "/" and never
/// changes. In a path that is looked up or created below a directory a leading "/" and empty
/// components mean nothing. Loop thread only. A lookup costs one String and one hash search a
/// component; who looks the same directory up again and again keeps it as long as departures()
/// stays what it was.
class Dir : public Orm::CollectionOwner, private Kobble::Counted<Dir> {
 public:
  struct Attr {
    enum : Orm::AttributeId { entity };
  };
  static constexpr const char* kTypeName = "Orm::Dir";

  /// A root.
  Dir() : path_("/") {}
  Dir(const Dir& parent, const Orm::String& name);

  const Orm::String& path() const { return path_; }
  /// The path of a child of that name, whether there is one or not.
  Orm::String childPath(std::string_view name) const;

  using Entities = Orm::ValueCollection<Orm::String, Orm::Ptr<Orm::Entity>>;
  const Entities& entity() const { return entity_; }
  Orm::Ptr<Orm::Entity> entity(const Orm::String& name) const { return entity_.value(name); }
  /// The child when it is a T; one of another type counts as absent.
  template <class T>
  Orm::Ptr<T> entityAs(const Orm::String& name) const {
    return Orm::dynamicCast<T>(entity(name));
  }

  /// Puts an entity in under `name`, in place of what is there.
  void entityIs(const Orm::String& name, const Orm::Ptr<Orm::Entity>& entity);
  void entityDel(const Orm::String& name);
  void entityDelAll();

  /// The child of that name; a new one of the type (see TypeRegistry) when there is none.
  Orm::Ptr<Orm::Entity> createEntity(const Orm::String& type, const Orm::String& name);
  /// The child directory of that name, created when nothing is there; null when something else is.
  Orm::Ptr<Dir> createDir(const Orm::String& name);

  /// The entity at a path below this directory, itself for a path of no components; null when
  /// there is none.
  Orm::Ptr<Orm::Entity> lookup(std::string_view path) const;

  /// Grows before a directory leaves the one that it stands in, in any tree of the process: while
  /// it stays the same, each directory that was found below a root is still found there.
  static std::uint64_t departures() { return departures_; }

 private:
  /// Counts what is about to leave, when it is a directory.
  static void leaving(const Orm::Entity* entity);

  static inline constinit std::uint64_t departures_ = 0;

  Orm::String path_;
  Entities entity_;
};

/// Calls visit(component) for each component of a path, in order, empty ones left out, while it
/// returns true.
template <class Visit>
void eachComponent(std::string_view path, Visit&& visit) {
  while (!path.empty()) {
    const std::size_t slash = path.find('/');
    const std::string_view component = path.substr(0, slash);
    if (!component.empty() && !visit(component)) return;
    if (slash == std::string_view::npos) return;
    path.remove_prefix(slash + 1);
  }
}

}  // namespace Fennix

namespace Orm {
using Fennix::Dir;
}
