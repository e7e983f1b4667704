#pragma once

#include <string>
#include <string_view>

#include "Platform/Dualog/Dualog.h"

namespace Zorb {

/// One `--trace HANDLE=LEVEL`: the statements of levels 0 to LEVEL of that source.
struct TraceOption {
  Dualog::Handle* handle;
  int level;

  /// Throws UsageError, naming the handles or the levels that there are.
  static TraceOption parse(std::string_view text);
};

}  // namespace Zorb
