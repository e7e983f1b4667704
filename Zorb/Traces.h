#pragma once

#include <iosfwd>
#include <vector>

#include "Platform/Dualog/Dualog.h"
#include "Zorb/TraceOption.h"

namespace Zorb {

/// Switches text traces on as long as it exists, and writes their lines to a stream.
class Traces final : public Dualog::Sink {
 public:
  Traces(const std::vector<TraceOption>& options, std::ostream& out);
  ~Traces();
  Traces(const Traces&) = delete;
  Traces& operator=(const Traces&) = delete;

  void line(const Dualog::Line& line) override;

 private:
  std::ostream& out_;
  Dualog::Sink* sinkBefore_;
  std::vector<TraceOption> levelsBefore_;
};

}  // namespace Zorb
