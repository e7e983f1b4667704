#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Fabric/Model.h"
#include "Fabric/Patch.h"
#include "Fabric/Value.h"

namespace Fabric {

/// One entry of a document's `events`. What it has is done in this order: note, apply, expect.
struct Event {
  Mark mark;
  /// Seconds of virtual time since the start.
  double at = 0;
  std::optional<std::string> note;
  /// Resolved against the document as the events before left it.
  std::optional<Patch> apply;
  /// For Fabric::failures().
  std::optional<Value> expect;
};

/// A fabric document that was read and checked whole, every event against what the events before it
/// leave, so that nothing that it says can be refused later. Immutable.
///
/// Reading costs a few times the text in memory; the events keep their patches, not the states
/// between them.
class Document {
 public:
  /// Throws InputError. YAML 1.2 or JSON.
  static Document load(const std::string& path);
  static Document parse(std::string_view name, std::string_view text);

  /// A document of a state that one was brought to, without events.
  static Document of(std::string name, Model start, double until);

  /// As messages name it.
  const std::string& name() const { return name_; }
  /// What is built at time 0. A run copies it and applies the events to the copy.
  const Model& start() const { return start_; }
  const std::vector<Event>& events() const { return events_; }
  /// Where a run ends, inclusive; without `until`, kRunAfterLastEvent after the last event.
  double until() const { return until_; }

 private:
  std::string name_;
  Model start_;
  std::vector<Event> events_;
  double until_ = 0;
};

}  // namespace Fabric
