#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include "Fabric/Document.h"
#include "Platform/Orm/ActivitySource.h"

namespace Fabric {

/// Gives the loop a document's events at their times, before turns and timers of the same time.
class EventSource final : public Orm::ActivitySource {
 public:
  using Run = std::function<void(const Event& event)>;

  /// The events have to stay. `run` does one event.
  EventSource(const std::vector<Event>& events, Run run) : events_(events), run_(std::move(run)) {}

  Orm::Due nextDue() override;
  void runNext() override { run_(events_[next_++]); }

 private:
  const std::vector<Event>& events_;
  Run run_;
  std::size_t next_ = 0;
};

}  // namespace Fabric
