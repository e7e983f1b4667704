// Shared text beside std::string: making, copying, comparing, hashing 40 characters.

#include "Platform/Orm/String.h"

#include <absl/hash/hash.h>

#include <string>
#include <string_view>

#include "Bench/Micro/Support.h"

namespace {

using Bench::perItem;

constexpr std::string_view kText = "/fabric/service-07/group-1/item/00000123";

template <class Text>
void make(benchmark::State& state) {
  std::string_view from = kText;
  for (auto _ : state) {
    benchmark::DoNotOptimize(from);
    Text text(from);
    benchmark::DoNotOptimize(text);
  }
  perItem(state, 1);
}

template <class Text>
void copy(benchmark::State& state) {
  Text text(kText);
  for (auto _ : state) {
    benchmark::DoNotOptimize(text);
    Text another(text);
    benchmark::DoNotOptimize(another);
  }
  perItem(state, 1);
}

/// Two texts of the same characters, made apart.
template <class Text>
void compareEqual(benchmark::State& state) {
  Text one(kText);
  Text other(kText);
  for (auto _ : state) {
    benchmark::DoNotOptimize(one);
    benchmark::DoNotOptimize(other);
    bool equal = one == other;
    benchmark::DoNotOptimize(equal);
  }
  perItem(state, 1);
}

/// The difference is in the last character.
template <class Text>
void compareDifferent(benchmark::State& state) {
  Text one(kText);
  Text other(std::string(kText.substr(0, kText.size() - 1)) + "4");
  for (auto _ : state) {
    benchmark::DoNotOptimize(one);
    benchmark::DoNotOptimize(other);
    bool equal = one == other;
    benchmark::DoNotOptimize(equal);
  }
  perItem(state, 1);
}

void hashZorb(benchmark::State& state) {
  std::string_view text = kText;
  for (auto _ : state) {
    benchmark::DoNotOptimize(text);
    benchmark::DoNotOptimize(Orm::hashText(text));
  }
  perItem(state, 1);
}

void hashAbsl(benchmark::State& state) {
  std::string_view text = kText;
  for (auto _ : state) {
    benchmark::DoNotOptimize(text);
    benchmark::DoNotOptimize(absl::Hash<std::string_view>()(text));
  }
  perItem(state, 1);
}

BENCHMARK(make<Orm::String>)->Name("make/zorb");
BENCHMARK(make<std::string>)->Name("make/stdString");
BENCHMARK(copy<Orm::String>)->Name("copy/zorb");
BENCHMARK(copy<std::string>)->Name("copy/stdString");
BENCHMARK(compareEqual<Orm::String>)->Name("compareEqual/zorb");
BENCHMARK(compareEqual<std::string>)->Name("compareEqual/stdString");
BENCHMARK(compareDifferent<Orm::String>)->Name("compareDifferent/zorb");
BENCHMARK(compareDifferent<std::string>)->Name("compareDifferent/stdString");
BENCHMARK(hashZorb)->Name("hash/zorb");
BENCHMARK(hashAbsl)->Name("hash/absl");

}  // namespace
