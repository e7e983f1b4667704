// The text form of a switch's id.

#include <algorithm>
#include <string>

#include "Fabric/SystemIdText.h"
#include "Fuzz/Property.h"
#include "Platform/Entities/SystemId/SystemId.h"

namespace {

bool isDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

/// The rule itself: six groups of two digits with ":" between them.
bool isId(std::string_view text) {
  if (text.size() != 17) return false;
  for (std::size_t at = 0; at != text.size(); ++at) {
    if (at % 3 == 2 ? text[at] != ':' : !isDigit(text[at])) return false;
  }
  return true;
}

std::string lowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](char c) { return c >= 'A' && c <= 'F' ? static_cast<char>(c + 32) : c; });
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = Fuzz::textOf(data, size);
  const auto id = Controller::SystemId::parse(text);
  const auto number = Fabric::systemIdNumber(text);
  Fuzz::require(id.has_value() == isId(text), "ids and nothing else are ids", text);
  Fuzz::require(id.has_value() == number.has_value(), "a document's ids are the controller's");
  if (!id) return 0;
  const std::string form(id->stringValue().view());
  Fuzz::require(form == lowerCase(std::string(text)), "the text form is the text in lower case");
  Fuzz::require(Controller::SystemId::parse(form) == id, "an id is what was written of it");
  Fuzz::require(id->address().value() == *number && Fabric::systemIdText(*number) == form,
                "a document's ids have the controller's text form");
  return 0;
}
