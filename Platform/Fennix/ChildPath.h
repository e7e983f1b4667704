#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "Platform/Orm/String.h"

namespace Fennix {

/// The path of a child, kept as its directory's path and its name: two handles of text that many
/// paths share, put together only when the path is read.
class ChildPath {
 public:
  ChildPath() = default;
  ChildPath(Orm::String directory, Orm::String name)
      : directory_(std::move(directory)), name_(std::move(name)) {}

  const Orm::String& directory() const { return directory_; }
  const Orm::String& name() const { return name_; }
  bool empty() const { return directory_.empty() && name_.empty(); }

  /// The whole path. Allocates.
  Orm::String text() const {
    return empty() ? Orm::String() : Orm::String({above(), "/", name_.view()});
  }
  void appendTo(std::string& out) const {
    if (empty()) return;
    out.append(above()).append("/").append(name_.view());
  }

  bool operator==(const ChildPath&) const = default;

 private:
  /// What stands before the "/": the root's path is one itself.
  std::string_view above() const {
    return directory_ == "/" ? std::string_view() : directory_.view();
  }

  Orm::String directory_;
  Orm::String name_;
};

}  // namespace Fennix
