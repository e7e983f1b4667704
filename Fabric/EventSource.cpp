#include "Fabric/EventSource.h"

#include "Fabric/DocumentTime.h"

namespace Fabric {

namespace {
constexpr std::uint32_t kEventRank = 0;
static_assert(kEventRank < Orm::kOrdinaryRank);
}  // namespace

Orm::Due EventSource::nextDue() {
  if (next_ == events_.size()) return {};
  return {processTick(events_[next_].at), kEventRank, next_};
}

}  // namespace Fabric
