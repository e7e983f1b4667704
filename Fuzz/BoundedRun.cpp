#include "Fuzz/BoundedRun.h"

#include <algorithm>
#include <array>
#include <csetjmp>
#include <csignal>
#include <cstddef>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Fabric/JsonText.h"
#include "Fabric/SimulationRun.h"
#include "Fuzz/Property.h"
#include "Platform/Kobble/Kobble.h"
#include "Platform/Orm/ActivityManagerConfig.h"
#include "Platform/Orm/ActivityScope.h"
#include "Platform/Orm/Assert.h"
#include "Zorb/ReportJson.h"
#include "Zorb/ReportText.h"

namespace Fuzz {

namespace {

constexpr std::size_t kMostSwitches = 64;
constexpr std::size_t kMostEvents = 64;
constexpr std::size_t kMostAbandoned = 2'000;

/// The invariants that a document can break: configurations that contradict each other, and a type
/// that does not fit what stands at a path.
constexpr std::array<std::string_view, 5> kReachable = {
    "mre->ormType() == mountConfig->ormcType()",
    "mre->mountFlags() == mountConfig->mountFlags()",
    "!preSm || pe->serviceName() == preSm->publishEntry()->serviceName()",
    "prefixDir",
    "publishEntryDir && \"Publish path doesn't exist or its type is not Orm::Dir\"",
};

struct TooLong {};

/// A run with all that it writes to.
struct Run {
  explicit Run(Fabric::Document itsDocument)
      : document(std::move(itsDocument)), run(document, errors) {}

  Fabric::Document document;
  std::ostringstream events;
  std::ostringstream errors;
  Fabric::SimulationRun run;
};

/// Where an assertion leads to instead of an abort, which the fuzzer would take for a finding. Not
/// by an exception: what stands half done must be left as it is, for no destructor can mend it.
std::jmp_buf wayOut;
std::string brokenInvariant;
Orm::AssertionHandler report = nullptr;
std::size_t abandonedRuns = 0;

void leave(const char* text, const char* file, int line) {
  if (report) report(text, file, line);
  brokenInvariant = text;
  std::longjmp(wayOut, 1);
}

/// Ends the outermost scope, whose frame is gone, so that machines of the next run are reclaimed
/// when they go. What waited for that goes now; where it breaks an invariant on its way, it stays.
void closeScopes() {
  report = nullptr;
  Orm::assertionHandlerIs(&leave);
  // Stands for it: all that a scope holds is whether it stands within another.
  alignas(Orm::ActivityScope) std::byte place[sizeof(Orm::ActivityScope)] = {std::byte{0}};
  static_assert(sizeof place == sizeof(bool));
  setjmp(wayOut);
  while (Orm::ActivityScope::active()) {
    std::destroy_at(reinterpret_cast<Orm::ActivityScope*>(place));
  }
  Orm::assertionHandlerIs(nullptr);
}

void abandon(std::unique_ptr<Run> run) {
  // Never destroyed, at the process's end neither.
  static auto& abandoned = *new std::vector<std::unique_ptr<Run>>;
  closeScopes();
  Orm::ActivityManagerConfig::instanceIs(nullptr);
  abandoned.push_back(std::move(run));
  abandonedRuns = abandoned.size();
  if (abandonedRuns == kMostAbandoned) std::raise(SIGUSR1);
}

void requireLines(const std::string& events) {
  std::istringstream lines(events);
  for (std::string line; std::getline(lines, line);) {
    require(nlohmann::json::accept(line), "an event is a JSON text", line);
  }
}

/// May be fewer than before: what the process kept of an abandoned run goes with the next one.
void requireNothingLeft(std::size_t before) {
  if (Kobble::liveObjects() <= before) return;
  std::string types;
  for (const auto& type : Kobble::liveTypes()) {
    if (type.live != 0) types += type.name + ' ' + std::to_string(type.live) + '\n';
  }
  require(false, "nothing is alive after a run", types);
}

void readResults(const Run& run) {
  std::ostringstream state;
  {
    Fabric::JsonText json(state, Fabric::JsonText::Layout::indented);
    run.run.writeState(json);
  }
  require(nlohmann::json::accept(state.str()), "the state is a JSON text", state.str());
  const Fabric::Report results = run.run.report();
  std::ostringstream text;
  Zorb::ReportText(results, false).write(text);
  require(!text.str().empty(), "there is a report");
  std::ostringstream json;
  Zorb::writeReportJson(results, json);
  require(nlohmann::json::accept(json.str()), "the report is a JSON text", json.str());
}

void runToItsEnd(Run& run) {
  run.run.eventsIs(run.events);
  run.run.hooksIs({.onProgress = [](Orm::Seconds, std::size_t) { throw TooLong(); }});
  report = Orm::assertionHandlerIs(&leave);
  try {
    run.run.run();
  } catch (const TooLong&) {
    // As an interrupt ends it: what there is can be read all the same.
  }
  readResults(run);
  Orm::assertionHandlerIs(report);
}

/// False when an assertion has ended the run.
bool comesToItsEnd(Run& run) {
  if (setjmp(wayOut) != 0) return false;
  runToItsEnd(run);
  return true;
}

}  // namespace

void runBounded(const Fabric::Document& document) {
  if (document.start().block(Fabric::Block::switches).size() > kMostSwitches ||
      document.events().size() > kMostEvents) {
    return;
  }
  const std::size_t before = Kobble::liveObjects();
  auto run = std::make_unique<Run>(document);
  if (!comesToItsEnd(*run)) {
    require(std::find(kReachable.begin(), kReachable.end(), brokenInvariant) != kReachable.end(),
            "no document breaks this invariant", brokenInvariant);
    requireLines(run->events.str());
    require(run->errors.str().starts_with("assertion failed: " + brokenInvariant),
            "an assertion is told", run->errors.str());
    abandon(std::move(run));
    return;
  }
  requireLines(run->events.str());
  run.reset();
  requireNothingLeft(before);
}

}  // namespace Fuzz

/// Asked by the leak checker: frames that are gone held what nothing else holds.
extern "C" int __lsan_is_turned_off() { return Fuzz::abandonedRuns != 0 ? 1 : 0; }
