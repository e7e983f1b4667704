// Shell patterns over switches: the pattern on the first line, the text on the second, against a
// matcher that tries everything.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Fabric/Glob.h"
#include "Fuzz/Property.h"

namespace {

constexpr std::size_t kLongest = 64;  // characters of each

/// Takes the set that the pattern begins with and tells whether it has the character; nothing when
/// there is no set.
std::optional<bool> takeSet(std::string_view& pattern, char c) {
  const bool isInverted = pattern.size() > 1 && (pattern[1] == '!' || pattern[1] == '^');
  const std::size_t begin = isInverted ? 2 : 1;
  const std::size_t end = pattern.find(']', begin + 1);
  if (end == std::string_view::npos) return std::nullopt;
  const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(pattern[at]); };
  bool isIn = false;
  for (std::size_t at = begin; at < end; ++at) {
    const bool isRange = at + 2 < end && pattern[at + 1] == '-';
    const std::size_t last = isRange ? at + 2 : at;
    isIn = isIn || (byte(at) <= static_cast<unsigned char>(c) &&
                    static_cast<unsigned char>(c) <= byte(last));
    at = last;
  }
  pattern.remove_prefix(end + 1);
  return isIn != isInverted;
}

/// Tries everything, but nothing twice: a pattern of many stars has more ways than anybody can wait
/// for.
class Matcher {
 public:
  bool matches(std::string_view pattern, std::string_view text) {
    signed char& known = known_[pattern.size()][text.size()];
    if (known == kUnknown) known = tries(pattern, text) ? 1 : 0;
    return known == 1;
  }

 private:
  static constexpr signed char kUnknown = -1;

  bool tries(std::string_view pattern, std::string_view text) {
    if (pattern.empty()) return text.empty();
    if (pattern.front() == '*') {
      return matches(pattern.substr(1), text) ||
             (!text.empty() && matches(pattern, text.substr(1)));
    }
    if (text.empty()) return false;
    if (pattern.front() == '?') return matches(pattern.substr(1), text.substr(1));
    if (pattern.front() == '[') {
      std::string_view rest = pattern;
      const std::optional<bool> isIn = takeSet(rest, text.front());
      if (isIn) return *isIn && matches(rest, text.substr(1));
    }
    if (pattern.front() == '\\' && pattern.size() > 1) pattern.remove_prefix(1);
    return pattern.front() == text.front() && matches(pattern.substr(1), text.substr(1));
  }

  /// By how much is left of both.
  std::vector<std::vector<signed char>> known_{kLongest + 1,
                                               std::vector<signed char>(kLongest + 1, kUnknown)};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input = Fuzz::textOf(data, size);
  const std::size_t end = input.find('\n');
  if (end == std::string_view::npos) return 0;
  const std::string_view pattern = input.substr(0, end);
  const std::string_view text = input.substr(end + 1);
  const bool isMatch = Fabric::globMatches(pattern, text);
  if (pattern.size() <= kLongest && text.size() <= kLongest) {
    Fuzz::require(isMatch == Matcher().matches(pattern, text), "a pattern matches what it says",
                  input);
  }
  if (!Fabric::isGlob(pattern) && pattern.find('\\') == std::string_view::npos) {
    Fuzz::require(isMatch == (pattern == text), "a plain text matches itself", input);
  }
  return 0;
}
