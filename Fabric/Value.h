#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <variant>
#include <vector>

#include "Fabric/Mark.h"
#include "Fabric/Text.h"

namespace Fabric {

class Object;

/// A node of a document's tree with the place where it was written.
///
/// A value. Copies share what is below them until one of them is changed (`mutableObject`,
/// `mutableArray`), so that a copy costs a reference count and a tree from before a change costs
/// only what the change touched. All copies belong to one thread.
/// The depth of what a reader returns is bounded (kMaxDepth), so walks may recurse.
class Value {
 public:
  enum class Kind : std::uint8_t { null, boolean, number, string, array, object };
  using Array = std::vector<Value>;

  Value() = default;
  explicit Value(bool value, Mark mark = {}) : mark_(mark), data_(value) {}
  explicit Value(double value, Mark mark = {}) : mark_(mark), data_(value) {}
  explicit Value(Text value, Mark mark = {}) : mark_(mark), data_(std::move(value)) {}
  explicit Value(std::string_view value, Mark mark = {}) : Value(makeText(value), mark) {}
  explicit Value(const char* value, Mark mark = {}) : Value(makeText(value), mark) {}
  explicit Value(Array value, Mark mark = {});
  explicit Value(Object value, Mark mark = {});
  static Value nullAt(Mark mark);

  Kind kind() const { return static_cast<Kind>(data_.index()); }
  bool isNull() const { return kind() == Kind::null; }
  bool isBoolean() const { return kind() == Kind::boolean; }
  bool isNumber() const { return kind() == Kind::number; }
  bool isString() const { return kind() == Kind::string; }
  bool isArray() const { return kind() == Kind::array; }
  bool isObject() const { return kind() == Kind::object; }

  /// These want the value to be of the kind that they name (else std::bad_variant_access).
  bool boolean() const { return std::get<bool>(data_); }
  double number() const { return std::get<double>(data_); }
  const Text& text() const { return std::get<Text>(data_); }
  const std::string& string() const { return *text(); }
  const Array& array() const { return *std::get<std::shared_ptr<Array>>(data_); }
  const Object& object() const { return *std::get<std::shared_ptr<Object>>(data_); }

  /// The same to change it: what is shared with another value is copied first, one level deep.
  Array& mutableArray();
  Object& mutableObject();

  /// The object's member of that name; null when there is none, or this is no object.
  const Value* find(std::string_view key) const;

  /// Whether both are the same scalar or share all that they hold. O(1); equal trees need not.
  bool isSameAs(const Value& other) const { return data_ == other.data_; }

  Mark mark() const { return mark_; }
  void markIs(Mark mark) { mark_ = mark; }

  /// Equal trees; the order of an object's members and the places do not count.
  friend bool operator==(const Value& left, const Value& right);

 private:
  Mark mark_;
  std::variant<std::monostate, bool, double, Text, std::shared_ptr<Array>, std::shared_ptr<Object>>
      data_;
};

/// The tree as JSON on one line, members in their order; whole numbers without a fraction.
std::string toJson(const Value& value);

}  // namespace Fabric
