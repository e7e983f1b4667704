#pragma once

#include <stdexcept>
#include <string>

namespace Orm {

/// The framework's one exception: a member of a collection was asked for again under its key, but
/// with another value for an attribute that only its construction can set. The member is unchanged.
class MutatorReinstantiatingError : public std::logic_error {
 public:
  explicit MutatorReinstantiatingError(std::string attribute)
      : std::logic_error("mutator reinstantiates a member with another value of its attribute " +
                         attribute),
        attribute_(std::move(attribute)) {}

  /// The first attribute, in the order of the constructor's arguments, that differs.
  const std::string& attribute() const { return attribute_; }

 private:
  std::string attribute_;
};

/// Raises the error for `attribute` unless the member's value is the one that is asked for.
template <class T>
void requireSame(const char* attribute, const T& present, const T& asked) {
  if (!(present == asked)) throw MutatorReinstantiatingError(attribute);
}

}  // namespace Orm
