#include "Soak/ScriptWriter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <numeric>

#include "Fabric/ControllerView.h"
#include "Fabric/Document.h"
#include "Fabric/Reader.h"
#include "Fabric/ServiceBlockView.h"
#include "Soak/ChangeMaker.h"
#include "Soak/Names.h"
#include "Soak/Random.h"
#include "Soak/Tree.h"

namespace Soak {

using Fabric::Document;
using Fabric::Model;
using Fabric::Object;
using Fabric::Value;

namespace {

constexpr std::string_view kName = "soak";

/// The services with a gate, for mounts or publications, that is open before and not after.
std::vector<std::string> closingServices(const Model& before, const Model& after) {
  const auto isOpen = [](const Model& model, const std::string& service, std::string_view block) {
    const std::string_view leader =
        Fabric::ControllerView(model.block(Fabric::Block::controller)).leader();
    const Value* const body = model.find(Fabric::Block::services, service)->find(block);
    return body && !leader.empty() && Fabric::ServiceBlockView(body).generation() == leader;
  };
  std::vector<std::string> closing;
  for (const Object::Member& service : before.block(Fabric::Block::services)) {
    for (const std::string_view block : {"mount", "publish"}) {
      if (!isOpen(before, *service.key, block) || isOpen(after, *service.key, block)) continue;
      closing.push_back(*service.key);
      break;
    }
  }
  return closing;
}

/// Writes the events of one script, keeping the document as they leave it.
class Writer {
 public:
  Writer(const Seed& seed, Names names, Model model)
      : seed_(seed),
        random_(Random::mixed(seed.number)),
        names_(std::move(names)),
        model_(std::move(model)),
        maker_(names_, model_, random_),
        weight_(seed.profile->weight) {
    for (std::uint8_t& weight : weight_) {
      if (random_.chance(3)) weight = 0;
    }
    if (random_.coin()) within_ = 2 * seed.profile->within;
    for (std::size_t change = 0; change != kChanges; ++change) {
      if (weight_[change] == 0) withinClosings_[change] = 0;
    }
  }

  /// The start of a random fabric. Once, before the events.
  Value start() {
    Object document;
    document.set("controller", controller());
    document.set("entities", entities());
    document.set("attrlog", attrlog());
    document.set("services", services());
    document.set("switches", switches());
    Value start(std::move(document));
    model_.apply(model_.resolve(kName, start, Fabric::Purpose::start));
    return start;
  }

  /// Adds the random events to the script, from a time on, and says where it ends.
  void events(Script& script, double from) {
    at_ = from;
    for (std::size_t left = seed_.events; left != 0; --left) addChange(script);
    script.start.mutableObject().set("until", Value(microseconds(end(from))));
  }

 private:
  // ---- the start

  Value controller() {
    Object block;
    if (!random_.chance(6)) block.set("leader", Value(names_.generations.front()));
    block.set("heartbeat", maker_.someHeartbeat());
    if (random_.chance(4)) block.set("mountTimeout", whole(random_.from(1, 100)));
    if (random_.chance(4)) block.set("reconnectRetries", whole(random_.from(1, 9)));
    if (random_.chance(6)) block.set("mountMonitor", Value(false));
    if (random_.chance(6)) block.set("registryDir", Value("/mounts"));
    if (random_.chance(6)) block.set("remoteRoot", Value("/remote"));
    return Value(std::move(block));
  }

  Value entities() {
    Object block = maker_.newDirectories().object();
    for (const Names::Path& path : names_.publications) {
      if (random_.coin()) block.set(path.path, Value(path.type));
    }
    return Value(std::move(block));
  }

  Value attrlog() {
    Object block;
    for (const std::string& name : names_.attrlogs) {
      if (random_.chance(3)) block.set(name, maker_.someAttrlog());
    }
    return Value(std::move(block));
  }

  Value services() {
    Object block;
    for (const std::string& name : names_.services) {
      if (random_.chance(4)) continue;
      const bool proxy = name.ends_with("-Proxy");
      Object service;
      if (proxy) service.set("proxy", Value(true));
      if (random_.chance(6)) service.set("enabled", Value(false));
      if (!random_.chance(4)) service.set("mount", maker_.newMountBlock(name));
      if (!proxy && random_.coin()) service.set("publish", maker_.newPublishBlock(name));
      block.set(name, Value(std::move(service)));
    }
    return Value(std::move(block));
  }

  Value switches() {
    Object block;
    const std::size_t count = random_.from(seed_.profile->fewest, seed_.profile->most);
    for (std::size_t number = 1; number <= count; ++number) {
      char id[24];
      std::snprintf(id, sizeof id, "02:00:00:00:%02x:%02x", static_cast<unsigned>(number >> 8),
                    static_cast<unsigned>(number & 0xff));
      const std::string name = random_.chance(6) ? "" : "leaf" + std::to_string(number);
      Value made = maker_.newSwitch(name);
      if (!maker_.directoriesStand()) made.mutableObject().set("connected", Value(false));
      block.set(id, std::move(made));
    }
    return Value(std::move(block));
  }

  // ---- the events

  void addChange(Script& script) {
    if (random_.below(100) >= seed_.profile->together) at_ = microseconds(at_ + pause());
    const Change change = someChange(weight_);
    if (const auto fault = maker_.fault(change)) {
      script.events.push_back(tree({{"at", Value(at_)}, {"note", Value(fault->note())}}));
      return;
    }
    for (const Value& patch : maker_.patches(change)) {
      const bool flips = change == Change::connection || change == Change::flap;
      if (flips && addFlapWithin(script, patch)) continue;
      const bool turns = change == Change::leader || change == Change::generation;
      // Only one patch waits for its notification at a time.
      const bool within = !(turns && addWithinClosing(script, patch)) && mayBeWithin(change) &&
                          random_.below(100) < within_;
      addPatch(script, patch, within ? std::optional(maker_.notice()) : std::nullopt);
    }
  }

