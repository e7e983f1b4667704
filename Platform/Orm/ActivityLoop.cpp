#include "Platform/Orm/ActivityLoop.h"

#include <algorithm>

namespace Orm {

ActivityLoop::ActivityLoop(Ptr<Clock> clock) : clock_(std::move(clock)) {
  sources_.push_back(clock_.get());
}

void ActivityLoop::sourceIs(ActivitySource& source) { sources_.push_back(&source); }

void ActivityLoop::sourceDel(ActivitySource& source) {
  sources_.erase(std::remove(sources_.begin(), sources_.end(), &source), sources_.end());
}

bool ActivityLoop::runOne(Seconds until) {
  Due first;
  ActivitySource* next = nullptr;
  for (ActivitySource* source : sources_) {
    const Due due = source->nextDue();
    if (due.never() || (next && !due.before(first))) continue;
    first = due;
    next = source;
  }
  if (!next || first.tick > tickOf(until)) return false;
  clock_->time().waitUntil(first.tick);
  next->runNext();
  return true;
}

void ActivityLoop::run(Seconds until) {
  while (runOne(until)) {
  }
  if (tickOf(until) != kNeverTick) clock_->time().waitUntil(tickOf(until));
}

}  // namespace Orm
