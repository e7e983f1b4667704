#pragma once

#include <string_view>

namespace Orm {

/// A cursor over text from which a value's string form is read, piece by piece. Once a piece was
/// not there the range has failed and every later read fails as well.
class CharRange {
 public:
  explicit CharRange(std::string_view text) : rest_(text) {}

  /// Passes over `literal`, which must come next.
  bool needString(std::string_view literal);
  /// Reads up to the next `delimiter`, which stays; the range fails when there is none.
  std::string_view readUntil(std::string_view delimiter);
  /// Reads up to the last `delimiter`, which stays; the range fails when there is none.
  std::string_view readUntilLast(std::string_view delimiter);

  bool failed() const { return failed_; }
  /// Nothing failed and nothing is left.
  bool consumed() const { return !failed_ && rest_.empty(); }
  std::string_view rest() const { return rest_; }

 private:
  std::string_view readTo(std::size_t at);

  std::string_view rest_;
  bool failed_ = false;
};

}  // namespace Orm
