#include "Zorb/SoakCommand.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <iomanip>
#include <ostream>
#include <sstream>

#include "Fabric/Document.h"
#include "Fabric/Reader.h"
#include "Platform/Kobble/Kobble.h"
#include "Platform/Orm/String.h"
#include "Soak/Broken.h"
#include "Soak/Crew.h"
#include "Soak/Life.h"
#include "Soak/Profile.h"
#include "Soak/ScriptWriter.h"
#include "Soak/Shrinker.h"
#include "Zorb/Interrupt.h"
#include "Zorb/OutputFile.h"
#include "Zorb/UsageError.h"

namespace Zorb {

namespace {

/// Each so many runs are lived a second time with everything traced, and have to come out alike.
constexpr std::uint64_t kTracedEvery = 16;
constexpr std::uint64_t kMostRuns = 1'000'000'000;
constexpr std::size_t kMostEvents = 100'000;

std::string profilesText() {
  std::string text = "Profiles:\n";
  for (const Soak::Profile& profile : Soak::profiles()) {
    text += "  " + std::string(profile.name);
    text.append(16 - profile.name.size(), ' ');
    text += std::string(profile.about) + "\n";
  }
  return text;
}

constexpr const char* kFooter =
    "A run is made from its seed: a fabric of one switch to hundreds, and events, among them "
    "faults\n"
    "that no document can say, such as reports out of order and changes within a notification.\n"
    "After each piece of work the machines are compared with a scan of the inputs; at the end "
    "with\n"
    "a controller that is started afresh, and nothing may be left alive. Each 16th run is lived\n"
    "once more with everything traced: what is said has to name things that are there. The runs "
    "of\n"
    "a seed are the same everywhere; \"digest\" is that of all that came out of them.\n"
    "\n"
    "Examples:\n"
    "  zorb soak --runs 10000                      seeds 1 to 10000\n"
    "  zorb soak --profile leadership --seed 700   seeds 700 to 799\n"
    "  zorb soak --fabric fabric.yaml              random events after those of the document\n"
    "  zorb soak --seed 4711 --runs 1 --shrink small.json\n"
    "  zorb soak --fabric small.json --events 0 --runs 1\n"
    "\n"
    "Exit status: 0 when everything held, 1 when something did not, 2 for bad usage or input,\n"
    "130 when interrupted.";

}  // namespace

SoakCommand::SoakCommand(CLI::App& app, const Console& console) : console_(console) {
  CLI::App& soak = *app.add_subcommand(
      "soak", "Live through random events and faults; all invariants have to hold");
  soak.footer(profilesText() + "\n" + kFooter);
  soak.add_option("--seed", seed_, "The seed of the first run (default: 1)")->type_name("N");
  soak.add_option("--runs", runs_, "How many runs, each with the next seed (default: 100)")
      ->type_name("K");
  soak.add_option("--events", events_, "Random changes in a run, about (default: 40)")
      ->type_name("M");
  soak.add_option("--profile", profile_, "What the runs are about (default: mixed)")
      ->type_name("NAME");
  soak.add_option("--fabric", fabric_, "A fabric document instead of random ones")
      ->type_name("FILE");
  soak.add_option("--shrink", shrunkPath_,
                  "Make the document of a failing run as small as possible and\n"
                  "write it, faults included")
      ->type_name("OUT");
  soak.add_option("--save", savedPath_, "Write the document of the first run, and run it")
      ->type_name("OUT");
  soak.add_option("--jobs,-j", jobs_, "Processes at a time (default: one a processor)")
      ->type_name("N");
  soak.add_option("--hash-seed", hashSeed_, "Another order of all hash tables; changes nothing")
      ->type_name("N");
  soak.add_flag("--no-slabs", noSlabs_, "Each object from the system's allocator; changes nothing");
  soak.add_flag("--traces", traces_,
                "Everything traced, and what is said checked; changes nothing else");
}

void SoakCommand::checkUsage() const {
  if (!profile_.empty() && !Soak::profile(profile_)) {
    throw UsageError("--profile: there is no profile \"" + profile_ +
                     "\"; zorb soak --help lists them");
  }
  if (runs_ == 0 || runs_ > kMostRuns) throw UsageError("--runs: expected 1 to 1000000000");
  if (events_ > kMostEvents) throw UsageError("--events: expected 0 to 100000");
  if (events_ == 0 && fabric_.empty()) {
    throw UsageError("--events 0 does nothing without --fabric, expected at least 1");
  }
}

int SoakCommand::run() {
  checkUsage();
  if (!fabric_.empty()) {
    text_ = Fabric::readFile(fabric_);
    Fabric::Document::parse(fabric_, *text_);
  }
  if (!savedPath_.empty()) {
    OutputFile file("--save", savedPath_, console_);
    file.stream() << script(seed_).text();
    file.close();
  }
  if (hashSeed_ != 0) Orm::hashSeedIs(hashSeed_);
  if (noSlabs_) Kobble::slabsEnabledIs(false);

  using Clock = std::chrono::steady_clock;
  const Clock::time_point start = Clock::now();
  const Interrupt interrupt;
  const Soak::Note sum = soak();
  const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
  report(sum, seconds);
  if (sum.failed) {
    reportFailure(sum);
    if (!shrunkPath_.empty()) shrink(sum);
    return kExpectationFailed;
  }
  return Interrupt::wished() ? kInterrupted : kSuccess;
}

Soak::Script SoakCommand::script(std::uint64_t seed) const {
  const Soak::Profile* const profile =
      profile_.empty() ? &Soak::profiles().front() : Soak::profile(profile_);
  const Soak::Seed made{seed, profile, events_};
  return text_ ? Soak::scriptAround(made, fabric_, *text_) : Soak::randomScript(made);
}

void SoakCommand::live(std::uint64_t seed, Soak::Note& note) const {
  const std::string text = script(seed).text();
  const std::uint64_t digest = Soak::live(text, {.traces = traces_}, note);
  if (seed % kTracedEvery == 0) {
    Soak::Note unheard;
    if (Soak::live(text, {.traces = !traces_}, unheard) != digest) {
      throw Soak::Broken("a run is the same with traces on and off");
    }
  }
  note.end(digest);
}

Soak::Note SoakCommand::soak() const {
  const auto processors = static_cast<std::size_t>(std::max(1L, sysconf(_SC_NPROCESSORS_ONLN)));
  const std::size_t jobs = jobs_ != 0 ? jobs_ : processors;
  const Soak::Crew crew([this](std::uint64_t seed, Soak::Note& note) { live(seed, note); },
                        static_cast<std::size_t>(std::min<std::uint64_t>(jobs, runs_)));
  const Soak::Note sum = crew.run(seed_, runs_, [this](const Soak::Note& now) {
    if (console_.errorsIsTerminal) {
      console_.errors << "\r" << now.runs << " of " << runs_ << " runs, " << now.eventsOfAll
                      << " events " << std::flush;
    }
    return !Interrupt::wished();
  });
  if (console_.errorsIsTerminal) console_.errors << "\r\033[K" << std::flush;
  return sum;
}

void SoakCommand::report(const Soak::Note& sum, double seconds) const {
  std::ostringstream text;
  text << sum.runs << (sum.runs == 1 ? " run" : " runs") << ", seeds from " << seed_ << ", "
       << (profile_.empty() ? Soak::profiles().front().name : profile_) << ": " << sum.eventsOfAll
       << " events, " << sum.stepsOfAll << " pieces of work; digest " << std::hex
       << std::setfill('0') << std::setw(16) << sum.digest;
  console_.out << text.str() << "\n";
  std::ostringstream rate;
  rate << std::fixed << std::setprecision(1) << seconds << " s, "
       << static_cast<double>(sum.runs) / std::max(seconds, 1e-9) << " runs a second";
  console_.errors << "zorb: " << rate.str() << std::endl;
  if (!sum.failed) console_.out << "every invariant held\n";
  console_.out.flush();
}

void SoakCommand::reportFailure(const Soak::Note& sum) const {
  console_.errors << "zorb: seed " << sum.seed << ", event " << sum.events << ", at " << sum.time
                  << " s, does not hold: " << sum.text << "\n"
                  << "  repeat it with    " << command(sum.seed) << "\n"
                  << "  make it small with    " << command(sum.seed) << " --shrink small.json"
                  << std::endl;
}

std::string SoakCommand::command(std::uint64_t seed) const {
  std::string text = "zorb soak --runs 1 --seed " + std::to_string(seed);
  if (!profile_.empty()) text += " --profile " + profile_;
  text += " --events " + std::to_string(events_);
  if (!fabric_.empty()) text += " --fabric " + fabric_;
  if (traces_) text += " --traces";
  return text;
}

void SoakCommand::shrink(const Soak::Note& failed) const {
  const std::string invariant = failed.invariant;
  std::string text;
  // Traced, because more is seen so.
  const Soak::Crew crew(
      [&text](std::uint64_t, Soak::Note& note) { Soak::live(text, {.traces = true}, note); }, 1,
      20);
  Soak::Shrinker shrinker([&](const std::string& candidate) {
    if (Interrupt::wished()) return false;
    text = candidate;
    return crew.run(1, 1).invariant == invariant;
  });
  const Soak::Script small = shrinker.shrunk(script(failed.seed));
  OutputFile file("--shrink", shrunkPath_, console_);
  file.stream() << small.text();
  file.close();
  console_.errors << "zorb: tried " << shrinker.tries() << " smaller documents; " << shrunkPath_
                  << " still fails, with " << small.events.size() << " events\n"
                  << "  repeat it with    zorb soak --runs 1 --events 0 --traces --fabric "
                  << shrunkPath_ << std::endl;
}

}  // namespace Zorb
