#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Soak {

/// What a run that is under way, or has failed, has to say. Plain memory, so that it can stand
/// where another process reads it, however the run ends.
struct Note {
  static constexpr std::size_t kTextSize = 2048;

  std::uint64_t seed = 0;
  /// Events of the document, and pieces of work altogether, that the run has begun.
  std::uint64_t events = 0;
  std::uint64_t steps = 0;
  /// Seconds of the document.
  double time = 0;
  bool failed = false;
  /// The invariant, and all that there is to say of it. Cut off when too long.
  char invariant[kTextSize] = "";
  char text[kTextSize] = "";

  // ---- of all runs that were ended

  std::uint64_t runs = 0;
  std::uint64_t eventsOfAll = 0;
  std::uint64_t stepsOfAll = 0;
  /// Of all that came out of the runs; does not depend on their order.
  std::uint64_t digest = 0;

  void begin(std::uint64_t nextSeed);
  void end(std::uint64_t digestOfRun);
  void fail(std::string_view brokenInvariant, std::string_view everything);
};

}  // namespace Soak
