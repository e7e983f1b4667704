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
///
/// There is one block for all handles to the same text, however they were made, so that copying
/// counts and telling two texts apart is one compare, which reads neither: keys of collections are
/// compared far more often than made. Making one costs its hash and a look into the table of all
/// texts, and a block when it is new. The empty text has no block. Loop thread only (counts aside,
/// while another handle stays).
class String {
 public:
  static constexpr std::size_t npos = std::string_view::npos;

  constexpr String() noexcept = default;
  String(std::string_view text);
  String(const char* text) : String(std::string_view(text)) {}
  String(const std::string& text) : String(std::string_view(text)) {}
  /// The pieces one after the other.
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
  std::string_view view() const noexcept { return rep_ ? rep_->view() : std::string_view(); }
  operator std::string_view() const noexcept { return view(); }
  const char* c_str() const noexcept { return rep_ ? rep_->text() : ""; }
  std::string str() const { return std::string(view()); }

  std::size_t rfind(std::string_view text) const noexcept { return view().rfind(text); }
  String substr(std::size_t from, std::size_t count = npos) const {
    return String(view().substr(from, count));
  }

  friend bool operator==(const String& a, const String& b) noexcept { return a.rep_ == b.rep_; }
  friend bool operator==(const String& a, std::string_view b) noexcept { return a.view() == b; }
  friend bool operator==(const String& a, const char* b) noexcept { return a.view() == b; }
  friend bool operator==(const String& a, const std::string& b) noexcept { return a.view() == b; }
  friend std::strong_ordering operator<=>(const String& a, const String& b) noexcept {
    return a.view() <=> b.view();
  }

 private:
  class Table;

  /// The block: this, then the text and a NUL.
  struct Rep {
    Rep* next;  // of the same bucket of the table
    std::uint32_t refCount;
    std::uint32_t size;
    std::uint32_t hash;

    static constexpr std::size_t kTextAt = 20;  // in what would be padding
    const char* text() const { return reinterpret_cast<const char*>(this) + kTextAt; }
    std::string_view view() const { return {text(), size}; }
  };

  static void destroy(Rep* rep) noexcept;

  Rep* rep_ = nullptr;
};

std::ostream& operator<<(std::ostream& out, const String& text);

}  // namespace Orm
