#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <utility>

#include "Platform/Kobble/Kobble.h"
#include "Platform/Orm/ActivityScope.h"
#include "Platform/Orm/Assert.h"
#include "Platform/Orm/Inline.h"

namespace Orm {

namespace detail {

/// An index entry of 24 bits, which are enough to know the upper half of the hash: from that a
/// larger index is built without a look at the members, which lie scattered and most of which were
/// not touched for long.
class NarrowEntry {
 public:
  static constexpr std::uint32_t kBits = 24;
  static std::uint32_t tag(std::uint32_t hash, std::uint32_t bits) {
    return hash >> (32 - kBits) & ~0U << bits;
  }
  operator std::uint32_t() const {
    std::uint16_t lower;
    std::memcpy(&lower, bytes_, sizeof lower);
    return lower | std::uint32_t{bytes_[sizeof lower]} << 16;
  }
  NarrowEntry& operator=(std::uint32_t entry) {
    const auto lower = static_cast<std::uint16_t>(entry);
    std::memcpy(bytes_, &lower, sizeof lower);
    bytes_[sizeof lower] = static_cast<std::uint8_t>(entry >> 16);
    return *this;
  }

 private:
  std::uint8_t bytes_[3];
};

/// One of 32 bits, with the lower bits of the hash: the upper ones say where the entry is.
class WideEntry {
 public:
  static std::uint32_t tag(std::uint32_t hash, std::uint32_t bits) { return hash << bits; }
  operator std::uint32_t() const { return entry_; }
  WideEntry& operator=(std::uint32_t entry) {
    entry_ = entry;
    return *this;
  }

 private:
  std::uint32_t entry_;
};

}  // namespace detail

/// A hash table whose members stand in a dense array in order of insertion, with an index of
/// places beside it; the ground that the collections stand on.
///
/// Traits: Slot and Key; `const Key& key(const Slot&)`, `bool live(const Slot&)`,
/// `void kill(Slot&)` (leaves a slot that is not live), `std::uint32_t hash(const Key&)`.
///
/// find, insert and take are O(1) (amortised); up to kLinear members there is no index at all and
/// a search compares one by one. Walks visit the members that are present when they begin and are
/// reached, in order of insertion; members may come and go during a walk, the one that is visited
/// too. A member that comes during a walk is not visited by it, also when it stands under the key
/// of one that went. Insertion and removal invalidate references to slots.
template <class Traits>
class DenseTable {
 public:
  using Slot = typename Traits::Slot;
  using Key = typename Traits::Key;

  DenseTable() = default;
  DenseTable(const DenseTable&) = delete;
  DenseTable& operator=(const DenseTable&) = delete;
  ~DenseTable() {
    assertThat(walks_ == 0, "walks_ == 0");
    clear();
  }

  std::uint32_t size() const { return used_ - dead_; }
  bool empty() const { return used_ == dead_; }

  Slot* find(const Key& key) const {
    const std::uint32_t at = place(key);
    return at == kNowhere ? nullptr : slots_ + at;
  }

  /// Where a member was found last. Never wrong, whatever has become of the table meanwhile: the
  /// slot there is the member that is looked for, or the search is made.
  using Hint = std::uint32_t;

  /// The same for who looks for one member many times in a row: a compare, and no hashing.
  ORM_ALWAYS_INLINE Slot* find(const Key& key, Hint& hint) const {
    Slot* const found = findAt(hint, key);
    return found ? found : search(key, hint);
  }
  /// The member that the hint leads to, null when it has another key, or there is none.
  ORM_ALWAYS_INLINE Slot* findAt(Hint hint, const Key& key) const {
    return isAt(hint, key) ? slots_ + hint : nullptr;
  }

  /// Appends a slot whose key is absent; one that is present stops the process.
  Slot& insert(Slot slot) {
    if (used_ == capacity_) makeRoom();
    if (!index_) {
      assertThat(place(Traits::key(slot)) == kNowhere, "!has( key )");
    } else if (indexIsFull()) {
      reindex();
    }
    Slot* const added = std::construct_at(slots_ + used_, std::move(slot));
    ++used_;
    if (index_) {
      put(used_ - 1);
    } else if (used_ > kLinear) {
      reindex();
    }
    return *added;
  }

  /// Where the member that was inserted last stands.
  Hint last() const { return used_ - 1; }

