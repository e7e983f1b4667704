#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <typeinfo>
#include <vector>

/// The slab allocator of entities, machines and reactors, with counts of live objects per type.
///
/// Memory comes in chunks that are cut into slots of one size class (8-byte steps) and go back to
/// a free list of that class: a get and a put are a few instructions, objects of a kind lie
/// together, and there is no header per object. Chunks are kept for the life of the process.
/// Larger blocks go to the system's allocator. Loop thread only.
namespace Kobble {

inline constexpr std::size_t kStep = 8;               // bytes between size classes
inline constexpr std::size_t kLargestSlot = 512;      // bytes; larger blocks are not slabbed
inline constexpr std::size_t kChunkSize = 64 * 1024;  // bytes

/// Slabs are on by default (off in builds with ZORB_SLABS=0). They may only be switched while
/// nothing that was allocated here is still in use; anything else stops the process.
bool slabsEnabled();
void slabsEnabledIs(bool enabled);

/// Bytes in use by callers, those in slabs with the whole of their slots. For tests and reports:
/// nothing is counted when blocks come and go, so that this walks all free slots.
std::size_t bytesInUse();

namespace detail {

struct Slot {
  Slot* next;
};

/// The free slots of each size class; of none while slabs are off.
using FreeSlots = std::array<Slot*, kLargestSlot / kStep + 1>;

inline constinit FreeSlots freeSlots{};
inline constinit bool enabled = ZORB_SLABS != 0;

void* slowAllocate(std::size_t size);
void slowDeallocate(void* block, std::size_t size) noexcept;

// Under AddressSanitizer a slot is poisoned while it is free.
#if defined(__SANITIZE_ADDRESS__)
#define KOBBLE_POISONS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KOBBLE_POISONS 1
#endif
#endif
#ifndef KOBBLE_POISONS
#define KOBBLE_POISONS 0
#endif
inline constexpr bool kPoison = KOBBLE_POISONS != 0;

void poison(void* block, std::size_t size) noexcept;
void unpoison(void* block, std::size_t size) noexcept;

constexpr std::size_t classOf(std::size_t size) { return (size + kStep - 1) / kStep; }

/// Whether blocks of `size` bytes come from slabs while they are on; those of no bytes do not.
constexpr bool fitsSlot(std::size_t size) { return size - 1 < kLargestSlot; }

}  // namespace detail

/// A block of at least `size` bytes, aligned to 16 when `size` is a multiple of 16 and to 8 at
/// least otherwise, which is what an object of that size may need. Throws std::bad_alloc as
/// operator new.
inline void* allocate(std::size_t size) {
  if (detail::fitsSlot(size)) [[likely]] {
    const std::size_t index = detail::classOf(size);
    if (detail::Slot* const slot = detail::freeSlots[index]) [[likely]] {
      if constexpr (detail::kPoison) detail::unpoison(slot, index * kStep);
      detail::freeSlots[index] = slot->next;
      __builtin_prefetch(slot->next);  // the next one to go, which may lie anywhere
      return slot;
    }
  }
  return detail::slowAllocate(size);
}

/// Gives back a block; `size` is the size it was asked for with.
inline void deallocate(void* block, std::size_t size) noexcept {
  if (detail::fitsSlot(size) && detail::enabled) [[likely]] {
    const std::size_t index = detail::classOf(size);
    auto* const slot = static_cast<detail::Slot*>(block);
    slot->next = detail::freeSlots[index];
    detail::freeSlots[index] = slot;
    if constexpr (detail::kPoison) detail::poison(block, index * kStep);
    return;
  }
  detail::slowDeallocate(block, size);
}

/// One counted type; lives as long as the process and links itself into the list of types.
class TypeRecord {
 public:
  TypeRecord(const std::type_info& type, const std::size_t& live);
  TypeRecord(const TypeRecord&) = delete;
  TypeRecord& operator=(const TypeRecord&) = delete;

  std::string name() const;  // demangled
  std::size_t live() const { return *live_; }
  const TypeRecord* next() const { return next_; }

 private:
  const std::type_info* type_;
  const std::size_t* live_;
  const TypeRecord* next_;
};

/// Base of a class whose live objects are counted: `class Mounter : ..., Kobble::Counted<Mounter>`.
/// Adds no bytes. Only the class that names itself is counted, not what derives from it.
template <class T>
class Counted {
 protected:
  Counted() { add(); }
  Counted(const Counted&) { add(); }
  Counted& operator=(const Counted&) = default;
  ~Counted() { --live_; }

 private:
  static void add() {
    ++live_;
    static_cast<void>(&record_);  // makes the record exist
  }
  static inline constinit std::size_t live_ = 0;
  static inline TypeRecord record_{typeid(T), live_};
};

struct TypeCount {
  std::string name;
  std::size_t live;
};

/// How many counted objects are alive, altogether and per type (types with none are left out,
/// sorted by name). O(number of types).
std::size_t liveObjects();
std::vector<TypeCount> liveTypes();

}  // namespace Kobble