  /// A service whose gate closes tells of it in many places, and is the one of which somebody who
  /// is told wants something else then. Adds such a change, before the patch that closes the gate,
  /// or nothing, and says so.
  bool addWithinClosing(Script& script, const Value& patch) {
    if (within_ == 0 || random_.chance(4)) return false;
    Model after = model_;
    after.apply(after.resolve(kName, patch));
    const std::vector<std::string> services = closingServices(model_, after);
    if (services.empty()) return false;
    const std::string& service = random_.pick(services);
    const std::vector<Value> made = maker_.patches(someChange(withinClosings_), service);
    for (const Value& one : made) addPatch(script, one, maker_.noticeOfService());
    return !made.empty();
  }

  /// A switch that goes, or comes, and does the opposite while that is told of, or what follows
  /// from it later. No connection comes while a directory is missing. Adds both, or nothing, and
  /// says so.
  bool addFlapWithin(Script& script, const Value& patch) {
    if (within_ == 0 || !random_.chance(4) || !maker_.directoriesStand()) return false;
    const Value* const switches = patch.find("switches");
    if (switches == nullptr || switches->object().size() != 1) return false;
    const Object::Member& one = *switches->object().begin();
    const Value* const connected = one.value.find("connected");
    if (connected == nullptr) return false;
    const Value opposite =
        tree("switches", tree(*one.key, tree("connected", Value(!connected->boolean()))));
    const bool later = random_.coin();
    if (later) addPatch(script, patch, std::nullopt);
    addPatch(script, opposite, maker_.noticeOfSwitch());
    if (!later) addPatch(script, patch, std::nullopt);
    return true;
  }

  void addPatch(Script& script, const Value& patch, std::optional<Fault::Notice> within) {
    model_.apply(model_.resolve(kName, patch));
    Value event = tree("at", Value(at_));
    if (within) {
      Fault fault;
      fault.kind = Fault::Kind::within;
      fault.notice = *within;
      fault.count = random_.coin() ? 1 : static_cast<std::uint32_t>(random_.from(2, 3));
      event.mutableObject().set("note", Value(fault.note()));
    }
    event.mutableObject().set("apply", patch);
    script.events.push_back(std::move(event));
  }

  /// Whether a service is a proxy is said once, so that its patches keep their order; so do those
  /// of directories.
  static bool mayBeWithin(Change change) {
    return change != Change::service && change != Change::entity;
  }

  Change someChange(const Weights& weight) {
    const std::size_t all = std::accumulate(weight.begin(), weight.end(), std::size_t{0});
    if (all == 0) return Change::connection;
    std::size_t at = random_.below(all);
    std::size_t change = 0;
    while (at >= weight[change]) at -= weight[change++];
    return static_cast<Change>(change);
  }

  /// Spans at which something else is due as well: mounts, heartbeats, checks, windows, reports.
  double pause() {
    static constexpr std::array<double, 18> kPauses = {
        0.05, 0.05, 0.1, 0.1, 0.1, 0.15, 0.2, 0.3, 0.5, 1, 1, 1, 2, 3, 6, 15, 30, 120};
    return random_.chance(40) ? random_.coin() ? 240 : 300 : random_.pick(kPauses);
  }

  /// In the middle of something, soon after the last event, or when all has settled.
  double end(double from) {
    switch (random_.below(4)) {
      case 0:
        return from + (at_ - from) * static_cast<double>(random_.below(1000)) / 1000;
      case 1:
        return at_ + static_cast<double>(random_.below(4000)) / 1000;
      default:
        return at_ + kSettled;
    }
  }

  /// Longer than every delay, window and report.
  static constexpr double kSettled = 700;
  /// Changes that are made while a service's gate closes: of what it has a gate for, mostly.
  static constexpr Weights kWithinClosings = with({}, {{Change::path, 6},
                                                       {Change::group, 3},
                                                       {Change::publication, 4},
                                                       {Change::directory, 2},
                                                       {Change::systemFilter, 2},
                                                       {Change::versionFilter, 2},
                                                       {Change::ready, 2},
                                                       {Change::preserve, 1},
                                                       {Change::status, 1},
                                                       {Change::generation, 2},
                                                       {Change::leader, 2}});
  static double microseconds(double seconds) { return std::round(seconds * 1e6) / 1e6; }

  const Seed& seed_;
  Random random_;
  Names names_;
  Model model_;
  ChangeMaker maker_;
  Weights weight_;
  Weights withinClosings_ = kWithinClosings;
  /// Of each 100 changes, those that are made within a notification. Half of the runs have none:
  /// what they come to is compared with a controller that is started afresh.
  std::size_t within_ = 0;
  double at_ = 0;
};

}  // namespace

Script randomScript(const Seed& seed) {
  Writer writer(seed, Names::ofRandomFabrics(), Model());
  Script script;
  script.start = writer.start();
  writer.events(script, 0);
  return script;
}

Script scriptAround(const Seed& seed, std::string_view name, std::string_view text) {
  const Document document = Document::parse(name, text);
  Script script = Script::of(Fabric::read(name, text));
  if (seed.events == 0) return script;
  Model model = document.start();
  double last = 0;
  for (const Fabric::Event& event : document.events()) {
    if (event.apply) model.apply(*event.apply);
    last = event.at;
  }
  Names names = Names::of(model);
  Writer(seed, std::move(names), std::move(model)).events(script, last);
  return script;
}

}  // namespace Soak
