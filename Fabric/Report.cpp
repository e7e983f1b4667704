#include "Fabric/Report.h"

#include <algorithm>

namespace Fabric {

namespace {

template <class Range, class Test>
std::size_t countOf(const Range& range, Test test) {
  return static_cast<std::size_t>(std::count_if(range.begin(), range.end(), test));
}

}  // namespace

std::size_t Report::connectedSwitches() const {
  return countOf(switches, [](const Switch& one) { return one.connected; });
}

std::size_t Report::inactiveSwitches() const {
  return countOf(switches, [](const Switch& one) { return one.inactive; });
}

std::size_t Report::failedExpectations() const {
  return countOf(expectations, [](const Expectation& one) { return !one.failures.empty(); });
}

std::string reasonOf(const Report::Missing& missing) {
  switch (missing.cause) {
    case Report::Cause::failed:
      return "failed";
    case Report::Cause::inProgress:
      return "still in progress";
    case Report::Cause::refused:
      return text(missing.admission);
    case Report::Cause::registeredByOther:
      return "path already of group " + missing.holder;
    case Report::Cause::publishedByOther:
      return "path already of service " + missing.holder;
    case Report::Cause::notRegistered:
      return "path not registered";
    case Report::Cause::kept:
      return "not connected, state kept";
  }
  return "unknown";
}

bool waitsForLocal(Report::Cause cause, Controller::Admission admission) {
  return cause == Report::Cause::refused && (admission == Controller::Admission::entityMissing ||
                                             admission == Controller::Admission::notReady);
}

const char* text(Report::Readiness readiness) {
  switch (readiness) {
    case Report::Readiness::notReady:
      return "not ready";
    case Report::Readiness::heldBack:
      return "held back";
    case Report::Readiness::ready:
      return "ready";
  }
  return "unknown";
}

}  // namespace Fabric
