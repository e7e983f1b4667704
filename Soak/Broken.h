#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace Soak {

/// An invariant does not hold: what() says which, and of what.
class Broken : public std::runtime_error {
 public:
  explicit Broken(std::string invariant, const std::string& of = "")
      : std::runtime_error(invariant + of), invariant_(std::move(invariant)) {}

  /// The same text for each break of one invariant.
  const std::string& invariant() const { return invariant_; }

 private:
  std::string invariant_;
};

}  // namespace Soak
