#pragma once

#include <string>
#include <vector>

#include "Fabric/Value.h"

namespace Soak {

/// A fabric document in the making, as a tree: what stands at the start, and the events. A value.
struct Script {
  /// The document without its events: `controller`, `entities` ... `until`.
  Fabric::Value start;
  /// One object each, with `at`, and `note`, `apply` or both.
  std::vector<Fabric::Value> events;

  /// Takes a document's tree apart.
  static Script of(const Fabric::Value& document);

  /// JSON: members of a block, and events, one a line.
  std::string text() const;
};

}  // namespace Soak
