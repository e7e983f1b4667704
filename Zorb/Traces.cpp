#include "Zorb/Traces.h"

#include <ostream>

namespace Zorb {

Traces::Traces(const std::vector<TraceOption>& options, std::ostream& out)
    : out_(out), sinkBefore_(Dualog::sinkIs(this)) {
  for (const TraceOption& option : options) {
    levelsBefore_.push_back({option.handle, option.handle->level()});
    option.handle->levelIs(option.level);
  }
}

Traces::~Traces() {
  // Backwards, for a handle that was named twice.
  for (auto before = levelsBefore_.rbegin(); before != levelsBefore_.rend(); ++before) {
    before->handle->levelIs(before->level);
  }
  Dualog::sinkIs(sinkBefore_);
}

void Traces::line(const Dualog::Line& line) { out_ << Dualog::format(line) + '\n'; }

}  // namespace Zorb
