#pragma once

#include "Platform/Orm/Seconds.h"
#include "Platform/Orm/TimeSource.h"

namespace Fabric {

/// What the process clock reads at the start of a run, which is time 0 of the documents.
inline constexpr Orm::Seconds kProcessTimeAtStart = 1000.0;

/// A time of the process clock as documents show it: seconds since the start, rounded to
/// microseconds. kNever stays kNever.
inline Orm::Seconds documentTime(Orm::Seconds processTime) {
  const Orm::Tick tick = Orm::tickOf(processTime);
  return tick == Orm::kNeverTick ? Orm::kNever
                                 : Orm::secondsOf(tick - Orm::tickOf(kProcessTimeAtStart));
}

/// The process clock's tick at a time of the documents.
inline Orm::Tick processTick(Orm::Seconds documentTime) {
  return Orm::tickOf(kProcessTimeAtStart) + Orm::tickOf(documentTime);
}

}  // namespace Fabric
