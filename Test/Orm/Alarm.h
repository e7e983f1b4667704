#pragma once

#include <functional>
#include <utility>

#include "Platform/Orm/Clock.h"

namespace OrmTest {

/// Who owns alarms; a place for what they have in common.
struct Sleeper {};

/// A clock reactor that does what the test says when it fires.
class Alarm : public Orm::ClockReactor<Sleeper>, private Kobble::Counted<Alarm> {
 public:
  using Handler = std::function<void(Alarm&)>;

  explicit Alarm(Handler handler = {}, Sleeper* owner = &theSleeper)
      : ClockReactor(owner), handler_(std::move(handler)) {}
  Alarm(const Orm::Ptr<Orm::Clock>& clock, Orm::Seconds time, Handler handler = {})
      : Alarm(std::move(handler)) {
    notifierIs(clock);
    fired_ = 0;
    quiet_ = false;
    timeMinIs(time);
  }

  void handlerIs(Handler handler) {
    handler_ = std::move(handler);
    quiet_ = false;
  }
  int fired() const { return fired_; }

 private:
  static inline Sleeper theSleeper;

  void onClock() override {
    ++fired_;
    const Handler handler = handler_;  // outlives this alarm
    if (handler && !quiet_) handler(*this);
  }

  Handler handler_;
  int fired_ = 0;
  bool quiet_ = true;  // while it is pointed at its first clock
};

}  // namespace OrmTest
