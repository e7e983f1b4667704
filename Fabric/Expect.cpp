#include "Fabric/Expect.h"

#include <cmath>
#include <nlohmann/json.hpp>
#include <utility>

#include "Fabric/Expectation.h"
#include "Fabric/Object.h"
#include "Fabric/SystemIdText.h"

namespace Fabric {

namespace {

using Json = nlohmann::json;

constexpr std::string_view kNothing = "absent";
// Half a microsecond, and what doubles lose.
constexpr double kTolerance = 0.501e-6;

bool equalWhole(const Value& expected, const Json& actual);

bool equalNumbers(double expected, const Json& actual) {
  return actual.is_number() && std::abs(expected - actual.get<double>()) <= kTolerance;
}

bool equalArrays(const Value::Array& expected, const Json& actual) {
  if (!actual.is_array() || actual.size() != expected.size()) {
    return false;
  }
  for (std::size_t at = 0; at < expected.size(); ++at) {
    if (!equalWhole(expected[at], actual[at])) {
      return false;
    }
  }
  return true;
}

bool equalObjects(const Object& expected, const Json& actual) {
  if (!actual.is_object() || actual.size() != expected.size()) {
    return false;
  }
  for (const Object::Member& member : expected) {
    const auto found = actual.find(*member.key);
    if (found == actual.end() || !equalWhole(member.value, *found)) {
      return false;
    }
  }
  return true;
}

bool equalWhole(const Value& expected, const Json& actual) {
  switch (expected.kind()) {
    case Value::Kind::null:
      return actual.is_null();
    case Value::Kind::boolean:
      return actual.is_boolean() && actual.get<bool>() == expected.boolean();
    case Value::Kind::number:
      return equalNumbers(expected.number(), actual);
    case Value::Kind::string:
      return actual.is_string() && actual.get_ref<const std::string&>() == expected.string();
    case Value::Kind::array:
      return equalArrays(expected.array(), actual);
    case Value::Kind::object:
      return equalObjects(expected.object(), actual);
  }
  return false;
}

bool isEmpty(const Value& value) {
  return (value.isString() && value.string().empty()) || (value.isArray() && value.array().empty());
}

class Comparison {
 public:
  explicit Comparison(const SwitchResolver& resolve) : resolve_(resolve) {}

  /// `actual` is null where the state document has nothing.
  void compare(StatePlace place, const std::string& path, const Value& expected,
               const Json* actual) {
    if (expected.isObject() && (actual == nullptr || actual->is_object())) {
      for (const Object::Member& member : expected.object()) {
        compare(placeBelow(place, *member.key),
                path.empty() ? *member.key : path + "." + *member.key, member.value,
                memberOf(actual, place, *member.key));
      }
      return;
    }
    const bool holds = actual == nullptr ? expected.isNull() || isEmpty(expected)
                                         : !expected.isNull() && equalWhole(expected, *actual);
    if (!holds) {
      failures_.push_back({path, expected.isNull() ? std::string(kNothing) : toJson(expected),
                           actual == nullptr ? std::string(kNothing) : actual->dump()});
    }
  }

  std::vector<ExpectFailure> take() { return std::move(failures_); }

 private:
  const Json* memberOf(const Json* object, StatePlace place, const std::string& key) const {
    if (object == nullptr) {
      return nullptr;
    }
    const std::optional<std::string> id =
        place == StatePlace::bySwitch ? switchId(key) : std::optional(key);
    const auto found = id ? object->find(*id) : object->end();
    return found == object->end() ? nullptr : &*found;
  }

  std::optional<std::string> switchId(const std::string& key) const {
    // The state document may still have what the document has no more.
    const std::optional<std::string> id = canonicalSystemId(key);
    return id ? id : resolve_(key);
  }

  const SwitchResolver& resolve_;
  std::vector<ExpectFailure> failures_;
};

}  // namespace

std::vector<ExpectFailure> failures(const Value& expect, const nlohmann::json& state,
                                    const SwitchResolver& resolve) {
  Comparison comparison(resolve);
  comparison.compare(StatePlace::root, "", expect, &state);
  return comparison.take();
}

}  // namespace Fabric
