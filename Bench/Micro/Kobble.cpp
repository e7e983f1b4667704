// The slab allocator beside a free list, mimalloc and the system's malloc.

#include "Platform/Kobble/Kobble.h"

#include <mimalloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>

#include "Bench/Micro/Support.h"

namespace {

using Bench::perItem;

template <std::size_t size>
struct Slabs {
  void* get() { return Kobble::allocate(size); }
  void put(void* block) { Kobble::deallocate(block, size); }
};

/// The least that an allocator can do: a list through the free places of 64 KiB chunks.
template <std::size_t size>
class FreeList {
 public:
  void* get() {
    if (!free_) [[unlikely]]
      refill();
    Place* const place = free_;
    free_ = place->next;
    return place;
  }
  void put(void* block) {
    auto* const place = static_cast<Place*>(block);
    place->next = free_;
    free_ = place;
  }

 private:
  struct Place {
    Place* next;
  };
  struct Chunk {
    alignas(16) std::array<char, 65536> bytes;
  };
  void refill() {
    chunks_.emplace_back(new Chunk);  // not initialised
    char* const bytes = chunks_.back()->bytes.data();
    for (std::size_t at = sizeof(Chunk) / size * size; at != 0; at -= size) put(bytes + at - size);
  }

  Place* free_ = nullptr;
  std::vector<std::unique_ptr<Chunk>> chunks_;
};

template <std::size_t size>
struct Mimalloc {
  void* get() { return mi_malloc(size); }
  void put(void* block) { mi_free(block); }
};

template <class Allocator>
void pair(benchmark::State& state) {
  Allocator allocator;
  for (auto _ : state) {
    void* block = allocator.get();
    benchmark::DoNotOptimize(block);
    allocator.put(block);
  }
  perItem(state, 1);
}

double residentBytes() {
  std::ifstream statm("/proc/self/statm");
  double size = 0;
  double resident = 0;
  statm >> size >> resident;
  return resident * static_cast<double>(sysconf(_SC_PAGESIZE));
}

/// Resident bytes of one object of a million, told by a child whose heap is nearly empty.
template <class Allocator>
double residentPerObject() {
  constexpr std::size_t kObjects = 1'000'000;
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) return 0;
  const pid_t child = fork();
  if (child == 0) {
    Allocator allocator;
    const double before = residentBytes();
    for (std::size_t at = 0; at != kObjects; ++at) {
      *static_cast<std::size_t*>(allocator.get()) = at;
    }
    const double bytes = (residentBytes() - before) / kObjects;
    _exit(write(ends[1], &bytes, sizeof bytes) == sizeof bytes ? 0 : 1);
  }
  double bytes = 0;
  if (read(ends[0], &bytes, sizeof bytes) != sizeof bytes) bytes = 0;
  waitpid(child, nullptr, 0);
  close(ends[0]);
  close(ends[1]);
  return bytes;
}

/// 10,000 live objects, each written to, given back in another order.
template <class Allocator>
void churn(benchmark::State& state) {
  constexpr std::uint32_t kLive = 10'000;
  Allocator allocator;
  std::vector<void*> live(kLive);
  const auto order = Bench::shuffled(kLive, 3);
  for (auto _ : state) {
    for (void*& block : live) {
      block = allocator.get();
      *static_cast<std::uint64_t*>(block) = 1;
    }
    benchmark::ClobberMemory();
    for (const std::uint32_t at : order) allocator.put(live[at]);
  }
  perItem(state, kLive);
}

template <class Allocator>
void add(const std::string& who, std::size_t size) {
  const std::string tail = "/" + who + "/" + std::to_string(size);
  const double bytes = residentPerObject<Allocator>();
  benchmark::RegisterBenchmark(("getPut" + tail).c_str(), pair<Allocator>);
  benchmark::RegisterBenchmark(("churn" + tail).c_str(), [bytes](benchmark::State& state) {
    churn<Allocator>(state);
    state.counters["bytes"] = bytes;
  });
}

template <std::size_t size>
void addSize() {
  add<Slabs<size>>("zorb", size);
  add<FreeList<size>>("freeList", size);
  add<Mimalloc<size>>("mimalloc", size);
}

const bool added = [] {
  addSize<64>();
  addSize<128>();
  addSize<256>();
  return true;
}();

}  // namespace
