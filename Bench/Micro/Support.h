#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <numeric>
#include <vector>

namespace Bench {

/// Says that each iteration did `items` things, so that the cost of one can be told.
inline void perItem(benchmark::State& state, std::size_t items) {
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(items));
}

/// 0 to count - 1 in an order that is the same in every run.
inline std::vector<std::uint32_t> shuffled(std::uint32_t count, std::uint64_t seed) {
  std::vector<std::uint32_t> order(count);
  std::iota(order.begin(), order.end(), 0U);
  for (std::size_t left = order.size(); left > 1; --left) {
    seed = seed * 6364136223846793005ULL + 1442695040888963407ULL;
    std::swap(order[left - 1], order[(seed >> 33) % left]);
  }
  return order;
}

/// Times parts of an iteration: for benchmarks that UseManualTime(). Of the processor's time, as
/// the other benchmarks are told, so that nobody else's work counts.
class Stopwatch {
 public:
  explicit Stopwatch(benchmark::State& state) : state_(state) {}
  ~Stopwatch() { state_.SetIterationTime(seconds_); }
  Stopwatch(const Stopwatch&) = delete;
  Stopwatch& operator=(const Stopwatch&) = delete;

  template <class Part>
  void time(Part&& part) {
    const double begin = now();
    part();
    seconds_ += now() - begin;
  }

 private:
  static double now() {
    std::timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
  }

  benchmark::State& state_;
  double seconds_ = 0;
};

}  // namespace Bench
