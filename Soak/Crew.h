#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>

#include "Soak/Note.h"

namespace Soak {

/// Does runs in processes of their own, so that one that crashes, is stopped by an assertion or
/// never ends is told of and costs nothing else.
class Crew {
 public:
  /// Does the run of a seed in the process that calls it, with a note that others see. Throws
  /// Broken or another exception when it fails.
  using Work = std::function<void(std::uint64_t seed, Note& note)>;
  /// Is called a few times a second; the answer false ends all.
  using Watch = std::function<bool(const Note& sum)>;

  /// `processes`: at a time; `seconds`: that a run may take.
  explicit Crew(Work work, std::size_t processes = 1, unsigned seconds = 120)
      : work_(std::move(work)), processes_(processes), seconds_(seconds) {}

  /// Does `runs` runs, of seeds from `first` on, until one fails. Returns the sum of all, and as
  /// failed the one of the smallest seed.
  Note run(std::uint64_t first, std::uint64_t runs, const Watch& watch = {}) const;

 private:
  struct Shared;

  [[noreturn]] void workOff(Shared& shared, Note& note) const;

  Work work_;
  std::size_t processes_;
  unsigned seconds_;
};

}  // namespace Soak
