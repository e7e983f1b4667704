#pragma once

#include <iosfwd>

#include "Fabric/EventStream.h"
#include "Platform/Orm/Assert.h"
#include "Platform/Orm/Clock.h"

namespace Fabric {

/// What a person and the event stream learn of an assertion that stops a run: the stream's last
/// line, and "assertion failed: TEXT" with the time and the source place.
///
/// Takes the place of the assertion handler as long as it exists; there is one at a time. The
/// process aborts after it.
class AssertionReport {
 public:
  /// `events` may be null; all must stay.
  AssertionReport(const Orm::Clock& clock, EventStream* events, std::ostream& errors);
  ~AssertionReport();
  AssertionReport(const AssertionReport&) = delete;
  AssertionReport& operator=(const AssertionReport&) = delete;

 private:
  static void handle(const char* text, const char* file, int line);

  const Orm::Clock& clock_;
  EventStream* events_;
  std::ostream& errors_;
  Orm::AssertionHandler handlerBefore_;
};

}  // namespace Fabric
