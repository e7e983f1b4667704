#include "Fabric/Document.h"

#include <unordered_set>
#include <utility>

#include "Fabric/Checker.h"
#include "Fabric/Expectation.h"
#include "Fabric/Limits.h"
#include "Fabric/Quote.h"
#include "Fabric/Reader.h"
#include "Fabric/Shapes.h"

namespace Fabric {

namespace {

/// Checks a document's events in order, applying each to a copy of the start.
class EventReader {
 public:
  EventReader(std::string_view file, const Model& start)
      : file_(file), checker_(file, Purpose::start), model_(start) {
    for (const Object::Member& member : start.block(Block::switches)) {
      noteName(member.value);
    }
  }

  std::vector<Event> read(const Value& written) {
    std::vector<Event> events;
    if (written.isNull()) {
      return events;
    }
    if (!written.isArray()) {
      checker_.fail(written.mark(), "\"events\" is " + describe(written) + ", expected a list");
    }
    events.reserve(written.array().size());
    for (const Value& element : written.array()) {
      events.push_back(readOne(element));
    }
    // An expectation may name a switch that a later event brings.
    for (const Event& event : events) {
      if (event.expect) {
        checkSwitchKeys(file_, *event.expect, names_);
      }
    }
    return events;
  }

 private:
  Event readOne(const Value& written) {
    const Value checked = checker_.check(eventShape(), "an event", written);
    Event event;
    event.mark = written.mark();
    event.at = readTime(checked);
    if (const Value* note = checked.find("note")) {
      event.note = note->string();
    }
    if (const Value* patch = checked.find("apply")) {
      event.apply = model_.resolve(file_, *patch);
      applyForChecks(*event.apply, patch->mark());
    }
    if (const Value* expect = checked.find("expect")) {
      event.expect = checkedExpectation(file_, *expect);
    }
    return event;
  }

  double readTime(const Value& event) {
    const Value* at = event.find("at");
    if (at == nullptr) {
      checker_.fail(event.mark(), "an event without \"at\", expected the time of each event");
    }
    if (at->number() < last_) {
      checker_.fail(at->mark(), "\"at\" is " + toJson(*at) + ", expected no less than " +
                                    toJson(Value(last_)) + ", the time of the event before");
    }
    return last_ = at->number();
  }

  /// Applies what later patches are checked against: which members there are, the switches' names
  /// and the entities. All other changes are good whatever the members hold, and would cost as much
  /// as the run.
  void applyForChecks(const Patch& patch, Mark mark) {
    bool hasRemoved = false;
    for (const Step& step : patch.steps) {
      if (step.block == Block::switches) {
        noteName(step.patch);
      }
      if (!hasRemoved && !isChecked(step)) {
        continue;
      }
      hasRemoved = hasRemoved || step.patch.isNull();
      changes_ += step.keys->size();
      if (changes_ > kMaxChanges) {
        checker_.fail(mark,
                      "too many changes, expected events that bring, remove or rename at most " +
                          std::to_string(kMaxChanges) + " members altogether");
      }
      for (const Text& key : *step.keys) {
        model_.apply(step, key);
      }
    }
  }

  /// The keys of a step are all there or all new, unless a step before removed some of them.
  bool isChecked(const Step& step) const {
    if (step.block == Block::controller) {
      return false;
    }
    return step.block == Block::entities || step.patch.isNull() ||
           step.patch.find("name") != nullptr ||
           model_.find(step.block, *step.keys->front()) == nullptr;
  }

  void noteName(const Value& switchBody) {
    const Value* name = switchBody.find("name");
    if (name != nullptr && name->isString()) {
      names_.insert(name->string());
    }
  }

  std::string file_;
  Checker checker_;
  Model model_;
  /// All display names that a switch has at any time.
  std::unordered_set<std::string> names_;
  double last_ = 0;
  std::size_t changes_ = 0;
};

}  // namespace

Document Document::load(const std::string& path) { return parse(path, readFile(path)); }

Document Document::parse(std::string_view name, std::string_view text) {
  const Value tree = read(name, text);
  Document document;
  document.name_ = name;
  document.start_.apply(document.start_.resolve(name, tree, Purpose::start));
  if (const Value* events = tree.find("events")) {
    document.events_ = EventReader(name, document.start_).read(*events);
  }
  const Object::Member* until = tree.object().member("until");
  if (until != nullptr && !until->value.isNull()) {
    const Checker checker(name, Purpose::start);
    document.until_ =
        checker.check(*checker.field(documentShape(), *until).shape, *until->key, until->value)
            .number();
  } else {
    document.until_ =
        kRunAfterLastEvent + (document.events_.empty() ? 0 : document.events_.back().at);
  }
  return document;
}

Document Document::of(std::string name, Model start, double until) {
  Document document;
  document.name_ = std::move(name);
  document.start_ = std::move(start);
  document.until_ = until;
  return document;
}

}  // namespace Fabric
