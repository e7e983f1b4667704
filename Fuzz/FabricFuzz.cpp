// A fabric document: YAML or JSON, checked whole, run when it is accepted.

#include <optional>
#include <string>

#include "Fabric/Document.h"
#include "Fabric/InputError.h"
#include "Fabric/Reader.h"
#include "Fuzz/BoundedRun.h"
#include "Fuzz/Property.h"
#include "Fuzz/Trees.h"

namespace {

constexpr const char* kFile = "fabric.yaml";

/// What is wrong with the document in this text; nothing when it is accepted.
std::optional<std::string> complaintAbout(std::string_view name, std::string_view text,
                                          std::optional<Fabric::Document>& document) {
  try {
    document = Fabric::Document::parse(name, text);
  } catch (const Fabric::InputError& error) {
    Fuzz::requirePlace(error.what(), name, text);
    return error.text();
  }
  return std::nullopt;
}

std::optional<Fabric::Value> treeOf(std::string_view text) {
  try {
    return Fabric::read(kFile, text);
  } catch (const Fabric::InputError&) {
    return std::nullopt;
  }
}

/// A document means the same however it is written.
void requireSameAsJson(const Fabric::Value& tree, const std::optional<std::string>& complaint) {
  std::optional<Fabric::Document> document;
  const auto complaintAboutJson = complaintAbout("fabric.json", Fabric::toJson(tree), document);
  Fuzz::require(complaint == complaintAboutJson, "written as JSON the document is judged the same",
                complaint.value_or("accepted") + " / " + complaintAboutJson.value_or("accepted"));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = Fuzz::textOf(data, size);
  std::optional<Fabric::Document> document;
  const auto complaint = complaintAbout(kFile, text, document);
  const std::optional<Fabric::Value> tree = treeOf(text);
  Fuzz::require(tree.has_value() || complaint.has_value(), "what cannot be read is refused");
  if (tree && Fuzz::isSmall(*tree)) {
    Fuzz::requireRoundTrip(*tree);
    requireSameAsJson(*tree, complaint);
    if (document) Fuzz::runBounded(*document);
  }
  return 0;
}
