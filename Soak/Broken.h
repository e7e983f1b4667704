#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
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

/// Throws Broken, with `what` and the texts of `of`, unless it holds. Puts them together only then.
template <class... Texts>
void require(bool holds, std::string_view what, const Texts&... of) {
  if (holds) [[likely]]
    return;
  std::string text;
  ((text += ' ', text += std::string_view(of)), ...);
  throw Broken(std::string(what), text);
}

}  // namespace Soak
