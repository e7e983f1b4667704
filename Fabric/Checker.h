#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

#include "Fabric/Object.h"
#include "Fabric/Shape.h"
#include "Fabric/Value.h"

namespace Fabric {

/// What a text is for. At a start every setting counts, and null is the same as not written. In a
/// patch null removes, and settings that count only at start are errors.
enum class Purpose : std::uint8_t { start, patch };

/// Holds a tree against a shape and gives it back in its long forms: keys canonical, a service
/// status as an object, a filter as an object of booleans (`Object::replaces` when it was a list).
/// Throws InputError at the first thing that does not fit, naming what was expected.
class Checker {
 public:
  Checker(std::string_view file, Purpose purpose) : file_(file), purpose_(purpose) {}

  /// `label`: the key of the value, or what else messages are to call it.
  Value check(const Shape& shape, std::string_view label, const Value& value) const;

  /// One of an object's fields; throws, with what was probably meant, when there is none of that
  /// name or it only counts at start.
  const Field& field(const Shape& shape, const Object::Member& member) const;

  /// The canonical form of a key.
  Text key(Shape::Key kind, const Text& key, Mark mark) const;

  [[noreturn]] void fail(Mark mark, std::string_view text) const;

 private:
  Value checkWords(const Shape& shape, std::string_view label, const Value& value) const;
  Value checkSeconds(const Shape& shape, std::string_view label, const Value& value) const;
  Value checkWhole(const Shape& shape, std::string_view label, const Value& value) const;
  Value checkText(const Shape& shape, std::string_view label, const Value& value) const;
  Value checkObject(const Shape& shape, std::string_view label, const Value& value) const;
  Value checkServiceStatus(const Shape& shape, std::string_view label, const Value& value) const;
  Value checkMap(const Shape& shape, std::string_view label, const Value& value) const;
  Value checkFilter(const Shape& shape, std::string_view label, const Value& value) const;
  Text filterKey(const Shape& shape, std::string_view label, const Value& element) const;
  void addUnique(Object& object, const Text& key, Mark mark, Value value) const;
  void checkCharacters(std::string_view text, Mark mark) const;
  void checkComponents(std::string_view path, Mark mark) const;
  [[noreturn]] void failType(std::string_view label, const Value& value,
                             std::string_view expected) const;

  std::string file_;
  Purpose purpose_;
  /// The long forms of service statuses that are written as versions: a document has few different
  /// ones, many times.
  mutable std::unordered_map<double, Value> statuses_;
};

}  // namespace Fabric
