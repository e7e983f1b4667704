#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Fabric/Document.h"
#include "Fabric/SimulationRun.h"
#include "Zorb/Console.h"
#include "Zorb/OutputFile.h"
#include "Zorb/TraceOption.h"

namespace CLI {
class App;
}

namespace Zorb {

/// `zorb sim FILE`: runs a fabric document in virtual time and reports what came of it.
///
/// Standard output has the report, or with "-" the one document that was asked for and nothing
/// else. A reader of standard output that goes away, and an interrupt, end the run early.
class SimCommand {
 public:
  /// Adds the subcommand to `app`. Both must stay.
  SimCommand(CLI::App& app, const Console& console);

  /// Carries the parsed subcommand out and returns the exit status. Throws UsageError, InputError.
  int run();

 private:
  struct Stopped {};

  void checkUsage();
  std::optional<double> parsedUntil() const;
  void openOutputs();
  bool runTo(Fabric::SimulationRun& run);
  void writeState(const Fabric::SimulationRun& run);
  void writeReport(const Fabric::Report& report);
  bool documentOnStandardOutput() const;

  const Console& console_;

  // ---- as they were written

  std::string file_;
  std::optional<std::string> until_;
  std::string statePath_;
  std::string eventsPath_;
  std::vector<std::string> traceTexts_;
  std::string format_ = "text";
  bool quiet_ = false;

  std::vector<TraceOption> traces_;
  std::optional<OutputFile> state_;
  std::optional<OutputFile> events_;
};

}  // namespace Zorb
