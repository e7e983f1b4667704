#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <memory>
#include <utility>

#include "Platform/Kobble/Kobble.h"
#include "Platform/Orm/ActivityScope.h"
#include "Platform/Orm/Assert.h"
#include "Platform/Orm/Inline.h"

namespace Orm {

/// A hash table whose members stand in a dense array in order of insertion, with an index of
/// places beside it; the ground that the collections stand on.
///
/// Traits: Slot and Key; `const Key& key(const Slot&)`, `bool live(const Slot&)`,
/// `void kill(Slot&)` (leaves a slot that is not live), `std::uint32_t hash(const Key&)`, and
/// `kMovesAsBytes`: slots may be moved by copying their bytes.
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

  /// The member that most probably has the key, and the hint leads to it; null, and nowhere, when
  /// the index knows of none. No member is looked at: who is about to look for one key in many
  /// tables asks all of them first, so that the waits for what they have to read overlap.
  Slot* probable(const Key& key, Hint& hint) const {
    if (!index_) return nullptr;
    hint = isWide() ? placeIn<false>(wide(), key) : placeIn<false>(narrow(), key);
    return hint == kNowhere ? nullptr : slots_ + hint;
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
    } else {
      if (Half* const half = halves()) half[used_ - 1] = halfOf(*added);
      if (used_ > kLinear) reindex();
    }
    return *added;
  }

  /// Makes room for `capacity` members altogether, so that none of them makes the table grow.
  void reserve(std::uint32_t capacity) {
    if (capacity > capacity_) moveTo(capacity);
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
    if (slots) Kobble::deallocate(slots, slotBytes(capacity));
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
    const std::uint32_t at = hint != kNowhere && isAt(hint + 1, key) ? hint + 1 : place(key);
    if (at == kNowhere) return nullptr;
    hint = at;
    return slots_ + at;
  }

  static constexpr std::uint32_t kLinear = 8;
  static constexpr std::uint32_t kNowhere = ~0U;

  /// While one exists no slot changes its place. A walk that ends with the only slot has nothing to
  /// come back to, and needs none of that: most entries have one mounter.
  class Walk {
   public:
    explicit Walk(const DenseTable& table)
        : table_(table.used_ > 1 ? const_cast<DenseTable*>(&table) : nullptr) {
      if (table_) ++table_->walks_;
    }
    ~Walk() {
      if (table_ && --table_->walks_ == 0 && table_->dead_ != 0) table_->tidy();
    }
    Walk(const Walk&) = delete;
    Walk& operator=(const Walk&) = delete;

   private:
    const ActivityScope scope_;  // a machine that owns the table outlives the walk
    DenseTable* const table_;
  };

  // An index entry is 0 or, in its low `bits_` bits, a place plus one, and above them bits of the
  // hash of the member that is or was there, so that most mismatches are seen without going to it;
  // each place has one entry at the most. The bits that the place covers up say where the search
  // begins. Entries take 16 bits, and know the upper half of the hash, while 4 are left for it;
  // what serves larger tables stands apart, so that it costs the others one test.
  //
  // Behind the slots of all tables but the smallest and largest stand the upper halves of their
  // hashes, which is all that 16-bit entries need: an index is built from them without a look at
  // the members, which lie scattered, and most of which were not touched for long.
  using Narrow = std::uint16_t;
  using Wide = std::uint32_t;
  using Half = std::uint16_t;
  static constexpr std::uint8_t kNarrowBits = 12;
  static constexpr std::uint32_t kLeastWithHalves = 17;
  static constexpr std::uint32_t kMostWithHalves = (1U << kNarrowBits) / 3 * 2;

  /// What an index of such entries knows of a hash.
  static std::uint32_t knownOf(std::uint32_t hash, const Narrow*) { return hash >> 16; }
  static std::uint32_t knownOf(std::uint32_t hash, const Wide*) { return std::rotl(hash, 16); }

  static bool hasHalves(std::uint32_t capacity) {
    return capacity >= kLeastWithHalves && capacity <= kMostWithHalves;
  }
  static std::size_t slotBytes(std::uint32_t capacity) {
    return capacity * (sizeof(Slot) + (hasHalves(capacity) ? sizeof(Half) : 0));
  }
  static Half* halvesOf(Slot* slots, std::uint32_t capacity) {
    return hasHalves(capacity) ? reinterpret_cast<Half*>(slots + capacity) : nullptr;
  }
  Half* halves() const { return halvesOf(slots_, capacity_); }
  static Half halfOf(std::uint32_t hash) { return static_cast<Half>(hash >> 16); }
  static Half halfOf(const Slot& slot) { return halfOf(Traits::hash(Traits::key(slot))); }

  bool isWide() const { return bits_ > kNarrowBits; }
  Narrow* narrow() const { return static_cast<Narrow*>(index_); }
  Wide* wide() const { return static_cast<Wide*>(index_); }
  std::size_t indexBytes() const { return (isWide() ? sizeof(Wide) : sizeof(Narrow)) << bits_; }
  std::uint32_t mask() const { return (1U << bits_) - 1; }

  std::uint32_t place(const Key& key) const {
    if (!index_) {
      for (std::uint32_t at = 0; at != used_; ++at) {
        if (Traits::live(slots_[at]) && Traits::key(slots_[at]) == key) return at;
      }
      return kNowhere;
    }
    return isWide() ? placeInWide(key) : placeIn<true>(narrow(), key);
  }
  [[gnu::noinline]] std::uint32_t placeInWide(const Key& key) const {
    return placeIn<true>(wide(), key);
  }

  /// `looks`: at the member, whether it has the key; else the first that may have it is taken.
  template <bool looks, class Entry>
  std::uint32_t placeIn(const Entry* index, const Key& key) const {
    const std::uint32_t low = mask();
    const std::uint32_t known = knownOf(Traits::hash(key), index);
    for (std::uint32_t i = known & low;; i = (i + 1) & low) {
      const std::uint32_t entry = index[i];
      if (entry == 0) return kNowhere;
      if ((entry ^ known) <= low) {
        const std::uint32_t at = (entry & low) - 1;
        if (Traits::live(slots_[at]) && (!looks || Traits::key(slots_[at]) == key)) return at;
      }
    }
  }

  /// Two thirds full at the most, so that whoever is not there is seen not to be after three looks
  /// on average; four fifths in large tables, where room costs more than looks. A place plus one
  /// fits in bits_ bits then as well.
  bool indexIsFull() const {
    if (isWide()) return (std::uint64_t{used_} + 1) * 5 > std::uint64_t{4} << bits_;
    return (used_ + 1) * 3 > 2U << bits_;
  }

  void put(std::uint32_t at) {
    const Key& key = Traits::key(slots_[at]);
    const std::uint32_t hash = Traits::hash(key);
    if (Half* const half = halves()) half[at] = halfOf(hash);
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
    const std::uint32_t known = knownOf(hash, index);
    std::uint32_t i = known & low;
    for (std::uint32_t entry; (entry = index[i]) != 0; i = (i + 1) & low) {
      if (!key || (entry ^ known) > low) continue;
      const Slot& other = slots_[(entry & low) - 1];
      assertThat(!(Traits::live(other) && Traits::key(other) == *key), "!has( key )");
    }
    index[i] = static_cast<Entry>((known & ~low) | (at + 1));
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
    if (index_) Kobble::deallocate(index_, indexBytes());
    index_ = nullptr;
    bits_ = 0;
  }

  /// Builds the index anew, with room for one place more at least.
  void reindex() {
    std::uint8_t bits = 4;
    while (std::uint64_t{used_} * 8 > std::uint64_t{bits > kNarrowBits ? 6U : 5U} << bits) ++bits;
    dropIndex();
    bits_ = bits;
    index_ = Kobble::allocate(indexBytes());
    std::memset(index_, 0, indexBytes());
    if (isWide()) {
      readAllInto(wide());
    } else if (const Half* const half = halves()) {
      for (std::uint32_t at = 0; at != used_; ++at) {
        if (Traits::live(slots_[at])) putIn(narrow(), at, std::uint32_t{half[at]} << 16, nullptr);
      }
    } else {
      readAllInto(narrow());
    }
  }

  /// Reads the members' keys, some at a time and not one after each other's place, so that the
  /// waits for them overlap.
  template <class Entry>
  void readAllInto(Entry* index) {
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
    moveTo(capacity_ < 4 ? capacity_ + 1 + more : capacity_ + more);
  }

  void moveTo(std::uint32_t capacity) {
    auto* const slots = static_cast<Slot*>(Kobble::allocate(slotBytes(capacity)));
    if constexpr (Traits::kMovesAsBytes) {
      const void* const from = slots_;
      if (used_ != 0) std::memcpy(static_cast<void*>(slots), from, used_ * sizeof(Slot));
    } else {
      std::uninitialized_move_n(slots_, used_, slots);
      std::destroy_n(slots_, used_);
    }
    keepHalves(slots, capacity);
    if (slots_) Kobble::deallocate(slots_, slotBytes(capacity_));
    slots_ = slots;
    capacity_ = capacity;
  }

  /// Fills in the halves behind `slots`, which have just taken over the members.
  void keepHalves(Slot* slots, std::uint32_t capacity) const {
    Half* const half = halvesOf(slots, capacity);
    if (!half) return;
    if (const Half* const old = halves()) {
      std::copy_n(old, used_, half);
      return;
    }
    for (std::uint32_t at = 0; at != used_; ++at) {
      half[at] = Traits::live(slots[at]) ? halfOf(slots[at]) : Half{0};
    }
  }

  /// Gives up dead slots when there are enough of them to pay for the work.
  void tidy() {
    if (walks_ != 0 || dead_ == 0) return;
    if (dead_ == used_) {
      clear();
    } else if (dead_ * 2 > used_) {
      compact();
    } else if (!index_ && !Traits::live(slots_[used_ - 1])) {  // else an entry points at it
      std::destroy_at(slots_ + --used_);
      --dead_;
    }
  }

  void compact() {
    Half* const half = halves();
    std::uint32_t to = 0;
    for (std::uint32_t at = 0; at != used_; ++at) {
      if (!Traits::live(slots_[at])) continue;
      if (to != at) {
        slots_[to] = std::move(slots_[at]);
        if (half) half[to] = half[at];
      }
      ++to;
    }
    std::destroy_n(slots_ + to, used_ - to);
    used_ = to;
    dead_ = 0;
    if (used_ > kLinear) {
      reindex();
    } else {
      dropIndex();
    }
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
