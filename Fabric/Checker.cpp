#include "Fabric/Checker.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

#include "Fabric/InputError.h"
#include "Fabric/Limits.h"
#include "Fabric/Quote.h"
#include "Fabric/SystemIdText.h"

namespace Fabric {

namespace {

constexpr std::string_view kObjectForNull = "an object; {} is one that leaves everything out";

std::string orWords(std::string_view expected, std::span<const std::string_view> words) {
  std::string text(expected);
  for (const std::string_view word : words) {
    text += " or ";
    text += word;
  }
  return text;
}

/// What was checked, or the value as it was written if that is the same, so that trees which need
/// no long forms are not kept twice.
Value sharedIfSame(const Value& written, Object checked) {
  const auto isSame = [](const Object::Member& left, const Object::Member& right) {
    return left.key == right.key && left.value.isSameAs(right.value);
  };
  const Object& object = written.object();
  if (std::equal(object.begin(), object.end(), checked.begin(), checked.end(), isSame)) {
    return written;
  }
  return Value(std::move(checked), written.mark());
}

std::string numberText(double number) { return toJson(Value(number)); }

/// A version as text, when it is one: decimal digits without leading zeros, 32 bits.
bool isVersion(std::string_view text) {
  constexpr std::string_view kMost = "4294967295";
  if (text.empty() || text.find_first_not_of("0123456789") != std::string_view::npos ||
      (text.size() > 1 && text.front() == '0')) {
    return false;
  }
  return text.size() < kMost.size() || (text.size() == kMost.size() && text <= kMost);
}

std::size_t countComponents(std::string_view path) {
  std::size_t count = 0;
  bool inside = false;
  for (const char c : path) {
    count += c != '/' && !inside ? 1 : 0;
    inside = c != '/';
  }
  return count;
}

/// With "/" in front of each component and nowhere else.
std::string canonicalPath(std::string_view path) {
  std::string canonical;
  for (std::size_t at = 0; at < path.size(); ++at) {
    if (path[at] != '/' && (at == 0 || path[at - 1] == '/')) {
      canonical += '/';
    }
    if (path[at] != '/') {
      canonical += path[at];
    }
  }
  return canonical;
}

}  // namespace

void Checker::fail(Mark mark, std::string_view text) const { throw InputError(file_, mark, text); }

void Checker::failType(std::string_view label, const Value& value,
                       std::string_view expected) const {
  fail(value.mark(),
       quote(label) + " is " + describe(value) + ", expected " + std::string(expected));
}

Value Checker::check(const Shape& shape, std::string_view label, const Value& value) const {
  if (value.isNull() && purpose_ == Purpose::patch) {
    return value;
  }
  switch (shape.type) {
    case Shape::Type::any:
      return value;
    case Shape::Type::boolean:
      return value.isBoolean() ? value : checkWords(shape, label, value);
    case Shape::Type::seconds:
      return checkSeconds(shape, label, value);
    case Shape::Type::whole:
      return checkWhole(shape, label, value);
    case Shape::Type::word:
      return checkWords(shape, label, value);
    case Shape::Type::text:
    case Shape::Type::prose:
    case Shape::Type::path:
      return checkText(shape, label, value);
    case Shape::Type::object:
      return checkObject(shape, label, value);
    case Shape::Type::serviceStatus:
      return checkServiceStatus(shape, label, value);
    case Shape::Type::filter:
      return checkFilter(shape, label, value);
    case Shape::Type::map:
      return checkMap(shape, label, value);
  }
  return value;
}

Value Checker::checkWords(const Shape& shape, std::string_view label, const Value& value) const {
  if (value.isString() &&
      std::find(shape.words.begin(), shape.words.end(), value.string()) != shape.words.end()) {
    return value;
  }
  failType(label, value,
           shape.type == Shape::Type::word ? alternatives(shape.words)
                                           : orWords("true or false", shape.words));
}

Value Checker::checkSeconds(const Shape& shape, std::string_view label, const Value& value) const {
  if (value.isNumber() && value.number() >= 0 && value.number() <= kMaxSeconds) {
    return value;
  }
  if (value.isString() &&
      std::find(shape.words.begin(), shape.words.end(), value.string()) != shape.words.end()) {
    return value;
  }
  failType(label, value,
           orWords("seconds, a number from 0 to " + numberText(kMaxSeconds), shape.words));
}

Value Checker::checkWhole(const Shape& shape, std::string_view label, const Value& value) const {
  if (value.isNumber() && value.number() >= shape.least && value.number() <= shape.most &&
      std::floor(value.number()) == value.number()) {
    return value;
  }
  failType(label, value,
           "a whole number from " + numberText(shape.least) + " to " + numberText(shape.most));
}

Value Checker::checkText(const Shape& shape, std::string_view label, const Value& value) const {
  if (!value.isString()) {
    const bool quotesHelp = value.isNumber() || value.isBoolean();
    failType(label, value, quotesHelp ? "a string; write it in quotes" : "a string");
  }
  if (shape.type == Shape::Type::prose) {
    return value;
  }
  checkCharacters(value.string(), value.mark());
  if (!shape.mayBeEmpty && value.string().empty()) {
    fail(value.mark(), quote(label) + " is empty, expected a text");
  }
  if (shape.type == Shape::Type::path) {
    checkComponents(value.string(), value.mark());
  }
  return value;
}

void Checker::checkCharacters(std::string_view text, Mark mark) const {
  if (text.size() > kMaxTextLength) {
    fail(mark, quote(text) + " is too long, expected at most " + std::to_string(kMaxTextLength) +
                   " bytes");
  }
  const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; };
  if (std::any_of(text.begin(), text.end(), isControl)) {
    fail(mark, quote(text) + " has a control character, expected none");
  }
}

