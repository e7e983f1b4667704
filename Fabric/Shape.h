#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace Fabric {

struct Shape;

/// One member that an object of a fixed set of members may have.
struct Field {
  std::string_view name;
  const Shape* shape;
  /// Counts only at start: an error in a patch.
  bool startOnly = false;
};

/// What a place of a document may hold. The tables of all shapes are constants (Shapes.h); a
/// Checker holds trees against them.
struct Shape {
  enum class Type : std::uint8_t {
    any,
    boolean,        ///< or one of `words`
    seconds,        ///< or one of `words`
    whole,          ///< a whole number from `least` to `most`
    word,           ///< one of `words`
    text,           ///< without control characters, kMaxTextLength at most
    prose,          ///< any text
    path,           ///< a text of kMaxPathComponents at most
    object,         ///< with `fields`
    serviceStatus,  ///< the same, or short for it a version
    filter,         ///< members by `key` to booleans, or short for it a list of those that are true
    map,            ///< members by `key`, each of the shape `member`
  };
  enum class Key : std::uint8_t {
    name,        ///< a text that is not empty
    path,        ///< a path that is not empty
    entityPath,  ///< the same; made to begin with "/" and to have no empty components
    systemId,    ///< made lower case
    version,     ///< a 32-bit number
    any,
  };

  Type type = Type::any;
  /// What messages call an object of this shape: "a switch".
  std::string_view what{};
  std::span<const Field> fields{};
  const Shape* member = nullptr;
  Key key = Key::any;
  std::span<const std::string_view> words{};
  double least = 0;
  double most = 0;
  bool mayBeEmpty = true;
};

}  // namespace Fabric
