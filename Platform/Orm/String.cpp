#include "Platform/Orm/String.h"

#include <algorithm>
#include <array>
#include <limits>
#include <ostream>
#include <stdexcept>
#include <utility>

namespace Orm {

namespace {

constinit std::uint32_t theSeed = 0x5eed5eedU;

constexpr std::uint64_t kMultiplier = 0x9e3779b97f4a7c15ULL;

std::uint64_t mix(std::uint64_t value) {
  value ^= value >> 32;
  value *= 0xd6e8feb86659fd93ULL;
  return value ^ (value >> 32);
}

}  // namespace

void hashSeedIs(std::uint32_t seed) { theSeed = seed; }

std::uint32_t hashText(std::string_view text) {
  std::uint64_t hash = (theSeed ^ text.size()) * kMultiplier;
  const char* at = text.data();
  std::size_t left = text.size();
  for (; left >= 8; at += 8, left -= 8) {
    std::uint64_t word = 0;
    std::memcpy(&word, at, 8);
    hash = mix(hash ^ word) * kMultiplier;
  }
  if (left != 0) {
    std::uint64_t word = 0;
    std::memcpy(&word, at, left);
    hash = mix(hash ^ word) * kMultiplier;
  }
  return static_cast<std::uint32_t>(mix(hash));
}

/// All texts that there are, each once: a hash table whose buckets are chains through the blocks.
/// It stays for the life of the process, because texts with static storage may go at its end.
class String::Table {
 public:
  /// The block of `text`, with one count more; made when there is none.
  static Rep* rep(std::string_view text) {
    if (count_ == size_) grow();
    const std::uint32_t hash = hashText(text);
    Rep*& first = buckets_[hash & (size_ - 1)];
    for (Rep* rep = first; rep; rep = rep->next) {
      if (rep->hash != hash || rep->view() != text) continue;
      detail::countUp(rep->refCount);
      return rep;
    }
    first = make(text, hash, first);
    ++count_;
    return first;
  }

  static void remove(const Rep* rep) noexcept {
    Rep** at = &buckets_[rep->hash & (size_ - 1)];
    while (*at != rep) at = &(*at)->next;
    *at = rep->next;
    --count_;
  }

  static std::size_t bytes(std::size_t textSize) {
    return std::max(sizeof(Rep), Rep::kTextAt + textSize + 1);
  }

 private:
  static Rep* make(std::string_view text, std::uint32_t hash, Rep* next) {
    if (text.size() > std::numeric_limits<std::uint32_t>::max() - sizeof(Rep) - 1) {
      throw std::length_error("Orm::String: text of 4 GiB or more");
    }
    void* const block = Kobble::allocate(bytes(text.size()));
    auto* const to = static_cast<char*>(block) + Rep::kTextAt;
    auto* const rep = ::new (block) Rep{next, 1, static_cast<std::uint32_t>(text.size()), hash};
    std::memcpy(to, text.data(), text.size());
    to[text.size()] = '\0';
    return rep;
  }

  static void grow() {
    const std::size_t size = std::max(kFirstSize, size_ * 2);
    auto** const buckets = new Rep* [size] {};
    for (std::size_t from = 0; from != size_; ++from) {
      for (Rep* rep = buckets_[from]; rep;) {
        Rep*& first = buckets[rep->hash & (size - 1)];
        Rep* const next = std::exchange(rep->next, first);
        first = std::exchange(rep, next);
      }
    }
    delete[] std::exchange(buckets_, buckets);
    size_ = size;
  }

  static constexpr std::size_t kFirstSize = 256;
  static inline constinit Rep** buckets_ = nullptr;
  static inline constinit std::size_t size_ = 0;  // a power of two
  static inline constinit std::size_t count_ = 0;
};

String::String(std::string_view text) : rep_(text.empty() ? nullptr : Table::rep(text)) {}

String::String(std::initializer_list<std::string_view> pieces) {
  std::size_t size = 0;
  for (const std::string_view piece : pieces) size += piece.size();
  constexpr std::size_t kShort = 256;
  std::array<char, kShort> room;
  std::string more;
  char* const text = size <= room.size() ? room.data() : (more.resize(size), more.data());
  char* to = text;
  for (const std::string_view piece : pieces) to = std::copy(piece.begin(), piece.end(), to);
  *this = String(std::string_view(text, size));
}

void String::destroy(Rep* rep) noexcept {
  Table::remove(rep);
  Kobble::deallocate(rep, Table::bytes(rep->size));
}

std::ostream& operator<<(std::ostream& out, const String& text) { return out << text.view(); }

}  // namespace Orm
