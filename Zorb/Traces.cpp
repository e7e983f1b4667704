#include "Zorb/Traces.h"

#include <ostream>

namespace Zorb {

Traces::Traces(const std::vector<TraceOption>& options, std::ostream& out)
    : out_(out), sinkBefore_(Dualog::sinkIs(this)) {
  for (const TraceOption& option : options) {
    // The last one first, for a handle that is named twice.
    levelsBefore_.insert(levelsBefore_.begin(), {option.handle, option.handle->level()});
    option.handle->levelIs(option.level);
  }
}

Traces::~Traces() {
  for (const TraceOption& before : levelsBefore_) before.handle->levelIs(before.level);
  Dualog::sinkIs(sinkBefore_);
}

void Traces::line(const Dualog::Line& line) { out_ << Dualog::format(line) + '\n'; }

}  // namespace Zorb
