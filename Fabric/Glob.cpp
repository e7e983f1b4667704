#include "Fabric/Glob.h"

#include <cstddef>

namespace Fabric {

namespace {

constexpr std::size_t kNone = std::string_view::npos;

/// Where the set that begins at `at` ends, behind its "]"; npos when it does not. A "]" that comes
/// first is a member.
std::size_t setEnd(std::string_view pattern, std::size_t at) {
  std::size_t next = at + 1;
  if (next < pattern.size() && (pattern[next] == '!' || pattern[next] == '^')) {
    ++next;
  }
  const std::size_t close = pattern.find(']', next + 1);
  return close == kNone ? kNone : close + 1;
}

/// `set` is what stands between the brackets.
bool setHolds(std::string_view set, char c) {
  const bool inverted = set.front() == '!' || set.front() == '^';
  if (inverted) {
    set.remove_prefix(1);
  }
  bool held = false;
  const auto byte = [](char character) { return static_cast<unsigned char>(character); };
  for (std::size_t at = 0; at < set.size(); ++at) {
    if (at + 2 < set.size() && set[at + 1] == '-') {
      held = held || (byte(set[at]) <= byte(c) && byte(c) <= byte(set[at + 2]));
      at += 2;
    } else {
      held = held || set[at] == c;
    }
  }
  return held != inverted;
}

/// Whether the element of the pattern at `at`, no star, matches the character; if so `at` moves
/// behind the element.
bool matchOne(std::string_view pattern, std::size_t& at, char c) {
  if (pattern[at] == '?') {
    ++at;
    return true;
  }
  if (pattern[at] == '[') {
    const std::size_t end = setEnd(pattern, at);
    if (end != kNone) {
      const bool held = setHolds(pattern.substr(at + 1, end - at - 2), c);
      at = held ? end : at;
      return held;
    }
  }
  const std::size_t literal = pattern[at] == '\\' && at + 1 < pattern.size() ? at + 1 : at;
  if (pattern[literal] != c) {
    return false;
  }
  at = literal + 1;
  return true;
}

}  // namespace

bool isGlob(std::string_view text) { return text.find_first_of("*?[") != kNone; }

bool globMatches(std::string_view pattern, std::string_view text) {
  std::size_t inPattern = 0;
  std::size_t inText = 0;
  // Behind the last star, and how much of the text that star has been given so far.
  std::size_t starPattern = kNone;
  std::size_t starText = 0;
  while (inText < text.size()) {
    if (inPattern < pattern.size() && pattern[inPattern] == '*') {
      starPattern = ++inPattern;
      starText = inText;
    } else if (inPattern < pattern.size() && matchOne(pattern, inPattern, text[inText])) {
      ++inText;
    } else if (starPattern != kNone) {
      inPattern = starPattern;
      inText = ++starText;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*', inPattern) == kNone;
}

}  // namespace Fabric
