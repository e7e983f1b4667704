#pragma once

#include <limits>

namespace Orm {

/// A point in time of the process clock, or a span of time, in seconds.
using Seconds = double;

/// The wake-up time of a clock that shall not fire.
inline constexpr Seconds kNever = std::numeric_limits<Seconds>::infinity();

}  // namespace Orm
