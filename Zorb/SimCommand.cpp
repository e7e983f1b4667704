#include "Zorb/SimCommand.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <ostream>

#include "Fabric/JsonText.h"
#include "Fabric/Limits.h"
#include "Zorb/Interrupt.h"
#include "Zorb/Progress.h"
#include "Zorb/ReportJson.h"
#include "Zorb/ReportText.h"
#include "Zorb/Traces.h"
#include "Zorb/UsageError.h"

namespace Zorb {

namespace {

constexpr const char* kFooter =
    "The document (YAML or JSON) says what the controller is told: its settings, the switches and\n"
    "what they report, the services and what they want mounted, and events that change any of it\n"
    "at a time, or say what is expected then. The same document gives the same run every time.\n"
    "\n"
    "Examples:\n"
    "  zorb sim fabric.yaml                        the report\n"
    "  zorb sim fabric.yaml --until 30             the same, as things are after 30 seconds\n"
    "  zorb sim fabric.yaml --state - | jq .mounts what is mounted from each switch\n"
    "  zorb sim fabric.yaml --events - | grep failed\n"
    "  zorb sim fabric.yaml --quiet                only whether all expectations hold\n"
    "  zorb sim fabric.yaml --trace ControllerMountsRegistrySm=5\n"
    "\n"
    "Exit status:\n"
    "  0  the run went through and every expectation that was reached holds\n"
    "  1  an expectation does not hold; each is printed with its place in the document\n"
    "  2  bad usage, a document that cannot be read or is wrong, an output that cannot be written\n"
    "  130  interrupted; what had happened until then was reported\n"
    "An assertion of the controller that fails ends the process by SIGABRT.";

}  // namespace

SimCommand::SimCommand(CLI::App& app, const Console& console) : console_(console) {
  CLI::App& sim = *app.add_subcommand(
      "sim", "Run a fabric document in virtual time and report what came of it");
  sim.footer(kFooter);
  sim.add_option("FILE", file_, "The fabric document; \"-\": standard input")
      ->type_name("")
      ->required();
  sim.add_option("--until", until_,
                 "Where the run ends, in seconds of virtual time\n"
                 "(default: where the document says)")
      ->type_name("S");
  sim.add_option("--state", statePath_,
                 "Write the state document at the end of the run (JSON);\n"
                 "\"-\": to standard output, instead of the report")
      ->type_name("OUT");
  sim.add_option("--events", eventsPath_,
                 "Write what happens, one JSON object a line;\n"
                 "\"-\": to standard output, instead of the report")
      ->type_name("OUT");
  sim.add_option("--trace", traceTexts_,
                 "Write the text traces of a source, of levels 0 to LEVEL (9 at\n"
                 "most), to standard error, with the time of the process clock\n"
                 "(1000 s at the start); may be repeated")
      ->type_name("HANDLE=LEVEL")
      ->expected(1)
      ->take_all();
  sim.add_option("--format", format_, "How the report is written: text (default) or json")
      ->type_name("FORMAT");
  sim.add_flag("--quiet,-q", quiet_, "No report: only expectations that fail, on standard error");
}

bool SimCommand::documentOnStandardOutput() const {
  return statePath_ == "-" || eventsPath_ == "-";
}

void SimCommand::checkUsage() {
  if (format_ != "text" && format_ != "json") {
    throw UsageError("--format: there is no format \"" + format_ + "\", expected text or json");
  }
  if (!statePath_.empty() && statePath_ == eventsPath_) {
    throw UsageError("--state and --events both write " +
                     (statePath_ == "-" ? std::string("standard output") : statePath_));
  }
  traces_.clear();
  for (const std::string& text : traceTexts_) traces_.push_back(TraceOption::parse(text));
}

std::optional<double> SimCommand::parsedUntil() const {
  if (!until_) return std::nullopt;
  double seconds = 0;
  const char* const end = until_->data() + until_->size();
  const auto [rest, error] = std::from_chars(until_->data(), end, seconds);
  // Not a number compares false.
  if (error != std::errc() || rest != end || !(seconds >= 0 && seconds <= Fabric::kMaxSeconds)) {
    throw UsageError("--until: expected seconds from 0 to 1000000000");
  }
  return seconds;
}

void SimCommand::openOutputs() {
  if (!statePath_.empty()) state_.emplace("--state", statePath_, console_);
  if (!eventsPath_.empty()) events_.emplace("--events", eventsPath_, console_);
}

int SimCommand::run() {
  checkUsage();
  const std::optional<double> until = parsedUntil();
  const Fabric::Document document = Fabric::Document::load(file_);
  openOutputs();
  Fabric::SimulationRun run(document, console_.errors);
  if (until) run.simulation().untilIs(*until);
  if (events_) run.eventsIs(events_->stream());
  const bool stopped = runTo(run);
  if (events_) events_->close();
  if (state_) writeState(run);

  Fabric::Report report = run.report();
  report.interrupted = stopped;
  writeReport(report);
  if (stopped) return kInterrupted;
  return report.failedExpectations() == 0 ? kSuccess : kExpectationFailed;
}

bool SimCommand::runTo(Fabric::SimulationRun& run) {
  const Interrupt interrupt;
  const Traces traces(traces_, console_.errors);
  std::optional<Progress> progress;
  if (console_.errorsIsTerminal && traces_.empty()) {
    progress.emplace(console_.errors, run.simulation().until());
  }
  std::size_t steps = 0;
  run.hooksIs({.onProgress = [&](Orm::Seconds time, std::size_t mounts) {
    if (Interrupt::wished() || !console_.out) throw Stopped();
    steps += Fabric::Simulation::kProgressInterval;
    if (progress) progress->show(time, mounts, steps);
  }});
  try {
    run.run();
  } catch (const Stopped&) {
    return true;
  }
  return false;
}

void SimCommand::writeState(const Fabric::SimulationRun& run) {
  {
    Fabric::JsonText json(state_->stream(), Fabric::JsonText::Layout::indented);
    run.writeState(json);
  }
  state_->close();
}

void SimCommand::writeReport(const Fabric::Report& report) {
  const bool wanted = !quiet_ && !documentOnStandardOutput();
  if (wanted && format_ == "json") {
    writeReportJson(report, console_.out);
  } else if (wanted) {
    ReportText(report, console_.coloursOut()).write(console_.out);
  }
  if (!wanted || format_ == "json") writeFailures(report, console_.errors, "");
  console_.errors.flush();
  console_.out.flush();
  if (!console_.out) throw UsageError("cannot write standard output");
}

}  // namespace Zorb
