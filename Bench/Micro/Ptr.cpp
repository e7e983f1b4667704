// Counted handles: Ptr, plain and thread-safe, beside a plain count and std::shared_ptr.

#include "Platform/Orm/Ptr.h"

#include <memory>

#include "Bench/Micro/Support.h"
#include "Platform/Kobble/Kobble.h"

namespace {

using Bench::perItem;

struct Words {
  std::uint64_t words[4] = {};
};
struct Object : Orm::PtrInterface, Words {};

/// The least that counting can be.
struct Counted : Words {
  std::uint32_t count = 0;
};
class PlainCount {
 public:
  PlainCount() = default;
  explicit PlainCount(Counted* object) : object_(object) { ++object_->count; }
  PlainCount(const PlainCount& other) : object_(other.object_) {
    if (object_) ++object_->count;
  }
  PlainCount& operator=(PlainCount other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~PlainCount() {
    if (object_ && --object_->count == 0) delete object_;
  }

 private:
  Counted* object_ = nullptr;
};

template <class Handle>
Handle make() {
  if constexpr (std::is_same_v<Handle, PlainCount>) {
    return PlainCount(new Counted);
  } else if constexpr (std::is_same_v<Handle, std::shared_ptr<Words>>) {
    return std::make_shared<Words>();
  } else {
    return Handle(new Object);
  }
}

/// Makes Ptr thread-safe for the time of a benchmark.
class ThreadSafe {
 public:
  explicit ThreadSafe(bool on) { Orm::threadSafePtrsIs(on); }
  ~ThreadSafe() { Orm::threadSafePtrsIs(false); }
  ThreadSafe(const ThreadSafe&) = delete;
  ThreadSafe& operator=(const ThreadSafe&) = delete;
};

template <class Handle, bool threadSafe = false>
void copyHot(benchmark::State& state) {
  const ThreadSafe setting(threadSafe);
  auto handle = make<Handle>();
  for (auto _ : state) {
    benchmark::DoNotOptimize(handle);
    Handle copy(handle);
    benchmark::DoNotOptimize(copy);
  }
  perItem(state, 1);
}

/// Handles of many objects: the counts are spread over the caches.
template <class Handle, bool threadSafe = false>
void copySpread(benchmark::State& state) {
  constexpr std::uint32_t kObjects = 50'000;
  const ThreadSafe setting(threadSafe);
  std::vector<Handle> made;
  for (std::uint32_t at = 0; at != kObjects; ++at) made.push_back(make<Handle>());
  std::vector<Handle> from;
  for (const std::uint32_t at : Bench::shuffled(kObjects, 1)) from.push_back(made[at]);
  std::vector<Handle> to(kObjects);
  for (auto _ : state) {
    for (std::size_t at = 0; at != kObjects; ++at) to[at] = from[at];
    for (Handle& one : to) one = Handle();
  }
  perItem(state, kObjects);
}

template <class Handle, bool threadSafe = false>
void create(benchmark::State& state) {
  const ThreadSafe setting(threadSafe);
  for (auto _ : state) {
    auto handle = make<Handle>();
    benchmark::DoNotOptimize(handle);
  }
  perItem(state, 1);
}

using Ptr = Orm::Ptr<Object>;
using Shared = std::shared_ptr<Words>;

BENCHMARK(copyHot<Ptr>)->Name("copyHot/zorb");
BENCHMARK(copyHot<Ptr, true>)->Name("copyHot/zorbThreadSafe");
BENCHMARK(copyHot<PlainCount>)->Name("copyHot/plainCount");
BENCHMARK(copyHot<Shared>)->Name("copyHot/sharedPtr");
BENCHMARK(copySpread<Ptr>)->Name("copySpread/zorb");
BENCHMARK(copySpread<Ptr, true>)->Name("copySpread/zorbThreadSafe");
BENCHMARK(copySpread<PlainCount>)->Name("copySpread/plainCount");
BENCHMARK(copySpread<Shared>)->Name("copySpread/sharedPtr");
BENCHMARK(create<Ptr>)->Name("create/zorb");
BENCHMARK(create<Ptr, true>)->Name("create/zorbThreadSafe");
BENCHMARK(create<PlainCount>)->Name("create/plainCount");
BENCHMARK(create<Shared>)->Name("create/sharedPtr");

}  // namespace
