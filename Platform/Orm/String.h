#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <iosfwd>
#include <string>
#include <string_view>

#include "Platform/Orm/Inline.h"
#include "Platform/Orm/Ptr.h"

namespace Orm {

/// 32 well-mixed bits of `text`, the same on every machine for the same seed.
std::uint32_t hashText(std::string_view text);

/// The seed of hashText, a process setting to be made before any String exists. No result of the
/// library depends on it.
void hashSeedIs(std::uint32_t seed);

/// Immutable text in one shared, counted block: a handle of 8 bytes whose size and hash are known.
/// Copying counts, comparing two handles of one block is one compare. The empty text has no block.
class String {
 public:
  static constexpr std::size_t npos = std::string_view::npos;

  constexpr String() noexcept = default;
  String(std::string_view text) : String({text}) {}
  String(const char* text) : String(std::string_view(text)) {}
  String(const std::string& text) : String(std::string_view(text)) {}
  /// The pieces one after the other; one allocation.
  explicit String(std::initializer_list<std::string_view> pieces);

  String(const String& other) noexcept : rep_(other.rep_) {
    if (rep_) detail::countUp(rep_->refCount);
  }
  String(String&& other) noexcept : rep_(std::exchange(other.rep_, nullptr)) {}
  String& operator=(const String& other) noexcept {
    String(other).swap(*this);
    return *this;
  }
  String& operator=(String&& other) noexcept {
    String(std::move(other)).swap(*this);
    return *this;
  }
  ~String() {
    if (rep_ && detail::countDown(rep_->refCount)) destroy(rep_);
  }

  void swap(String& other) noexcept { std::swap(rep_, other.rep_); }

  std::size_t size() const noexcept { return rep_ ? rep_->size : 0; }
  bool empty() const noexcept { return rep_ == nullptr; }
  std::uint32_t hash() const noexcept { return rep_ ? rep_->hash : 0; }
  std::string_view view() const noexcept {
    return rep_ ? std::string_view(rep_->text(), rep_->size) : std::string_view();
  }
  operator std::string_view() const noexcept { return view(); }
  const char* c_str() const noexcept { return rep_ ? rep_->text() : ""; }
  std::string str() const { return std::string(view()); }

  std::size_t rfind(std::string_view text) const noexcept { return view().rfind(text); }
  String substr(std::size_t from, std::size_t count = npos) const {
    return String(view().substr(from, count));
  }

  ORM_ALWAYS_INLINE friend bool operator==(const String& a, const String& b) noexcept {
    return a.rep_ == b.rep_ || (a.rep_ && b.rep_ && a.rep_->hash == b.rep_->hash && a.isText(b));
  }
  friend bool operator==(const String& a, std::string_view b) noexcept { return a.view() == b; }
  friend bool operator==(const String& a, const char* b) noexcept { return a.view() == b; }
  friend bool operator==(const String& a, const std::string& b) noexcept { return a.view() == b; }
  friend std::strong_ordering operator<=>(const String& a, const String& b) noexcept {
    return a.view() <=> b.view();
  }

 private:
  struct Rep {
    std::uint32_t refCount;
    std::uint32_t size;
    std::uint32_t hash;

    char* text() { return reinterpret_cast<char*>(this + 1); }
  };

  static void destroy(Rep* rep) noexcept;
  /// Whether two texts of one hash, neither of them empty, are the same.
  bool isText(const String& other) const noexcept {
    return rep_->size == other.rep_->size &&
           std::memcmp(rep_->text(), other.rep_->text(), rep_->size) == 0;
  }

  Rep* rep_ = nullptr;
};

std::ostream& operator<<(std::ostream& out, const String& text);

}  // namespace Orm
