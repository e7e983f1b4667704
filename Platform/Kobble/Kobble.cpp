#include "Platform/Kobble/Kobble.h"

#include <cxxabi.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <new>

#if KOBBLE_POISONS
#include <sanitizer/asan_interface.h>
#endif

namespace Kobble {

namespace {

constexpr std::size_t kCacheLine = 64;

const TypeRecord* firstRecord = nullptr;

// Chunks stay reachable so that leak checkers see them as what they are. They begin with a cache
// line, so that slots whose size divides one lie in one each.
struct alignas(kCacheLine) Chunk {
  Chunk* next;
};
Chunk* firstChunk = nullptr;

detail::FreeSlotsByClass setAside;               // while slabs are off
std::array<std::size_t, setAside.size()> cut{};  // slots that there are of each class
std::size_t bytesElsewhere = 0;                  // in use, but not in slabs

void refill(std::size_t index) {
  auto* chunk = static_cast<Chunk*>(::operator new (kChunkSize, std::align_val_t{alignof(Chunk)}));
  chunk->next = firstChunk;
  firstChunk = chunk;
  auto* const slots = reinterpret_cast<char*>(chunk + 1);
  const std::size_t size = index * kStep;
  // From the back, so that slots are handed out in the order of their addresses.
  for (std::size_t at = (kChunkSize - sizeof(Chunk)) / size * size; at >= size; at -= size) {
    deallocate(slots + at - size, size);
    ++cut[index];
  }
}

}  // namespace

namespace detail {

void* slowAllocate(std::size_t size) {
  if (fitsSlot(size) && enabled) {
    refill(classOf(size));
    return allocate(size);
  }
  void* const block = ::operator new(size);
  bytesElsewhere += size;
  return block;
}

void slowDeallocate(void* block, std::size_t size) noexcept {
  bytesElsewhere -= size;
  ::operator delete(block, size);
}

void poison([[maybe_unused]] void* block, [[maybe_unused]] std::size_t size) noexcept {
#if KOBBLE_POISONS
  ASAN_POISON_MEMORY_REGION(block, size);
#endif
}

void unpoison([[maybe_unused]] void* block, [[maybe_unused]] std::size_t size) noexcept {
#if KOBBLE_POISONS
  ASAN_UNPOISON_MEMORY_REGION(block, size);
#endif
}

}  // namespace detail

bool slabsEnabled() { return detail::enabled; }

void slabsEnabledIs(bool enabled) {
  if (enabled == detail::enabled) return;
  if (bytesInUse() != 0) {
    std::fputs("Kobble: slabs cannot be switched while blocks are in use\n", stderr);
    std::abort();
  }
  detail::enabled = enabled;
  detail::freeSlots.swap(setAside);
}

std::size_t bytesInUse() {
  std::size_t bytes = bytesElsewhere;
  if (!detail::enabled) return bytes;
  for (std::size_t index = 1; index != cut.size(); ++index) {
    bytes += (cut[index] - detail::freeSlots[index].count(index * kStep)) * index * kStep;
  }
  return bytes;
}

TypeRecord::TypeRecord(const std::type_info& type, const std::size_t& live)
    : type_(&type), live_(&live), next_(firstRecord) {
  firstRecord = this;
}

std::string TypeRecord::name() const {
  int status = 0;
  char* text = abi::__cxa_demangle(type_->name(), nullptr, nullptr, &status);
  std::string result = status == 0 ? text : type_->name();
  std::free(text);
  return result;
}

std::size_t liveObjects() {
  std::size_t live = 0;
  for (const TypeRecord* record = firstRecord; record; record = record->next())
    live += record->live();
  return live;
}

std::vector<TypeCount> liveTypes() {
  std::vector<TypeCount> counts;
  for (const TypeRecord* record = firstRecord; record; record = record->next()) {
    if (record->live() != 0) counts.push_back({record->name(), record->live()});
  }
  std::sort(counts.begin(), counts.end(),
            [](const TypeCount& a, const TypeCount& b) { return a.name < b.name; });
  return counts;
}

}  // namespace Kobble
