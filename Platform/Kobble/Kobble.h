#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <typeinfo>
#include <vector>

#include "Platform/Kobble/FreeSlots.h"

/// The slab allocator of entities, machines and reactors, with counts of live objects per type.
///
/// Memory comes in chunks that are cut into slots of one size class (8-byte steps) and go back to
/// the free slots of that class (FreeSlots): a get and a put are a few instructions, objects of a
/// kind lie together, and there is no header per object. Chunks are kept for the life of the
/// process. Larger blocks go to the system's allocator. Loop thread only.
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

/// By size class; there are none while slabs are off.
using FreeSlotsByClass = std::array<FreeSlots, kLargestSlot / kStep + 1>;

inline constinit FreeSlotsByClass freeSlots{};
inline constinit bool enabled = ZORB_SLABS != 0;

void* slowAllocate(std::size_t size);
void slowDeallocate(void* block, std::size_t size) noexcept;

inline constexpr bool kPoison = KOBBLE_POISONS != 0;

void poison(void* block, std::size_t size) noexcept;
void unpoison(void* block, std::size_t size) noexcept;

constexpr std::size_t classOf(std::size_t size) { return (size + kStep - 1) / kStep; }
constexpr std::size_t slotSize(std::size_t size) { return classOf(size) * kStep; }

/// Whether blocks of `size` bytes come from slabs while they are on; those of no bytes do not.
constexpr bool fitsSlot(std::size_t size) { return size - 1 < kLargestSlot; }

}  // namespace detail

/// A block of at least `size` bytes, aligned to 16 when `size` is a multiple of 16 and to 8 at
/// least otherwise, which is what an object of that size may need. Throws std::bad_alloc as
/// operator new.
inline void* allocate(std::size_t size) {
  if (detail::fitsSlot(size)) [[likely]] {
    if (void* const slot = detail::freeSlots[detail::classOf(size)].take(detail::slotSize(size)))
        [[likely]] {
      if constexpr (detail::kPoison) detail::unpoison(slot, detail::slotSize(size));
      return slot;
    }
  }
  return detail::slowAllocate(size);
}

/// Gives back a block; `size` is the size it was asked for with.
inline void deallocate(void* block, std::size_t size) noexcept {
  if (detail::fitsSlot(size) && detail::enabled) [[likely]] {
    detail::freeSlots[detail::classOf(size)].give(block, detail::slotSize(size));
    if constexpr (detail::kPoison) detail::poison(block, detail::slotSize(size));
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
