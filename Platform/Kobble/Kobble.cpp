#include "Platform/Kobble/Kobble.h"

#include <cxxabi.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <new>

#if KOBBLE_POISONS
#include <sanitizer/asan_interface.h>
#endif

namespace Kobble {

namespace {

const TypeRecord* firstRecord = nullptr;

// Chunks stay reachable so that leak checkers see them as what they are.
struct Chunk {
  Chunk* next;
  Chunk* padding;  // keeps slots of a multiple of 16 bytes aligned to 16
};
static_assert(sizeof(Chunk) % 16 == 0 && sizeof(detail::Slot) <= kStep);
Chunk* firstChunk = nullptr;

void refill(std::size_t index) {
  auto* chunk = static_cast<Chunk*>(::operator new(kChunkSize));
  chunk->next = firstChunk;
  firstChunk = chunk;
  auto* const slots = reinterpret_cast<char*>(chunk + 1);
  const std::size_t size = index * kStep;
  // From the back, so that slots are handed out in the order of their addresses.
  for (std::size_t at = (kChunkSize - sizeof(Chunk)) / size * size; at >= size; at -= size) {
    auto* slot = reinterpret_cast<detail::Slot*>(slots + at - size);
    slot->next = detail::state.free[index];
    detail::state.free[index] = slot;
    if constexpr (detail::kPoison) detail::poison(slot, size);
  }
}

}  // namespace

namespace detail {

void* slowAllocate(std::size_t size) {
  if (slabbed(size)) {
    refill(classOf(size));
    return allocate(size);
  }
  state.bytesInUse += size;
  return ::operator new(size);
}

void slowDeallocate(void* block, std::size_t size) noexcept {
  state.bytesInUse -= size;
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

bool slabsEnabled() { return detail::state.enabled; }

void slabsEnabledIs(bool enabled) {
  if (enabled == detail::state.enabled) return;
  if (detail::state.bytesInUse != 0) {
    std::fputs("Kobble: slabs cannot be switched while blocks are in use\n", stderr);
    std::abort();
  }
  detail::state.enabled = enabled;
}

std::size_t bytesInUse() { return detail::state.bytesInUse; }

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
