#include "Platform/Kobble/Kobble.h"

#include <cxxabi.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <utility>

#if KOBBLE_POISONS
#include <sanitizer/asan_interface.h>
#endif

namespace Kobble {

namespace {

const TypeRecord* firstRecord = nullptr;

/// Where chunks are cut from: pieces that come from the system's allocator.
///
/// The first of it comes in small pieces. When a process has used that up, it will use more: then
/// pieces are large, on pages of their size if the system has such, which cost less when they are
/// touched for the first time, and in every search of a page table. What was not cut from a piece
/// takes no memory but for the end of its last page.
class Supply {
 public:
  struct Chunk {
    char* begin;  // aligned to 16
    std::size_t size;
  };
  /// A chunk that has room for a slot at least: the last one of a piece is smaller than others.
  Chunk chunk() {
    if (left_ < kLargestSlot) refill();
    const std::size_t size = std::min(kChunkSize, left_);
    left_ -= size;
    return {std::exchange(next_, next_ + size), size};
  }

 private:
  static constexpr std::size_t kSmallPiece = 4 * kChunkSize;
  static constexpr std::size_t kLargePage = std::size_t{2} << 20;
  static constexpr std::size_t kSmallPieces = 2 * kLargePage;  // bytes, all of them
  static constexpr std::size_t kLargestPiece = 16 * kLargePage;

  // Pieces stay reachable so that leak checkers see them as what they are.
  struct alignas(16) Piece {
    Piece* next;
  };

  void refill() {
    std::size_t size = kSmallPiece;
    void* memory = nullptr;
    if (taken_ < kSmallPieces) {
      memory = ::operator new(size);
    } else {
      size = std::clamp(taken_ / 4 / kLargePage * kLargePage, kLargePage, kLargestPiece);
      memory = ::operator new (size, std::align_val_t{kLargePage});
      madvise(memory, size, MADV_HUGEPAGE);  // a wish: without it the pages are small ones
    }
    taken_ += size;
    first_ = ::new (memory) Piece{first_};
    next_ = reinterpret_cast<char*>(first_ + 1);
    left_ = size - sizeof(Piece);
  }

  Piece* first_ = nullptr;
  char* next_ = nullptr;  // of the first piece: what was not cut off yet
  std::size_t left_ = 0;
  std::size_t taken_ = 0;
};
constinit Supply supply;

void refill(std::size_t index) {
  const std::size_t size = index * kStep;
  const Supply::Chunk chunk = supply.chunk();
  // From the back, so that slots are handed out in the order of their addresses.
  for (std::size_t at = chunk.size / size * size; at != 0; at -= size) {
    auto* const slot = reinterpret_cast<detail::Slot*>(chunk.begin + at - size);
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