void Checker::checkComponents(std::string_view path, Mark mark) const {
  if (countComponents(path) > kMaxPathComponents) {
    fail(mark, quote(path) + " is too deep, expected at most " +
                   std::to_string(kMaxPathComponents) + " components");
  }
}

Text Checker::key(Shape::Key kind, const Text& key, Mark mark) const {
  if (kind == Shape::Key::any) {
    return key;
  }
  if (kind == Shape::Key::systemId) {
    const std::optional<std::string> id = canonicalSystemId(*key);
    if (!id) {
      fail(mark, quote(*key) + " is no switch's id, expected " + std::string(kSystemIdForm));
    }
    return *id == *key ? key : makeText(*id);
  }
  if (kind == Shape::Key::version) {
    if (!isVersion(*key)) {
      fail(mark, quote(*key) + " is no version, expected a whole number from 0 to " +
                     numberText(kMaxUnsigned));
    }
    return key;
  }
  if (key->empty()) {
    fail(mark, "an empty key, expected a name");
  }
  checkCharacters(*key, mark);
  if (kind == Shape::Key::path || kind == Shape::Key::entityPath) {
    checkComponents(*key, mark);
  }
  if (kind != Shape::Key::entityPath) {
    return key;
  }
  std::string path = canonicalPath(*key);
  if (path.empty()) {
    fail(mark, quote(*key) + " is the root itself, expected a path below it");
  }
  return path == *key ? key : makeText(path);
}

const Field& Checker::field(const Shape& shape, const Object::Member& member) const {
  for (const Field& field : shape.fields) {
    if (field.name == *member.key) {
      if (field.startOnly && purpose_ == Purpose::patch) {
        fail(member.mark, quote(*member.key) +
                              " in a patch, expected only what can change: it "
                              "counts at the start alone");
      }
      return field;
    }
  }
  std::vector<std::string_view> names;
  for (const Field& field : shape.fields) {
    names.push_back(field.name);
  }
  const std::string_view meant = closest(*member.key, names);
  fail(member.mark, "unknown key " + quote(*member.key) + " in " + std::string(shape.what) +
                        ", expected " + alternatives(names) +
                        (meant.empty() ? "" : "; did you mean " + quote(meant) + "?"));
}

Value Checker::checkObject(const Shape& shape, std::string_view label, const Value& value) const {
  if (!value.isObject()) {
    failType(label, value, value.isNull() ? kObjectForNull : "an object");
  }
  Object checked;
  for (const Object::Member& member : value.object()) {
    const Field& known = field(shape, member);
    if (member.value.isNull() && purpose_ == Purpose::start) {
      continue;
    }
    checked.set(member.key, member.mark, check(*known.shape, *member.key, member.value));
  }
  return sharedIfSame(value, std::move(checked));
}

Value Checker::checkServiceStatus(const Shape& shape, std::string_view label,
                                  const Value& value) const {
  if (value.isObject()) {
    return checkObject(shape, label, value);
  }
  if (!value.isNumber()) {
    failType(label, value, value.isNull() ? kObjectForNull : "a version or an object");
  }
  const auto known = statuses_.find(value.number());
  if (known != statuses_.end()) {
    return known->second;
  }
  Object status;
  for (const Field& member : shape.fields) {
    const bool isVersion = member.shape->type == Shape::Type::whole;
    status.set(makeText(member.name), value.mark(),
               isVersion ? checkWhole(*member.shape, label, value) : Value(true, value.mark()));
  }
  return statuses_.emplace(value.number(), Value(std::move(status), value.mark())).first->second;
}

Value Checker::checkMap(const Shape& shape, std::string_view label, const Value& value) const {
  if (!value.isObject()) {
    failType(label, value, value.isNull() ? kObjectForNull : "an object");
  }
  Object checked;
  for (const Object::Member& member : value.object()) {
    const Text canonical = key(shape.key, member.key, member.mark);
    addUnique(checked, canonical, member.mark, check(*shape.member, *member.key, member.value));
  }
  return sharedIfSame(value, std::move(checked));
}

Value Checker::checkFilter(const Shape& shape, std::string_view label, const Value& value) const {
  constexpr Shape kBoolean{.type = Shape::Type::boolean};
  Object checked;
  if (value.isArray()) {
    checked.replacesIs(true);
    for (const Value& element : value.array()) {
      addUnique(checked, filterKey(shape, label, element), element.mark(),
                Value(true, element.mark()));
    }
  } else if (value.isObject()) {
    for (const Object::Member& member : value.object()) {
      const Text canonical = key(shape.key, member.key, member.mark);
      addUnique(checked, canonical, member.mark, check(kBoolean, *member.key, member.value));
    }
    return sharedIfSame(value, std::move(checked));
  } else {
    failType(label, value, "a list or an object");
  }
  return Value(std::move(checked), value.mark());
}

Text Checker::filterKey(const Shape& shape, std::string_view label, const Value& element) const {
  if (element.isString()) {
    return key(shape.key, element.text(), element.mark());
  }
  if (shape.key == Shape::Key::version && element.isNumber()) {
    return key(shape.key, makeText(numberText(element.number())), element.mark());
  }
  fail(element.mark(),
       "a member of " + quote(label) + " is " + describe(element) + ", expected " +
           (shape.key == Shape::Key::version ? "a version" : "a switch's id in quotes"));
}

void Checker::addUnique(Object& object, const Text& key, Mark mark, Value value) const {
  if (object.find(*key) != nullptr) {
    fail(mark, quote(*key) + " is there twice, expected it once");
  }
  object.set(key, mark, std::move(value));
}

}  // namespace Fabric
