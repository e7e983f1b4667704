// Traces: a site that is off, a record of two texts and two integers in the fast trace, the same
// as text; beside an empty loop and a copy into a ring with a cycle counter.

#include <x86intrin.h>

#include <cstring>
#include <memory>
#include <string_view>

#include "Bench/Micro/Support.h"
#include "Platform/Dualog/Dualog.h"
#include "Platform/Orm/String.h"

namespace {

using Bench::perItem;

Dualog::Handle handle("BenchTraces", "Traces.cpp");

constexpr std::string_view kName = "0a:5e:12:34:56:78";
constexpr std::string_view kPath = "/fabric/service-07/group-1/item/00000123";

void emptyLoop(benchmark::State& state) {
  for (auto _ : state) benchmark::ClobberMemory();
  perItem(state, 1);
}
BENCHMARK(emptyLoop)->Name("off/emptyLoop");

void traceOff(benchmark::State& state) {
  for (auto _ : state) {
    DUALOG_TRACE(handle, 8, "state of ", kName, " is ", kPath);
    benchmark::ClobberMemory();
  }
  perItem(state, 1);
}
BENCHMARK(traceOff)->Name("off/zorbTrace");

void message(const Orm::String& name, const Orm::String& path, int from, int to) {
  DUALOG_MESSAGE(handle, "Traces.cpp", 5, "void message()", "%s %s: %s -> %s", name, path, from,
                 to);
}

void messages(benchmark::State& state) {
  const Orm::String name(kName);
  const Orm::String path(kPath);
  for (auto _ : state) {
    message(name, path, 2, 4);
    benchmark::ClobberMemory();
  }
  perItem(state, 1);
}

void messageOff(benchmark::State& state) { messages(state); }
BENCHMARK(messageOff)->Name("off/zorbMessage");

void messageFast(benchmark::State& state) {
  Dualog::fastTraceIs(true);
  messages(state);
  Dualog::fastTraceIs(false);
}
BENCHMARK(messageFast)->Name("record/zorb");

class ForgetfulSink final : public Dualog::Sink {
 public:
  void line(const Dualog::Line& line) override { benchmark::DoNotOptimize(line.text.data()); }
};

void messageText(benchmark::State& state) {
  ForgetfulSink sink;
  Dualog::sinkIs(&sink);
  handle.levelIs(5);
  messages(state);
  handle.levelIs(Dualog::kAllOff);
  Dualog::sinkIs(nullptr);
}
BENCHMARK(messageText)->Name("record/zorbText");

/// What a record cannot cost less than: its bytes and a reading of the cycle counter into a ring.
void ringCopy(benchmark::State& state) {
  constexpr std::size_t kRing = 1U << 16;
  const auto ring = std::make_unique<char[]>(kRing + 512);
  std::size_t at = 0;
  char body[104] = {};  // two texts of 17 and 40 characters, two integers, their heads
  for (auto _ : state) {
    benchmark::DoNotOptimize(body);
    const std::uint64_t now = __rdtsc();
    std::memcpy(ring.get() + at, &now, sizeof now);
    std::memcpy(ring.get() + at + sizeof now, body, sizeof body);
    at = (at + sizeof now + sizeof body) & (kRing - 1);
    benchmark::ClobberMemory();
  }
  perItem(state, 1);
}
BENCHMARK(ringCopy)->Name("record/ringCopy");

void cycleCounter(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(__rdtsc());
  perItem(state, 1);
}
BENCHMARK(cycleCounter)->Name("record/cycleCounter");

}  // namespace
