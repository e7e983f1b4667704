#include "Fabric/Value.h"

#include <array>
#include <charconv>
#include <cmath>
#include <string>

#include "Fabric/JsonText.h"
#include "Fabric/Object.h"

namespace Fabric {

namespace {

// Up to here a double holds every whole number.
constexpr double kExactWholeNumbers = 9'007'199'254'740'992.0;

void writeNumber(double number, std::string& out) {
  std::array<char, 64> digits;
  const bool whole = std::floor(number) == number && std::abs(number) <= kExactWholeNumbers;
  char* const first = digits.data();
  char* const last = first + digits.size();
  const auto end = whole ? std::to_chars(first, last, static_cast<std::int64_t>(number))
                         : std::to_chars(first, last, number);
  out.append(first, end.ptr);
}

void write(const Value& value, std::string& out);

void writeArray(const Value::Array& array, std::string& out) {
  out += '[';
  for (const Value& element : array) {
    if (&element != &array.front()) {
      out += ',';
    }
    write(element, out);
  }
  out += ']';
}

void writeObject(const Object& object, std::string& out) {
  out += '{';
  bool first = true;
  for (const Object::Member& member : object) {
    if (!first) {
      out += ',';
    }
    first = false;
    appendJsonString(out, *member.key);
    out += ':';
    write(member.value, out);
  }
  out += '}';
}

void write(const Value& value, std::string& out) {
  switch (value.kind()) {
    case Value::Kind::null:
      out += "null";
      break;
    case Value::Kind::boolean:
      out += value.boolean() ? "true" : "false";
      break;
    case Value::Kind::number:
      writeNumber(value.number(), out);
      break;
    case Value::Kind::string:
      appendJsonString(out, value.string());
      break;
    case Value::Kind::array:
      writeArray(value.array(), out);
      break;
    case Value::Kind::object:
      writeObject(value.object(), out);
      break;
  }
}

bool equalObjects(const Object& left, const Object& right) {
  if (left.size() != right.size()) {
    return false;
  }
  for (const Object::Member& member : left) {
    const Value* other = right.find(*member.key);
    if (other == nullptr || !(member.value == *other)) {
      return false;
    }
  }
  return true;
}

}  // namespace

Value::Value(Array value, Mark mark)
    : mark_(mark), data_(std::make_shared<Array>(std::move(value))) {}

Value::Value(Object value, Mark mark)
    : mark_(mark), data_(std::make_shared<Object>(std::move(value))) {}

Value Value::nullAt(Mark mark) {
  Value value;
  value.mark_ = mark;
  return value;
}

Value::Array& Value::mutableArray() {
  auto& array = std::get<std::shared_ptr<Array>>(data_);
  if (array.use_count() > 1) {
    array = std::make_shared<Array>(*array);
  }
  return *array;
}

Object& Value::mutableObject() {
  auto& object = std::get<std::shared_ptr<Object>>(data_);
  if (object.use_count() > 1) {
    object = std::make_shared<Object>(*object);
  }
  return *object;
}

const Value* Value::find(std::string_view key) const {
  return isObject() ? object().find(key) : nullptr;
}

bool operator==(const Value& left, const Value& right) {
  if (left.kind() != right.kind()) {
    return false;
  }
  switch (left.kind()) {
    case Value::Kind::null:
      return true;
    case Value::Kind::boolean:
      return left.boolean() == right.boolean();
    case Value::Kind::number:
      return left.number() == right.number();
    case Value::Kind::string:
      return left.string() == right.string();
    case Value::Kind::array:
      return left.array() == right.array();
    case Value::Kind::object:
      return equalObjects(left.object(), right.object());
  }
  return false;
}

std::string toJson(const Value& value) {
  std::string out;
  write(value, out);
  return out;
}

}  // namespace Fabric
