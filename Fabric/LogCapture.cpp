#include "Fabric/LogCapture.h"

#include <utility>

#include "Fabric/DocumentTime.h"

namespace Fabric {

LogCapture::LogCapture(Orm::Ptr<Orm::Clock> clock)
    : clock_(std::move(clock)), sinkBefore_(StructuredLog::sinkIs(this)) {}

LogCapture::~LogCapture() { StructuredLog::sinkIs(sinkBefore_); }

void LogCapture::message(const StructuredLog::LogHandle& handle, std::string_view text) {
  messages_.push_back({documentTime(clock_->now()), &handle, std::string(text)});
  if (observer_) observer_->logMessage(messages_.back());
}

}  // namespace Fabric
