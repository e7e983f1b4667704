#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "Fabric/Value.h"

namespace Fabric {

/// The members of an object in the order in which they were put in, found by key.
///
/// `find`, `set` and `erase` are O(1) (a scan while there are few members). Any change invalidates
/// iterators and references to members; an erased member leaves a gap that a later change closes.
class Object {
 public:
  struct Member {
    Text key;
    Mark mark;
    Value value;
  };

  /// Walks the members that are there.
  class Iterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = Member;
    using difference_type = std::ptrdiff_t;
    using pointer = const Member*;
    using reference = const Member&;

    Iterator() = default;
    Iterator(pointer at, pointer end) : at_(at), end_(end) { skipGaps(); }
    reference operator*() const { return *at_; }
    pointer operator->() const { return at_; }
    Iterator& operator++() {
      ++at_;
      skipGaps();
      return *this;
    }
    Iterator operator++(int) {
      Iterator before = *this;
      ++*this;
      return before;
    }
    friend bool operator==(const Iterator& left, const Iterator& right) {
      return left.at_ == right.at_;
    }

   private:
    void skipGaps() {
      while (at_ != end_ && at_->key == nullptr) {
        ++at_;
      }
    }

    pointer at_ = nullptr;
    pointer end_ = nullptr;
  };

  Object() = default;
  /// A copy has no gaps.
  Object(const Object& other);
  Object(Object&&) noexcept = default;
  Object& operator=(const Object& other);
  Object& operator=(Object&&) noexcept = default;
  ~Object() = default;

  std::size_t size() const { return members_.size() - gaps_; }
  bool empty() const { return size() == 0; }
  Iterator begin() const { return {members_.data(), members_.data() + members_.size()}; }
  Iterator end() const {
    return {members_.data() + members_.size(), members_.data() + members_.size()};
  }

  /// Null when there is none.
  const Member* member(std::string_view key) const;
  const Value* find(std::string_view key) const;
  Value* find(std::string_view key);

  /// Puts a member in: a new one comes last, one that is there keeps its place and its key.
  Value& set(Text key, Mark mark, Value value);
  Value& set(std::string_view key, Value value) { return set(makeText(key), {}, std::move(value)); }
  /// False when there was none.
  bool erase(std::string_view key);

  /// In a patch: this object was written as a list, so what it lacks goes from its target.
  bool replaces() const { return replaces_; }
  void replacesIs(bool replaces) { replaces_ = replaces; }

 private:
  static constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);
  using Index = std::unordered_map<std::string_view, std::uint32_t>;

  std::size_t indexOf(std::string_view key) const;
  void closeGaps();
  void buildIndex();

  std::vector<Member> members_;
  /// Where each key is; null while there are so few members that a scan is quicker.
  std::unique_ptr<Index> index_;
  std::uint32_t gaps_ = 0;
  bool replaces_ = false;
};

}  // namespace Fabric