  /// Takes the member out; the slot that is returned is not live when there was none.
  Slot take(const Key& key) {
    const std::uint32_t at = place(key);
    return at == kNowhere ? Slot() : takeAt(at);
  }
  /// The same for who has just looked for the member.
  Slot take(const Key& key, Hint& hint) { return find(key, hint) ? takeAt(hint) : Slot(); }

  void clear() {
    if (walks_ != 0) {
      // A walk is under way: its places must stay what they are. Each member goes when the table
      // no longer knows it, and may change the table then.
      dropIndex();
      for (std::uint32_t at = 0, end = used_; at != end; ++at) {
        if (Traits::live(slots_[at])) static_cast<void>(remove(at));
      }
      return;
    }
    Slot* const slots = std::exchange(slots_, nullptr);
    const std::uint32_t used = std::exchange(used_, 0);
    const std::uint32_t capacity = std::exchange(capacity_, 0);
    dead_ = 0;
    dropIndex();
    std::destroy_n(slots, used);
    if (slots) Kobble::deallocate(slots, capacity * sizeof(Slot));
  }

  /// Calls visit(slot) for each member; see above for what may happen meanwhile. The slot is only
  /// valid until the table changes, so visit copies what it needs beyond that.
  template <class Visit>
  void walk(Visit&& visit) const {
    const Walk guard(*this);
    for (std::uint32_t at = 0, end = used_; at != end; ++at) {
      if (Traits::live(slots_[at])) visit(slots_[at]);
    }
  }

  /// Plain iteration, for bodies that change nothing of the table.
  class Iterator {
   public:
    Iterator(const Slot* at, const Slot* end) : at_(at), end_(end) { skip(); }
    const Slot& operator*() const { return *at_; }
    Iterator& operator++() {
      ++at_;
      skip();
      return *this;
    }
    bool operator==(const Iterator& other) const { return at_ == other.at_; }

   private:
    void skip() {
      while (at_ != end_ && !Traits::live(*at_)) ++at_;
    }
    const Slot* at_;
    const Slot* end_;
  };
  Iterator begin() const { return {slots_, slots_ + used_}; }
  Iterator end() const { return {slots_ + used_, slots_ + used_}; }

 private:
  ORM_ALWAYS_INLINE bool isAt(std::uint32_t at, const Key& key) const {
    return at < used_ && Traits::live(slots_[at]) && Traits::key(slots_[at]) == key;
  }

  /// What is left when a hint does not hold; apart, so that one that holds costs no more than the
  /// compare where it is used. Looks at the next place first: who looks for one member after
  /// another mostly does it in the order in which they came, as a walk over all peers does in the
  /// tables of every entry.
  [[gnu::noinline]] Slot* search(const Key& key, Hint& hint) const {
    const std::uint32_t at = isAt(hint + 1, key) ? hint + 1 : place(key);
    if (at == kNowhere) return nullptr;
    hint = at;
    return slots_ + at;
  }

  static constexpr std::uint32_t kLinear = 8;
  static constexpr std::uint32_t kNowhere = ~0U;

  /// While one exists no slot changes its place.
  class Walk {
   public:
    explicit Walk(const DenseTable& table) : table_(const_cast<DenseTable&>(table)) {
      ++table_.walks_;
    }
    ~Walk() {
      if (--table_.walks_ == 0) table_.tidy();
    }
    Walk(const Walk&) = delete;
    Walk& operator=(const Walk&) = delete;

   private:
    const ActivityScope scope_;  // a machine that owns the table outlives the walk
    DenseTable& table_;
  };

  // An index entry is 0 or, in its low `bits_` bits, a place plus one, and above them bits of the
  // hash of the member that is or was there, so that most mismatches are seen without going to it;
  // each place has one entry at the most. The top `bits_` bits of the hash say where the search
  // begins. Entries of larger tables are wide; what serves them stands apart, so that it costs the
  // others one test.
  using Narrow = detail::NarrowEntry;
  using Wide = detail::WideEntry;
  static constexpr std::uint8_t kNarrowBits = 12;

