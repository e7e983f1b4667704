#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace Soak {

/// Numbers that look random and are the same for a seed with every compiler and library: the
/// standard's engines are fixed, its distributions are not.
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}

  std::uint64_t next() { return mixed(state_ += 0x9e3779b97f4a7c15); }

  /// From 0 to `count` - 1; `count` is at least 1.
  std::size_t below(std::size_t count) { return static_cast<std::size_t>(next() % count); }
  /// Both ends included.
  std::size_t from(std::size_t least, std::size_t most) { return least + below(most - least + 1); }
  /// True once in `of`.
  bool chance(std::size_t of) { return below(of) == 0; }
  bool coin() { return chance(2); }

  /// One of `choices`, which is not empty.
  template <class Choices>
  const auto& pick(const Choices& choices) {
    return *(std::begin(choices) + static_cast<std::ptrdiff_t>(below(std::size(choices))));
  }

  /// Spreads every bit of `value` over the result.
  static std::uint64_t mixed(std::uint64_t value) {
    value = (value ^ (value >> 30)) * 0xbf58476d1ce4e5b9;
    value = (value ^ (value >> 27)) * 0x94d049bb133111eb;
    return value ^ (value >> 31);
  }

 private:
  std::uint64_t state_;
};

}  // namespace Soak
