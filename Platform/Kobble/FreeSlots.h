#pragma once

#include <cstddef>
#include <cstdint>

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

namespace Kobble::detail {

/// The free slots of a size class, kept in those slots themselves; the one that came last goes
/// first.
///
/// A list through them has to wait for each slot, which may lie anywhere, before it knows the next
/// one. Slots of a cache line and more are a stack instead, in which one of several is a page: its
/// first word leads to the page below, the others tell of a free slot each, and the page goes when
/// they are used up. So the next to go are known without a look at them. Smaller slots make a list
/// all the same: of them a page would hold too few to be worth the branch.
///
/// One a size class, owned by the allocator and called by nothing else; loop thread only. Taking
/// and giving are O(1). `size` is always that of the class, in bytes, which are whole words.
class FreeSlots {
 public:
  constexpr FreeSlots() = default;

  /// Null when there is none.
  void* take(std::size_t size) {
    const Word word = read(top_);
    if (isList(size)) return word != kBelow ? takeFirst(word) : nullptr;
    if ((word & kBelow) != 0) return word != kBelow ? takePage(word) : nullptr;
    --top_;
    __builtin_prefetch(reinterpret_cast<const void*>(read(top_)));  // the next one to go
    return reinterpret_cast<void*>(word);
  }

  void give(void* slot, std::size_t size) {
    if (isList(size)) {
      giveFirst(static_cast<Word*>(slot));
    } else if (top_ != last_) {
      write(++top_, reinterpret_cast<Word>(slot));
    } else {
      givePage(static_cast<Word*>(slot), size);
    }
  }

  /// How many there are. Walks all of them.
  std::size_t count(std::size_t size) const;

 private:
  using Word = std::uintptr_t;
  static constexpr std::size_t kLeastPage = 64;  // bytes, a cache line
  static constexpr Word kBelow = 1;              // marks a page's first word

  static bool isList(std::size_t size) { return size < kLeastPage; }

  void* takeFirst(Word next) {
    Word* const first = top_;
    top_ = reinterpret_cast<Word*>(next);
    __builtin_prefetch(top_);  // the next one to go
    return first;
  }
  void giveFirst(Word* slot) {
    write(slot, reinterpret_cast<Word>(top_));
    top_ = slot;
  }

  void* takePage(Word word) {
    Word* const page = top_;
    top_ = reinterpret_cast<Word*>(word - kBelow);
    last_ = top_;  // a page is full when another one comes to stand on it
    return page;
  }
  void givePage(Word* slot, std::size_t size) {
    write(slot, reinterpret_cast<Word>(top_) + kBelow);
    top_ = slot;
    last_ = slot + size / sizeof(Word) - 1;
  }

#if KOBBLE_POISONS
  static Word read(const Word* at);
  static void write(Word* at, Word word);
#else
  static Word read(const Word* at) { return *at; }
  static void write(Word* at, Word word) { *at = word; }
#endif

  /// What all others stand on: a page without room, below which there is nothing.
  static inline constinit Word ground_ = kBelow;

  Word* top_ = &ground_;   // of a list the first slot, else the last word in use of the top page
  Word* last_ = &ground_;  // the last word of the top page
};

}  // namespace Kobble::detail
