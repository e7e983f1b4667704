#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <utility>

#include "Soak/Script.h"

namespace Soak {

/// Makes a script that fails smaller as long as it fails: takes events out, then whatever the
/// document and the patches that are left can do without.
///
/// Tries several hundred scripts, each a run; what is no document any more counts as not failing.
class Shrinker {
 public:
  /// Whether a document still fails in the same way.
  using Fails = std::function<bool(const std::string& text)>;

  explicit Shrinker(Fails fails) : fails_(std::move(fails)) {}

  /// `script` fails.
  Script shrunk(Script script);

  std::size_t tries() const { return tries_; }

 private:
  bool stillFails(const Script& script);
  bool shrinkEvents(Script& script);
  bool shrinkMembers(Script& script);

  Fails fails_;
  std::size_t tries_ = 0;
};

}  // namespace Soak