  static bool isWide(std::uint8_t bits) { return bits > kNarrowBits; }
  static std::size_t indexBytes(std::uint8_t bits) {
    return (isWide(bits) ? sizeof(Wide) : sizeof(Narrow)) << bits;
  }
  bool isWide() const { return isWide(bits_); }
  Narrow* narrow() const { return static_cast<Narrow*>(index_); }
  Wide* wide() const { return static_cast<Wide*>(index_); }
  std::uint32_t mask() const { return (1U << bits_) - 1; }
  std::uint32_t home(std::uint32_t hash) const { return hash >> (32 - bits_); }

  std::uint32_t place(const Key& key) const {
    if (!index_) {
      for (std::uint32_t at = 0; at != used_; ++at) {
        if (Traits::live(slots_[at]) && Traits::key(slots_[at]) == key) return at;
      }
      return kNowhere;
    }
    return isWide() ? placeInWide(key) : placeIn(narrow(), key);
  }
  [[gnu::noinline]] std::uint32_t placeInWide(const Key& key) const { return placeIn(wide(), key); }

  template <class Entry>
  std::uint32_t placeIn(const Entry* index, const Key& key) const {
    const std::uint32_t hash = Traits::hash(key);
    const std::uint32_t low = mask();
    const std::uint32_t tag = Entry::tag(hash, bits_);
    for (std::uint32_t i = home(hash);; i = (i + 1) & low) {
      const std::uint32_t entry = index[i];
      if (entry == 0) return kNowhere;
      if ((entry & ~low) == tag) {
        const std::uint32_t at = (entry & low) - 1;
        if (Traits::live(slots_[at]) && Traits::key(slots_[at]) == key) return at;
      }
    }
  }

  /// Four fifths full at the most with one more; then a place plus one fits in bits_ bits as well.
  bool indexIsFull() const {
    return (std::uint64_t{used_} + 1) * 5 > (std::uint64_t{mask()} + 1) * 4;
  }

  void put(std::uint32_t at) {
    const Key& key = Traits::key(slots_[at]);
    const std::uint32_t hash = Traits::hash(key);
    if (isWide()) {
      putInWide(at, hash, &key);
    } else {
      putIn(narrow(), at, hash, &key);
    }
  }
  [[gnu::noinline]] void putInWide(std::uint32_t at, std::uint32_t hash, const Key* key) {
    putIn(wide(), at, hash, key);
  }

  /// `key`: null when it is known to be there once.
  template <class Entry>
  void putIn(Entry* index, std::uint32_t at, std::uint32_t hash, const Key* key) {
    const std::uint32_t low = mask();
    const std::uint32_t tag = Entry::tag(hash, bits_);
    std::uint32_t i = home(hash);
    for (std::uint32_t entry; (entry = index[i]) != 0; i = (i + 1) & low) {
      if (!key || (entry & ~low) != tag) continue;
      const Slot& other = slots_[(entry & low) - 1];
      assertThat(!(Traits::live(other) && Traits::key(other) == *key), "!has( key )");
    }
    index[i] = tag | (at + 1);
  }

  Slot takeAt(std::uint32_t at) {
    Slot taken = remove(at);
    tidy();
    return taken;
  }

  /// Leaves a dead slot at the place of the member that is returned. The index keeps pointing at
  /// it: to close the gap there, the members behind it would have to be asked for their keys.
  Slot remove(std::uint32_t at) {
    Slot taken = std::move(slots_[at]);
    Traits::kill(slots_[at]);
    ++dead_;
    return taken;
  }

  void dropIndex() {
    if (index_) Kobble::deallocate(index_, indexBytes(bits_));
    index_ = nullptr;
    bits_ = 0;
  }

  /// The least size of an index of so many places, with room for one more.
  static std::uint8_t bitsFor(std::uint32_t places) {
    std::uint8_t bits = 4;
    while (std::uint64_t{places} * 4 > std::uint64_t{3} << bits) ++bits;
    return bits;
  }

  /// Builds the index anew. `moved`: by the places that the index knows, where their members are
  /// now; null when they are where they were.
  void reindex(const std::uint32_t* moved = nullptr) {
    auto* const old = narrow();
    const std::uint8_t oldBits = bits_;
    std::uint8_t bits = bitsFor(used_);
    // Not smaller than it was, unless by much: the members of a smaller one would have to be read.
    if (bits < oldBits && oldBits < bits + 3) bits = oldBits;
    index_ = Kobble::allocate(indexBytes(bits));
    std::memset(index_, 0, indexBytes(bits));
    bits_ = bits;
    if (isWide()) {
      putAllIn(wide());
    } else if (old && oldBits <= bits && oldBits + bits <= Narrow::kBits) {
      putAllOf(old, oldBits, moved);
    } else {
      putAllIn(narrow());
    }
    if (old) Kobble::deallocate(old, indexBytes(oldBits));
  }

