// JSON texts and numbers, against another library's reading of them.

#include <cmath>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "Fabric/InputError.h"
#include "Fabric/Reader.h"
#include "Fabric/Scalar.h"
#include "Fuzz/Property.h"
#include "Fuzz/Trees.h"

namespace {

using nlohmann::json;

constexpr const char* kFile = "text.json";

/// What only this project refuses: limits, keys that are there twice, numbers that are not finite.
bool isOwnRefusal(std::string_view complaint) {
  for (const char* own : {"nested too deeply", "duplicate key", "too many", "not a finite number",
                          "a byte that is not part of a text"}) {
    if (complaint.starts_with(own)) return true;
  }
  return false;
}

/// Whole numbers that the other library keeps as such, as the doubles that they are here.
json withDoubles(const json& tree) {
  if (tree.is_number()) return tree.get<double>();
  if (!tree.is_structured()) return tree;
  json result = tree;
  for (auto& element : result) element = withDoubles(element);
  return result;
}

void requireScalar(std::string_view text) {
  const Fabric::Value scalar = Fabric::plainScalar(text, {});
  if (!scalar.isNumber() || !std::isfinite(scalar.number())) return;
  const std::string written = Fabric::toJson(scalar);
  Fuzz::require(Fabric::plainScalar(written, {}) == scalar, "a number is what was written of it",
                written);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = Fuzz::textOf(data, size);
  requireScalar(text);
  std::optional<Fabric::Value> tree;
  try {
    tree = Fabric::read(kFile, text);
  } catch (const Fabric::InputError& error) {
    Fuzz::requirePlace(error.what(), kFile, text);
    Fuzz::require(isOwnRefusal(error.text()) || !json::accept(text), "JSON is read", error.what());
    return 0;
  }
  const json other = json::parse(text, nullptr, false);
  Fuzz::require(!other.is_discarded(), "what is read is JSON");
  Fuzz::require(Fuzz::jsonOf(*tree) == withDoubles(other), "what is read is what is written");
  Fuzz::requireRoundTrip(*tree);
  return 0;
}
