// A file of feature toggles, against another library's reading of it.

#include <nlohmann/json.hpp>
#include <string>

#include "Fabric/TextLocator.h"
#include "Fuzz/Property.h"
#include "Platform/Flipset/Flipset.h"

namespace {

using nlohmann::json;

constexpr const char* kFile = "toggles.json";
constexpr const char* kOther = "other.json";

/// Whether it has what a toggle file may not have, though the other library takes it: escapes,
/// names that are set twice, anything behind a NUL.
bool isOwnRefusal(std::string_view text, std::string_view complaint) {
  return text.find_first_of(std::string_view("\\\0", 2)) != std::string_view::npos ||
         complaint.find("set twice") != std::string_view::npos;
}

/// Whether the text is one object of booleans. Looked at as it is read: of a name that is there
/// twice, only the last value would be left.
bool isToggles(std::string_view text) {
  bool onlyToggles = true;
  const auto look = [&](int depth, json::parse_event_t event, const json& parsed) {
    const bool begins =
        event == json::parse_event_t::object_start || event == json::parse_event_t::array_start;
    onlyToggles = onlyToggles && !(begins && depth > 0) &&
                  !(event == json::parse_event_t::array_start) &&
                  !(event == json::parse_event_t::value && !(depth == 1 && parsed.is_boolean()));
    return true;
  };
  return !json::parse(text, look, false).is_discarded() && onlyToggles;
}

void requireSet(const json& toggles) {
  for (const auto& [name, on] : toggles.items()) {
    for (const bool byDefault : {false, true}) {
      Fuzz::require(Flipset::toggle(kFile, name, byDefault) == on.get<bool>(),
                    "a toggle is what the file says", name);
      Fuzz::require(Flipset::toggle(kOther, name, byDefault) == byDefault,
                    "another file's toggles are untouched", name);
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = Fuzz::textOf(data, size);
  Flipset::toggleDelAll();
  const json other = json::parse(text, nullptr, false);
  try {
    Flipset::textIs(kFile, text);
  } catch (const Flipset::ToggleError& error) {
    Fuzz::requirePlace(error.what(), kFile, text);
    Fuzz::require(!isToggles(text) || isOwnRefusal(text, error.what()), "toggles are read",
                  error.what());
    return 0;
  }
  if (Fabric::findUnreadable(text) != std::string_view::npos) return 0;
  Fuzz::require(isToggles(text), "what is read is an object of booleans", text);
  requireSet(other);
  const std::string written = other.dump();
  Flipset::toggleDelAll();
  Flipset::textIs(kFile, written);
  requireSet(other);
  return 0;
}