  /// Takes the members over from a narrow index that knows as much of their hashes as is needed.
  void putAllOf(const Narrow* old, std::uint8_t oldBits, const std::uint32_t* moved) {
    const std::uint32_t low = (1U << oldBits) - 1;
    for (std::uint32_t i = 0; i <= low; ++i) {
      const std::uint32_t entry = old[i];
      if (entry == 0) continue;
      const std::uint32_t at = (entry & low) - 1;
      const std::uint32_t now = moved ? moved[at] : Traits::live(slots_[at]) ? at : kNowhere;
      const std::uint32_t hash = (entry & ~low) << (32 - Narrow::kBits);
      if (now != kNowhere) putIn(narrow(), now, hash, nullptr);
    }
  }

  /// Reads all members' keys, some at a time and not one after each other's place, so that the
  /// waits for them overlap.
  template <class Entry>
  void putAllIn(Entry* index) {
    constexpr std::uint32_t kAtATime = 32;
    std::array<std::uint32_t, kAtATime> hashes;
    for (std::uint32_t from = 0; from < used_; from += kAtATime) {
      const std::uint32_t count = std::min(kAtATime, used_ - from);
      for (std::uint32_t i = 0; i != count; ++i) {
        const Slot& slot = slots_[from + i];
        if (Traits::live(slot)) hashes[i] = Traits::hash(Traits::key(slot));
      }
      for (std::uint32_t i = 0; i != count; ++i) {
        if (Traits::live(slots_[from + i])) putIn(index, from + i, hashes[i], nullptr);
      }
    }
  }

  void makeRoom() {
    if (walks_ == 0 && dead_ * 4 >= used_ && dead_ != 0) {
      compact();
      return;
    }
    // By a half, and large tables by a quarter: their slack would be what costs.
    const std::uint32_t more = isWide() ? capacity_ / 4 : capacity_ / 2;
    const std::uint32_t capacity = capacity_ < 4 ? capacity_ + 1 + more : capacity_ + more;
    auto* const slots = static_cast<Slot*>(Kobble::allocate(capacity * sizeof(Slot)));
    std::uninitialized_move_n(slots_, used_, slots);
    std::destroy_n(slots_, used_);
    if (slots_) Kobble::deallocate(slots_, capacity_ * sizeof(Slot));
    slots_ = slots;
    capacity_ = capacity;
  }

  /// Gives up dead slots when there are enough of them to pay for the work.
  void tidy() {
    if (walks_ != 0 || dead_ == 0) return;
    if (dead_ == used_) {
      clear();
    } else if (dead_ * 2 > used_) {
      compact();
    } else if (!index_ && !Traits::live(slots_[used_ - 1])) {
      std::destroy_at(slots_ + --used_);
      --dead_;
    }
  }

  void compact() {
    const std::size_t bytes = index_ ? used_ * sizeof(std::uint32_t) : 0;
    auto* const moved = static_cast<std::uint32_t*>(bytes != 0 ? Kobble::allocate(bytes) : nullptr);
    std::uint32_t to = 0;
    for (std::uint32_t at = 0; at != used_; ++at) {
      const bool live = Traits::live(slots_[at]);
      if (moved) moved[at] = live ? to : kNowhere;
      if (!live) continue;
      if (to != at) slots_[to] = std::move(slots_[at]);
      ++to;
    }
    std::destroy_n(slots_ + to, used_ - to);
    used_ = to;
    dead_ = 0;
    if (used_ > kLinear) {
      reindex(moved);
    } else {
      dropIndex();
    }
    if (moved) Kobble::deallocate(moved, bytes);
  }

  Slot* slots_ = nullptr;
  void* index_ = nullptr;
  std::uint32_t used_ = 0;  // places taken, dead ones included
  std::uint32_t dead_ = 0;
  std::uint32_t capacity_ = 0;
  std::uint16_t walks_ = 0;
  std::uint8_t bits_ = 0;
};

}  // namespace Orm
