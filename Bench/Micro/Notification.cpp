// Telling notifiees: the framework beside raw virtual calls and std::function, none of which lets
// a notifiee come or go meanwhile.

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "Bench/Micro/Support.h"
#include "Platform/Orm/Entity.h"
#include "Platform/Orm/Reactor.h"
#include "Platform/Orm/String.h"

namespace {

using Bench::perItem;

constexpr const char* kText = "/fabric/service-07/group-1/item/00000123";  // 40 characters

// ---- the framework

class Value : public Orm::Entity, private Kobble::Counted<Value> {
 public:
  int value() const { return value_; }
  void valueIs(int value) { assign(value_, value, 0); }
  void textIs(const Orm::String& text) { assign(text_, text, 1); }

 private:
  int value_ = 0;
  Orm::String text_;
};

class Plain : public Orm::Entity, private Kobble::Counted<Plain> {
 public:
  int value() const { return value_; }
  void valueIs(int value) { assign(value_, value, 0); }

 private:
  int value_ = 0;
};

template <class Subject>
class Adder final : public Orm::ReactorOn<Subject, std::uint64_t> {
 public:
  Adder(std::uint64_t& sum, const Orm::Ptr<Subject>& subject)
      : Orm::ReactorOn<Subject, std::uint64_t>(&sum) {
    this->notifierIs(subject);
  }
  void onAttribute(Orm::AttributeId, const Orm::Key&) override {
    *this->owner() += static_cast<std::uint64_t>(this->notifier()->value());
    benchmark::DoNotOptimize(*this->owner());
  }
};

void notify(benchmark::State& state) {
  std::uint64_t sum = 0;
  const auto subject = Orm::make<Value>();
  std::vector<std::unique_ptr<Adder<Value>>> notifiees;
  for (std::int64_t at = 0; at != state.range(0); ++at) {
    notifiees.push_back(std::make_unique<Adder<Value>>(sum, subject));
  }
  int value = 0;
  for (auto _ : state) {
    subject->valueIs(++value);
    benchmark::ClobberMemory();
  }
  perItem(state, 1);
}
BENCHMARK(notify)->Name("notify/zorb")->Arg(0)->Arg(1)->Arg(8);

void unchanged(benchmark::State& state) {
  std::uint64_t sum = 0;
  const auto subject = Orm::make<Value>();
  const Adder<Value> notifiee(sum, subject);
  int value = 42;
  subject->valueIs(value);
  for (auto _ : state) {
    benchmark::DoNotOptimize(value);
    subject->valueIs(value);
    benchmark::ClobberMemory();
  }
  perItem(state, 1);
}
BENCHMARK(unchanged)->Name("unchanged/zorb");

/// The text is given as another handle, made from the same characters apart.
void unchangedText(benchmark::State& state) {
  std::uint64_t sum = 0;
  const auto subject = Orm::make<Value>();
  const Adder<Value> notifiee(sum, subject);
  subject->textIs(kText);
  Orm::String given(kText);
  for (auto _ : state) {
    benchmark::DoNotOptimize(given);
    subject->textIs(given);
    benchmark::ClobberMemory();
  }
  perItem(state, 1);
}
BENCHMARK(unchangedText)->Name("unchangedText/zorb");

/// The text is given as characters, of which a handle has to be made first.
void unchangedCharacters(benchmark::State& state) {
  std::uint64_t sum = 0;
  const auto subject = Orm::make<Value>();
  const Adder<Value> notifiee(sum, subject);
  subject->textIs(kText);
  std::string_view given = kText;
  for (auto _ : state) {
    benchmark::DoNotOptimize(given);
    subject->textIs(given);
    benchmark::ClobberMemory();
  }
  perItem(state, 1);
}
BENCHMARK(unchangedCharacters)->Name("unchangedText/zorbFromCharacters");

void life(benchmark::State& state) {
  std::uint64_t sum = 0;
  for (auto _ : state) {
    const auto subject = Orm::make<Plain>();
    const Adder<Plain> notifiee(sum, subject);
    subject->valueIs(1);
  }
  state.counters["bytes"] = sizeof(Plain) + sizeof(Adder<Plain>);
  perItem(state, 1);
}
BENCHMARK(life)->Name("life/zorb");

// ---- beside it

struct Called {
  virtual ~Called() = default;
  virtual void onValue(int value) = 0;
};
struct Sums final : Called {
  std::uint64_t sum = 0;
  void onValue(int value) override {
    sum += static_cast<std::uint64_t>(value);
    benchmark::DoNotOptimize(sum);
  }
};
struct SumsMore final : Called {  // without another class the call need not be virtual
  std::uint64_t sum = 0;
  void onValue(int value) override {
    sum += static_cast<std::uint64_t>(value) + 1;
    benchmark::DoNotOptimize(sum);
  }
};

void rawVirtual(benchmark::State& state) {
  const auto count = static_cast<std::size_t>(state.range(0));
  std::vector<std::unique_ptr<Called>> kept;
  Called* called[8] = {};
  for (std::size_t at = 0; at != count; ++at) {
    if (at == 5) {
      kept.push_back(std::make_unique<SumsMore>());
    } else {
      kept.push_back(std::make_unique<Sums>());
    }
    called[at] = kept.back().get();
  }
  int value = 0;
  if (count == 1) {
    for (auto _ : state) {
      benchmark::DoNotOptimize(called[0]);
      called[0]->onValue(++value);
    }
  } else {
    for (auto _ : state) {
      benchmark::DoNotOptimize(called);
      ++value;
      for (Called* one : called) one->onValue(value);
    }
  }
  perItem(state, 1);
}
BENCHMARK(rawVirtual)->Name("notify/rawVirtual")->Arg(1)->Arg(8);

void functions(benchmark::State& state) {
  std::uint64_t sum = 0;
  std::vector<std::function<void(int)>> notifiees;
  for (std::int64_t at = 0; at != state.range(0); ++at) {
    notifiees.emplace_back([&sum](int value) {
      sum += static_cast<std::uint64_t>(value);
      benchmark::DoNotOptimize(sum);
    });
  }
  int value = 0;
  for (auto _ : state) {
    ++value;
    for (const auto& notifiee : notifiees) notifiee(value);
    benchmark::ClobberMemory();
  }
  perItem(state, 1);
}
BENCHMARK(functions)->Name("notify/function")->Arg(0)->Arg(1)->Arg(8);

void functionLife(benchmark::State& state) {
  struct Subject {
    int value = 0;
    std::vector<std::function<void(int)>> notifiees;
  };
  std::uint64_t sum = 0;
  for (auto _ : state) {
    const auto subject = std::make_unique<Subject>();
    subject->notifiees.emplace_back([&sum](int value) { sum += static_cast<unsigned>(value); });
    subject->value = 1;
    for (const auto& notifiee : subject->notifiees) notifiee(subject->value);
    benchmark::DoNotOptimize(sum);
  }
  perItem(state, 1);
}
BENCHMARK(functionLife)->Name("life/function");

void emptyLoop(benchmark::State& state) {
  for (auto _ : state) benchmark::ClobberMemory();
  perItem(state, 1);
}
BENCHMARK(emptyLoop)->Name("unchanged/emptyLoop");

/// One addition after the other: as many cycles as additions.
void cycle(benchmark::State& state) {
  std::uint64_t sum = 1;
  for (auto _ : state) {
    for (int at = 0; at != 1000; ++at) asm volatile("add $1, %0" : "+r"(sum));
  }
  perItem(state, 1000);
}
BENCHMARK(cycle)->Name("unchanged/cycle");

void compareText(benchmark::State& state) {
  std::string stored = kText;
  std::string given = stored;
  for (auto _ : state) {
    benchmark::DoNotOptimize(given);
    if (given != stored) stored = given;
    benchmark::ClobberMemory();
  }
  perItem(state, 1);
}
BENCHMARK(compareText)->Name("unchangedText/compare");

}  // namespace
