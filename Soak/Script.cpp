#include "Soak/Script.h"

#include "Fabric/JsonText.h"
#include "Fabric/Object.h"

namespace Soak {

using Fabric::Object;
using Fabric::Value;

namespace {

constexpr std::string_view kEvents = "events";

void appendBlock(std::string& out, const Object& block) {
  std::string_view separator = "{\n    ";
  for (const Object::Member& member : block) {
    out += separator;
    Fabric::appendJsonString(out, *member.key);
    out += ": ";
    out += toJson(member.value);
    separator = ",\n    ";
  }
  out += block.empty() ? "{}" : "\n  }";
}

}  // namespace

Script Script::of(const Value& document) {
  Script script;
  Object start;
  for (const Object::Member& member : document.object()) {
    if (*member.key != kEvents) {
      start.set(*member.key, member.value);
    } else if (member.value.isArray()) {
      script.events = member.value.array();
    }
  }
  script.start = Value(std::move(start));
  return script;
}

std::string Script::text() const {
  std::string out = "{";
  std::string_view separator = "\n  ";
  for (const Object::Member& member : start.object()) {
    out += separator;
    Fabric::appendJsonString(out, *member.key);
    out += ": ";
    if (member.value.isObject()) {
      appendBlock(out, member.value.object());
    } else {
      out += toJson(member.value);
    }
    separator = ",\n  ";
  }
  out += separator;
  out += "\"events\": [";
  separator = "\n    ";
  for (const Value& event : events) {
    out += separator;
    out += toJson(event);
    separator = ",\n    ";
  }
  return out + "\n  ]\n}\n";
}

}  // namespace Soak
