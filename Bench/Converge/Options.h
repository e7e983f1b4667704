#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>

namespace Bench {

/// What one run of the converge workload is asked to do.
struct Options {
  enum class Traces : std::uint8_t { off, fast, text };

  std::uint32_t switches = 1000;
  std::uint32_t entries = 200;
  std::uint32_t services = 10;
  std::uint32_t groups = 2;
  /// Switches that leave and come back, one at a time, after convergence.
  std::uint32_t reconnects = 20;
  /// The initial-mount tracking runs along.
  bool initial = false;
  Traces traces = Traces::off;
  /// A filter is edited and the leadership changes after convergence; both are timed.
  bool events = false;
  /// After all that every switch leaves, and all of them come back; off: the run ends before.
  bool warm = true;
  /// The bytes of a converged mount by type of object go to standard error.
  bool objects = false;
};

/// Arguments that are no options of the program; `what` says which and what was expected.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The options that the arguments after the program's name ask for. Throws UsageError.
Options parseOptions(std::span<char*> arguments);

/// One paragraph: every option and what it does.
const char* usage();

}  // namespace Bench
