#include "Platform/Orm/String.h"

#include <limits>
#include <ostream>
#include <stdexcept>

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

String::String(std::initializer_list<std::string_view> pieces) {
  std::size_t size = 0;
  for (std::string_view piece : pieces) size += piece.size();
  if (size == 0) return;
  if (size > std::numeric_limits<std::uint32_t>::max() - sizeof(Rep) - 1) {
    throw std::length_error("Orm::String: text of 4 GiB or more");
  }
  void* block = Kobble::allocate(sizeof(Rep) + size + 1);
  rep_ = ::new (block) Rep{1, static_cast<std::uint32_t>(size), 0};
  char* to = rep_->text();
  for (std::string_view piece : pieces) {
    if (piece.empty()) continue;
    std::memcpy(to, piece.data(), piece.size());
    to += piece.size();
  }
  *to = '\0';
  rep_->hash = hashText(view());
}

void String::destroy(Rep* rep) noexcept { Kobble::deallocate(rep, sizeof(Rep) + rep->size + 1); }

std::ostream& operator<<(std::ostream& out, const String& text) { return out << text.view(); }

}  // namespace Orm
