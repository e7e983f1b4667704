// The string form of a mounter's name.

#include <string>

#include "Controllerdb/MountsRegistry/MounterName.h"
#include "Fuzz/Property.h"

namespace {

using Controller::MounterName;

/// Between the two names in the form, and at the end of it.
constexpr std::string_view kBetween = ", 'groupName': ";

void requireRoundTrip(std::string_view serviceName, std::string_view groupName) {
  const MounterName name{Orm::String(serviceName), Orm::String(groupName)};
  const std::string form = name.stringValue();
  const auto parsed = MounterName::parse(form);
  Fuzz::require(parsed.has_value(), "the string form is one", form);
  // Where a service's name has the separator itself, the form does not tell where it ends.
  const bool isPlain = (form.find(kBetween) == form.find(": ") + 2 + serviceName.size());
  Fuzz::require((*parsed == name) == isPlain, "a name is what was written of it", form);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = Fuzz::textOf(data, size);
  if (const auto name = MounterName::parse(text)) {
    Fuzz::require(name->stringValue() == text, "the string form is the text that was parsed", text);
  }
  const std::size_t between = text.find('\n');
  if (between != std::string_view::npos) {
    requireRoundTrip(text.substr(0, between), text.substr(between + 1));
  }
  return 0;
}
