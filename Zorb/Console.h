#pragma once

#include <iosfwd>

namespace Zorb {

/// Where the command writes, and what is known of it. The streams must outlive the command.
struct Console {
  std::ostream& out;     // what was asked for
  std::ostream& errors;  // diagnostics
  bool outIsTerminal = false;
  bool errorsIsTerminal = false;
  bool mayColour = true;  // NO_COLOR is not set

  bool coloursOut() const { return outIsTerminal && mayColour; }
};

/// Exit statuses.
inline constexpr int kSuccess = 0;
inline constexpr int kExpectationFailed = 1;
inline constexpr int kBadUsageOrInput = 2;
/// As a shell reports a process that an interrupt ended.
inline constexpr int kInterrupted = 130;

}  // namespace Zorb
