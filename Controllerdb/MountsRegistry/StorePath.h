#pragma once

#include <vector>

#include "Platform/Fennix/Dir.h"

namespace Controller {

/// A path of the state store, taken apart once, for whoever looks it up again and again: a lookup
/// costs one hash search a component and neither hashes text nor allocates.
class StorePath {
 public:
  explicit StorePath(std::string_view path);

  /// As root.lookup(path).
  Orm::Ptr<Orm::Entity> lookup(const Fennix::Dir& root) const;

 private:
  std::vector<Orm::String> components_;
};

}  // namespace Controller
