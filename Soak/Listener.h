#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Fabric/Simulation.h"
#include "Platform/Dualog/Dualog.h"
#include "Platform/StructuredLog/StructuredLog.h"
#include "Soak/Census.h"
#include "Soak/TraceForm.h"

namespace Soak {

/// Holds what a run says against what there is: each trace and message has a form that is known,
/// and names things that exist, or went in the same piece of work (Census).
///
/// Takes the place of the structured log's sink as long as it exists, and hands messages on.
/// Traces are heard when they are handed to it; a run that is not traced pays for messages alone,
/// of which there are few: they are held against what is there when they come.
class Listener final : public Dualog::Sink, public StructuredLog::Sink {
 public:
  /// The simulation has to stay.
  Listener(const Fabric::Simulation& simulation, bool traced);
  ~Listener();
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  void line(const Dualog::Line& line) override;
  void message(const StructuredLog::LogHandle& handle, std::string_view text) override;

  /// Before and after each patch, also one that is applied within another piece of work.
  void patchCame();
  /// Throws Broken when something was wrong in what was said.
  void check() const;
  /// A new piece of work begins.
  void begin();

 private:
  void hold(const std::vector<const TraceForm*>& forms, std::string_view text,
            std::string_view whole);

  StructuredLog::Sink* sinkBefore_;
  const bool traced_;
  Census census_;
  std::string buffer_;
  // What was heard first that is wrong; nothing may be thrown where it is said.
  std::string broken_;
  std::string of_;
};

}  // namespace Soak
