#include "Soak/Life.h"

#include <algorithm>
#include <optional>
#include <ostream>
#include <set>
#include <sstream>
#include <streambuf>
#include <string>
#include <vector>

#include "Fabric/JsonText.h"
#include "Fabric/SimulationRun.h"
#include "Platform/Dualog/Dualog.h"
#include "Platform/Kobble/Kobble.h"
#include "Platform/Orm/Audit.h"
#include "Soak/Broken.h"
#include "Soak/Excuses.h"
#include "Soak/Invariants.h"
#include "Soak/Listener.h"
#include "Soak/Meddler.h"
#include "Soak/Rebuild.h"

namespace Soak {

namespace {

/// How long after the last event everything has settled.
constexpr double kSettled = 600;
/// Mount entries times switches that are scanned after each piece of work; of more, fewer scans.
constexpr std::size_t kScanned = 256;
/// Of how many checks one looks at all handles and reactors too.
constexpr std::size_t kAuditedEvery = 64;

/// A stream that keeps nothing but a digest (FNV-1a) of what goes through it.
class Digest final : public std::streambuf {
 public:
  std::uint64_t value() const { return value_; }

 protected:
  int_type overflow(int_type c) override {
    if (!traits_type::eq_int_type(c, traits_type::eof())) add(traits_type::to_char_type(c));
    return traits_type::not_eof(c);
  }
  std::streamsize xsputn(const char* text, std::streamsize size) override {
    std::for_each(text, text + size, [this](char c) { add(c); });
    return size;
  }

 private:
  void add(char c) { value_ = (value_ ^ static_cast<unsigned char>(c)) * 0x100000001b3; }

  std::uint64_t value_ = 0xcbf29ce484222325;
};

/// Hands what an assertion says on to the note, before the process ends.
class NoteStream final : public std::streambuf {
 public:
  explicit NoteStream(Note& note) : note_(note) {}

 protected:
  int_type overflow(int_type c) override {
    const char one = traits_type::to_char_type(c);
    xsputn(&one, 1);
    return traits_type::not_eof(c);
  }
  std::streamsize xsputn(const char* text, std::streamsize size) override {
    if (text_.empty() && note_.failed) return size;  // what came first counts
    text_.append(text, static_cast<std::size_t>(size));
    // "assertion failed: TEXT" stands alone on its line; time and place come behind it.
    note_.fail(text_.substr(0, text_.find('\n')), text_);
    return size;
  }

 private:
  Note& note_;
  std::string text_;
};

/// Switches everything that can be traced on, and hands it to whoever listens.
class Noise final : public Dualog::Sink {
 public:
  Noise() : sinkBefore_(Dualog::sinkIs(this)) { all(Dualog::kHighestLevel, true); }
  ~Noise() {
    all(Dualog::kAllOff, false);
    Dualog::sinkIs(sinkBefore_);
  }
  Noise(const Noise&) = delete;
  Noise& operator=(const Noise&) = delete;

  /// Null: nobody.
  void listenerIs(Dualog::Sink* listener) { listener_ = listener; }

  void line(const Dualog::Line& line) override {
    said_.push_back(std::hash<std::string_view>()(line.text));
    if (listener_) listener_->line(line);
  }

  /// Messages go to both traces: what the fast one has kept was said, in the same order.
  void check() const {
    auto next = said_.begin();
    Zimlog::read([&](const Zimlog::Descriptor&, std::int64_t, std::string_view text) {
      next = std::find(next, said_.end(), std::hash<std::string_view>()(text));
      if (next == said_.end()) {
        throw Broken("the fast trace says what the text trace says: ", std::string(text));
      }
      ++next;
    });
  }

 private:
  static void all(int level, bool fast) {
    for (Dualog::Handle* handle : Dualog::handles()) handle->levelIs(level);
    Dualog::fastTraceIs(fast);
  }
  Dualog::Sink* sinkBefore_;
  Dualog::Sink* listener_ = nullptr;
  std::vector<std::size_t> said_;  // hashes
};

/// One run with what watches it.
class Run {
 public:
  /// `noise` may be null.
  Run(const Fabric::Document& document, Noise* noise, Note& note)
      : noise_(noise),
        note_(note),
        errorBuffer_(note),
        errors_(&errorBuffer_),
        out_(&digest_),
        run_(document, errors_),
        meddler_((run_.eventsIs(out_), run_.simulation()), excuses_),
        invariants_(run_.simulation(), excuses_),
        listener_(run_.simulation(), noise != nullptr) {
    if (noise_) noise_->listenerIs(&listener_);
  }
  ~Run() {
    if (noise_) noise_->listenerIs(nullptr);
  }
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;

