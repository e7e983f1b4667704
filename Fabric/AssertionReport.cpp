#include "Fabric/AssertionReport.h"

#include <ostream>
#include <string>

#include "Fabric/DocumentTime.h"
#include "Fabric/JsonText.h"

namespace Fabric {

namespace {

/// The handler is a plain function, so it finds the one report that is in force here.
AssertionReport* current = nullptr;

}  // namespace

AssertionReport::AssertionReport(const Orm::Clock& clock, EventStream* events, std::ostream& errors)
    : clock_(clock),
      events_(events),
      errors_(errors),
      handlerBefore_(Orm::assertionHandlerIs(&AssertionReport::handle)) {
  current = this;
}

AssertionReport::~AssertionReport() {
  current = nullptr;
  Orm::assertionHandlerIs(handlerBefore_);
}

void AssertionReport::handle(const char* text, const char* file, int line) {
  // An assertion that fails while one is reported aborts at once.
  const AssertionReport* const report = current;
  current = nullptr;
  if (!report) return;
  if (report->events_) {
    report->events_->assertion(text);
    report->events_->flush();
  }
  std::string message = "assertion failed: ";
  message += text;
  message += " (at ";
  appendSeconds(message, documentTime(report->clock_.now()));
  message += " s, ";
  message += file;
  message += ':' + std::to_string(line) + ")\n";
  report->errors_ << message << std::flush;
}

}  // namespace Fabric
