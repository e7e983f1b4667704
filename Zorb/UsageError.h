#pragma once

#include <stdexcept>

namespace Zorb {

/// The command was called in a way that cannot be carried out: what() goes to standard error, and
/// the exit status is 2.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace Zorb