  void go() {
    meddler_.onPatchIs([this] {
      invariants_.patchCame();
      listener_.patchCame();
    });
    meddler_.onReadyIs([this](std::string_view service, bool ready) {
      invariants_.readinessCame(service, ready);
    });
    run_.hooksIs({.onNote = [this](const std::string& text) { meddler_.note(text); },
                  .onApply =
                      [this](const Fabric::Event& event) {
                        ++note_.events;
                        meddler_.apply(event);
                        due_ = 0;
                      },
                  .onStep = [this] { step(); }});
    run_.run();
    check();
    audit();
  }

  /// The state document, which goes into the digest as well.
  std::string state() {
    std::ostringstream text;
    {
      Fabric::JsonText json(text, Fabric::JsonText::Layout::oneLine);
      run_.writeState(json);
    }
    out_ << text.str();
    return text.str();
  }

  std::uint64_t digest() const { return digest_.value(); }
  const Excuses& excuses() const { return excuses_; }
  std::set<std::string> untold() const { return invariants_.untold(); }
  const Fabric::Model& model() const { return run_.simulation().model(); }

 private:
  void step() {
    ++note_.steps;
    note_.time = run_.simulation().time();
    if (due_ != 0) {
      --due_;
      return;
    }
    const Fabric::World& world = run_.simulation().world();
    due_ =
        world.mountsRegistry()->mountEntry().size() * world.peerTable()->peer().size() / kScanned;
    check();
    listener_.begin();
    if (++checks_ % kAuditedEvery == 0) audit();
  }

  void check() {
    try {
      listener_.check();
      invariants_.check();
    } catch (const Broken& broken) {
      // It may not be possible to take down what is broken without the process being stopped.
      note_.fail(broken.invariant(), broken.what());
      throw;
    }
  }

  /// What the objects and handles say of each other, where the build keeps books.
  static void audit() {
    const std::string found = Orm::Audit::findings();
    if (!found.empty()) throw Broken("handles and reactors agree", ": " + found);
  }

  Noise* noise_;
  Note& note_;
  NoteStream errorBuffer_;
  std::ostream errors_;
  Digest digest_;
  std::ostream out_;
  Excuses excuses_;
  Fabric::SimulationRun run_;
  Meddler meddler_;
  Invariants invariants_;
  Listener listener_;
  std::size_t checks_ = 0;
  std::size_t due_ = 0;  // pieces of work until the next check
};

void requireNothingAlive(std::size_t before) {
  if (Kobble::liveObjects() == before) return;
  std::string alive;
  for (const Kobble::TypeCount& type : Kobble::liveTypes()) {
    alive += ' ' + type.name + ' ' + std::to_string(type.live);
  }
  throw Broken("nothing is alive at the end", alive);
}

}  // namespace

std::uint64_t live(std::string_view text, const Way& way, Note& note) {
  const std::size_t aliveBefore = Kobble::liveObjects();
  std::optional<Noise> noise;
  if (way.traces) noise.emplace();
  std::uint64_t digest = 0;
  std::string state;
  Fabric::Model model;
  Excuses excuses;
  std::set<std::string> untold;
  double settling = 0;
  {
    const Fabric::Document document = Fabric::Document::parse("soak.json", text);
    settling = document.until() - (document.events().empty() ? 0 : document.events().back().at);
    Run run(document, noise ? &*noise : nullptr, note);
    run.go();
    state = run.state();
    digest = run.digest();
    model = run.model();
    excuses = run.excuses();
    untold = run.untold();
  }
  if (noise) noise->check();
  requireNothingAlive(aliveBefore);
  if (settling < kSettled || excuses.isIncomparable()) return digest;
  compareWithRebuilt(state, model, excuses, untold);
  requireNothingAlive(aliveBefore);
  return digest;
}

}  // namespace Soak
