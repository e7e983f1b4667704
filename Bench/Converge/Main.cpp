// converge: a whole fleet of switches comes up, through all machines of the library.
//
// Prints one line of JSON. Exit status 0 when the outcome is right, 1 when not, 2 for bad usage.

#include <algorithm>
#include <array>
#include <cstdio>
#include <iostream>
#include <vector>

#include "Bench/Converge/Process.h"
#include "Bench/Converge/World.h"
#include "Platform/Kobble/Kobble.h"

namespace {

using Bench::Options;
using Bench::Outcome;
using Bench::statusBytes;
using Bench::wallSeconds;
using Bench::World;

/// Seconds of each phase, and what it left.
struct Run {
  double configure = 0;
  double admit = 0;
  double move = 0;
  double cpu = 0;
  double unmount = 0;
  double warm = 0;
  double filterEdit = 0;
  double leaderChange = 0;
  std::vector<double> reconnects;  // sorted
  double rssStart = 0;
  double rssConfigured = 0;
  double rssConverged = 0;
  double rssPeak = 0;
  std::uint32_t initialComplete = 0;
  std::uint32_t libraryGroups = 0;
  Outcome done;
  Outcome reconnected;
  Outcome edited;
  Outcome empty;
  Outcome warmed;
};

template <class Phase>
double timed(Phase&& phase) {
  const double begin = wallSeconds();
  phase();
  return wallSeconds() - begin;
}

void admitAll(World& world, const Options& options) {
  for (std::uint32_t sw = 0; sw != options.switches; ++sw) world.connect(sw);
  world.connected();
  for (std::uint32_t sw = 0; sw != options.switches; ++sw) world.announce(sw);
}

void moveAll(World& world, const Options& options) {
  for (int step = 0; step != 2; ++step) {
    for (std::uint32_t sw = 0; sw != options.switches; ++sw) world.progress(sw);
  }
  world.converged();
}

void disconnectAll(World& world, const Options& options) {
  for (std::uint32_t sw = 0; sw != options.switches; ++sw) world.disconnect(sw);
}

void reconnect(World& world, std::uint32_t sw) {
  world.disconnect(sw);
  world.connect(sw);
  world.announce(sw);
  world.progress(sw);
  world.progress(sw);
}

/// Systems leave a filter and come back; a leader comes under whom nothing is configured, and goes.
void events(World& world, const Options& options, Run& run) {
  run.filterEdit = timed([&] {
    world.filterEdit(false);
    world.filterEdit(true);
    moveAll(world, options);
  });
  run.leaderChange = timed([&] {
    world.leaderIs(false);
    world.leaderIs(true);
    moveAll(world, options);
  });
}

void printObjects(double mounts) {
  for (const auto& type : Kobble::liveTypes()) {
    std::fprintf(stderr, "%-60s %10zu %8.3f a mount\n", type.name.c_str(), type.live,
                 static_cast<double>(type.live) / mounts);
  }
  std::fprintf(stderr, "%-60s %10zu %8.1f a mount\n", "bytes in use, slabbed or not",
               Kobble::bytesInUse(), static_cast<double>(Kobble::bytesInUse()) / mounts);
}

Run runAll(const Bench::Scenario& scenario) {
  const Options& options = scenario.options();
  Run run;
  run.rssStart = statusBytes("VmRSS");
  World world(scenario);
  run.configure = timed([&] { world.configure(); });
  run.rssConfigured = statusBytes("VmRSS");
  const double cpu = Bench::cpuSeconds();
  run.admit = timed([&] { admitAll(world, options); });
  run.move = timed([&] { moveAll(world, options); });
  run.cpu = Bench::cpuSeconds() - cpu;
  run.rssConverged = statusBytes("VmRSS");
  run.rssPeak = statusBytes("VmHWM");
  run.done = world.outcome();
  run.initialComplete = world.initialMountsComplete();
  run.libraryGroups = world.libraryGroups();
  if (options.objects) printObjects(static_cast<double>(run.done.mounts));

  for (std::uint32_t at = 0; at != options.reconnects; ++at) {
    const auto sw =
        static_cast<std::uint32_t>(std::uint64_t{at} * options.switches / options.reconnects);
    run.reconnects.push_back(timed([&] { reconnect(world, sw); }));
  }
  std::sort(run.reconnects.begin(), run.reconnects.end());
  run.reconnected = world.outcome();
  run.edited = run.reconnected;
  if (options.events) {
    events(world, options, run);
    run.edited = world.outcome();
  }
  run.warmed = run.done;
  if (!options.warm) return run;
  run.unmount = timed([&] { disconnectAll(world, options); });
  run.empty = world.outcome();
  run.warm = timed([&] {
    admitAll(world, options);
    moveAll(world, options);
  });
  run.warmed = world.outcome();
  return run;
}

class Line {
 public:
  explicit Line(const char* implementation) { std::printf("{\"impl\":\"%s\"", implementation); }
  ~Line() { std::printf("}\n"); }
  Line(const Line&) = delete;
  Line& operator=(const Line&) = delete;

