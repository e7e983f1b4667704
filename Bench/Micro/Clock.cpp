// Timers: arm, move, cancel and fire 10,000 of them, beside a hashed timer wheel and beside
// storing the wish alone.

#include "Platform/Orm/Clock.h"

#include <array>
#include <memory>
#include <string>
#include <type_traits>

#include "Bench/Micro/Support.h"
#include "Platform/Orm/ActivityLoop.h"

namespace {

constexpr std::uint32_t kTimers = 10'000;

/// When the timers are due, in milliseconds: an hour or more away.
std::vector<std::uint32_t> deadlines(std::uint32_t from, std::uint64_t seed) {
  std::vector<std::uint32_t> due = Bench::shuffled(kTimers, seed);
  for (std::uint32_t& at : due) at = from + at * 360;
  return due;
}

class Zorb {
 public:
  Zorb() {
    for (std::uint32_t at = 0; at != kTimers; ++at) timers_[at].notifierIs(clock_);
    fired_ = 0;
  }
  void arm(std::uint32_t timer, std::uint32_t ms) { timers_[timer].timeMinIs(ms * 1e-3); }
  void move(std::uint32_t timer, std::uint32_t ms) { arm(timer, ms); }
  void cancel(std::uint32_t timer) { timers_[timer].timeMinIs(Orm::kNever); }
  std::size_t fireAll() {
    loop_.run(1e6);
    return fired_;
  }

 private:
  class Timer final : public Orm::ClockReactor<std::size_t> {
   public:
    Timer() : ClockReactor(&fired_) {}

   private:
    void onClock() override { ++*owner(); }
  };

  static inline std::size_t fired_ = 0;
  Orm::Ptr<Orm::Clock> clock_ = Orm::make<Orm::Clock>(std::make_unique<Orm::VirtualTime>(0));
  Orm::ActivityLoop loop_{clock_};
  std::vector<Timer> timers_ = std::vector<Timer>(kTimers);
};

/// Rings of timers by their time; all operations O(1), the order within a ring is lost.
class Wheel {
 public:
  Wheel() : timers_(kTimers) {
    for (Node& ring : rings_) ring.previous = ring.next = &ring;
    for (Node& timer : timers_) timer.previous = timer.next = &timer;
  }
  void arm(std::uint32_t timer, std::uint32_t ms) {
    Node& node = timers_[timer];
    Node& ring = rings_[(ms >> 10) % rings_.size()];
    node.due = ms;
    node.next = ring.next;
    node.previous = &ring;
    ring.next->previous = &node;
    ring.next = &node;
  }
  void move(std::uint32_t timer, std::uint32_t ms) {
    cancel(timer);
    arm(timer, ms);
  }
  void cancel(std::uint32_t timer) {
    Node& node = timers_[timer];
    node.previous->next = node.next;
    node.next->previous = node.previous;
  }
  std::size_t fireAll() {
    std::size_t fired = 0;
    for (Node& ring : rings_) {
      while (ring.next != &ring) {
        Node& node = *ring.next;
        ring.next = node.next;
        node.next->previous = &ring;
        node.previous = node.next = &node;
        benchmark::DoNotOptimize(++fired);
      }
    }
    return fired;
  }

 private:
  struct Node {
    Node* previous = nullptr;
    Node* next = nullptr;
    std::uint64_t due = 0;
  };
  std::array<Node, 4096> rings_;
  std::vector<Node> timers_;
};

/// Only keeps when each is due.
class Wish {
 public:
  Wish() : due_(kTimers) {}
  void arm(std::uint32_t timer, std::uint32_t ms) { due_[timer] = ms; }
  void move(std::uint32_t timer, std::uint32_t ms) { arm(timer, ms); }
  void cancel(std::uint32_t timer) { due_[timer] = 0; }
  static std::size_t fireAll() { return kTimers; }

 private:
  std::vector<std::uint64_t> due_;
};

enum class Part { arm, moveAny, moveLater, cancel, fire };

template <class Timers, Part part>
void timers(benchmark::State& state) {
  const auto first = deadlines(3'600'000, 1);
  const auto any = deadlines(3'600'000, 2);
  auto later = first;
  for (std::uint32_t& at : later) at += 3'600'000;
  const auto order = Bench::shuffled(kTimers, 7);
  const auto each = [&order](auto&& what) {
    for (const std::uint32_t timer : order) what(timer);
  };
  for (auto _ : state) {
    const auto all = std::make_unique<Timers>();
    Bench::Stopwatch watch(state);
    const auto does = [&](Part which, auto&& what) {
      if (which == part) {
        watch.time(what);
      } else {
        what();
      }
    };
    does(Part::arm, [&] { each([&](std::uint32_t at) { all->arm(at, first[at]); }); });
    if (part == Part::moveAny) {
      does(Part::moveAny, [&] { each([&](std::uint32_t at) { all->move(at, any[at]); }); });
    }
    if (part == Part::moveLater) {
      does(Part::moveLater, [&] { each([&](std::uint32_t at) { all->move(at, later[at]); }); });
    }
    if (part == Part::fire) {
      does(Part::fire, [&] {
        if (all->fireAll() != kTimers) state.SkipWithError("not all fired");
      });
    } else {
      does(Part::cancel, [&] { each([&](std::uint32_t at) { all->cancel(at); }); });
    }
    benchmark::ClobberMemory();
  }
  Bench::perItem(state, kTimers);
}

template <class Timers>
void add(const std::string& who) {
  const auto each = [&who](const char* what, auto&& function) {
    benchmark::RegisterBenchmark((what + ("/" + who)).c_str(), function)->UseManualTime();
  };
  each("arm", timers<Timers, Part::arm>);
  each("move", timers<Timers, Part::moveAny>);
  each("moveLater", timers<Timers, Part::moveLater>);
  each("cancel", timers<Timers, Part::cancel>);
  if (!std::is_same_v<Timers, Wish>) each("fire", timers<Timers, Part::fire>);
}

const bool added = [] {
  add<Zorb>("zorb");
  add<Wheel>("wheel");
  add<Wish>("wish");
  return true;
}();

}  // namespace
