#pragma once

#include <cstdint>

#include "Platform/Orm/TimeSource.h"

namespace Orm {

/// When something is due, in the total order of the loop: time, then rank, then sequence.
struct Due {
  Tick tick = kNeverTick;
  std::uint32_t rank = 0;  // of equal times the lower rank comes first
  std::uint64_t sequence = 0;

  bool never() const { return tick == kNeverTick; }
  bool before(const Due& other) const {
    if (tick != other.tick) return tick < other.tick;
    if (rank != other.rank) return rank < other.rank;
    return sequence < other.sequence;
  }
};

/// The rank of clocks and turns; what must come before them at equal times takes a lower one.
inline constexpr std::uint32_t kOrdinaryRank = 1;

/// Something that gives the activity loop work at certain times.
class ActivitySource {
 public:
  /// When its next piece of work is due; asked before each piece of work.
  virtual Due nextDue() = 0;
  /// Does the piece of work that nextDue told of.
  virtual void runNext() = 0;

 protected:
  ~ActivitySource() = default;
};

}  // namespace Orm