  void text(const char* name, const char* value) const {
    std::printf(",\"%s\":\"%s\"", name, value);
  }
  void flag(const char* name, bool value) const {
    std::printf(",\"%s\":%s", name, value ? "true" : "false");
  }
  void whole(const char* name, std::uint64_t value) const {
    std::printf(",\"%s\":%llu", name, static_cast<unsigned long long>(value));
  }
  void number(const char* name, double value, int digits = 1) const {
    std::printf(",\"%s\":%.*f", name, digits, value);
  }
};

bool stable(const Run& run) {
  return run.reconnected == run.done && run.edited == run.done && run.warmed == run.done;
}

bool emptied(const Run& run) { return run.empty.mounts == 0 && run.empty.groups == 0; }

void print(const Run& run, const Options& options) {
  const double mounts = run.done.mounts != 0 ? static_cast<double>(run.done.mounts) : 1;
  const auto nanoseconds = [mounts](double seconds) { return seconds / mounts * 1e9; };
  const double median = run.reconnects.empty() ? 0 : run.reconnects[run.reconnects.size() / 2];
  const double worst = run.reconnects.empty() ? 0 : run.reconnects.back();
  std::array<char, 17> digest;
  std::snprintf(digest.data(), digest.size(), "%016llx",
                static_cast<unsigned long long>(run.done.digest));

  const Line line("zorb");
  line.text("aggregate", "count");
  line.whole("switches", options.switches);
  line.whole("entries", options.entries);
  line.whole("services", options.services);
  line.whole("groups", options.groups);
  line.number("paths_per_group",
              static_cast<double>(options.entries) / (options.services * options.groups));
  line.whole("mounts", run.done.mounts);
  line.whole("groups_total", run.done.groups);
  line.whole("groups_converged", run.done.groupsConverged);
  line.text("digest", digest.data());
  line.flag("stable", stable(run));
  line.flag("emptied", emptied(run));
  line.number("config_s", run.configure, 6);
  line.number("converge_s", run.admit + run.move, 6);
  line.number("cpu_s", run.cpu, 6);
  line.number("ns_per_mount", nanoseconds(run.admit + run.move));
  line.number("admit_ns_per_mount", nanoseconds(run.admit));
  line.number("progress_ns_per_mount", nanoseconds(run.move));
  line.number("unmount_ns_per_mount", nanoseconds(run.unmount));
  line.number("warm_ns_per_mount", nanoseconds(run.warm));
  line.number("reconnect_us_median", median * 1e6, 2);
  line.number("reconnect_us_max", worst * 1e6, 2);
  line.number("reconnect_ns_per_mount", nanoseconds(median) * options.switches);
  line.number("rss_peak_bytes", run.rssPeak, 0);
  line.number("rss_config_bytes", run.rssConfigured - run.rssStart, 0);
  line.number("bytes_per_mount", (run.rssConverged - run.rssConfigured) / mounts);
  line.number("peak_bytes_per_mount", (run.rssPeak - run.rssStart) / mounts);
  line.flag("initial", options.initial);
  line.whole("traces", static_cast<std::uint64_t>(options.traces));
  line.whole("library_groups", run.libraryGroups);
  line.whole("initial_complete", run.initialComplete);
  if (options.events) {
    line.number("filter_edit_us", run.filterEdit * 1e6);
    line.number("leader_change_us", run.leaderChange * 1e6);
  }
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const Options options = Bench::parseOptions({argv + 1, static_cast<std::size_t>(argc - 1)});
    const Bench::Scenario scenario(options);
    const Run run = runAll(scenario);
    print(run, options);
    const bool right = run.done.mounts != 0 && run.done.groups == run.done.groupsConverged &&
                       stable(run) && emptied(run) &&
                       (!options.initial || run.initialComplete == run.libraryGroups);
    return right ? 0 : 1;
  } catch (const Bench::UsageError& error) {
    std::cerr << "converge: " << error.what() << '\n' << Bench::usage();
    return 2;
  }
}
