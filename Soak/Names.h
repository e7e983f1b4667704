#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Fabric/Model.h"

namespace Soak {

/// What random changes are made of: names that are there, and names that may come. Few of each, so
/// that changes meet: several services name one path, what goes comes back.
///
/// A path has one type, one remote path and one target wherever it is named: entries of one path
/// that differ stop the process.
struct Names {
  struct Path {
    std::string path;
    std::string type;
    /// Flags of a mounted path, remote path of a published one.
    std::string more;
    std::string target;
  };

  std::vector<std::string> services;
  std::vector<std::string> groups;
  std::vector<std::string> generations;
  std::vector<std::string> attrlogs;
  std::vector<Path> mounts;
  std::vector<Path> publications;
  /// Their directories stand whenever a switch is connected: one that is missing then stops the
  /// process.
  std::vector<Path> directories;

  /// Those of random fabrics.
  static Names ofRandomFabrics();
  /// Those of a document, with one or two more of each where that is harmless.
  static Names of(const Fabric::Model& model);
};

}  // namespace Soak
