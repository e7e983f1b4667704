#include "Fabric/Quote.h"

#include <algorithm>
#include <vector>

namespace Fabric {

namespace {

constexpr std::size_t kQuotedBytes = 80;

bool isContinuation(char c) { return (static_cast<unsigned char>(c) & 0xc0) == 0x80; }

/// The text's first bytes, not in the middle of a character.
std::string_view cut(std::string_view text) {
  std::size_t end = std::min(text.size(), kQuotedBytes);
  while (end > 0 && end < text.size() && isContinuation(text[end])) {
    --end;
  }
  return text.substr(0, end);
}

/// Letters to add, remove, change or swap with their neighbour to make one word the other.
std::size_t slipsBetween(std::string_view left, std::string_view right) {
  std::vector<std::size_t> beforeLast(right.size() + 1);
  std::vector<std::size_t> last(right.size() + 1);
  std::vector<std::size_t> row(right.size() + 1);
  for (std::size_t at = 0; at <= right.size(); ++at) {
    last[at] = at;
  }
  for (std::size_t i = 1; i <= left.size(); ++i) {
    row[0] = i;
    for (std::size_t j = 1; j <= right.size(); ++j) {
      const std::size_t change = left[i - 1] == right[j - 1] ? 0 : 1;
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + change});
      if (i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1]) {
        row[j] = std::min(row[j], beforeLast[j - 2] + 1);
      }
    }
    beforeLast.swap(last);
    last.swap(row);
  }
  return last[right.size()];
}

}  // namespace

std::string quote(std::string_view text) {
  const std::string_view shown = cut(text);
  std::string quoted = toJson(Value(shown));
  return shown.size() < text.size() ? quoted + "..." : quoted;
}

std::string quoteFirst(std::string_view text) {
  const auto next = std::find_if_not(text.begin() + 1, text.end(), isContinuation);
  return quote({text.begin(), next});
}

std::string describe(const Value& value) {
  switch (value.kind()) {
    case Value::Kind::null:
      return "null";
    case Value::Kind::boolean:
      return value.boolean() ? "true" : "false";
    case Value::Kind::number:
      return "the number " + toJson(value);
    case Value::Kind::string:
      return "the string " + quote(value.string());
    case Value::Kind::array:
      return "a list";
    case Value::Kind::object:
      return "an object";
  }
  return {};
}

std::string alternatives(std::span<const std::string_view> words) {
  std::string text;
  for (std::size_t at = 0; at < words.size(); ++at) {
    if (at > 0) {
      text += at + 1 == words.size() ? " or " : ", ";
    }
    text += words[at];
  }
  return text;
}

std::string_view closest(std::string_view word, std::span<const std::string_view> words) {
  constexpr std::size_t kLongestWord = 40;
  std::size_t fewest = std::min<std::size_t>(2, word.size() / 2) + 1;
  std::string_view best;
  if (word.size() > kLongestWord) {
    return best;
  }
  for (const std::string_view candidate : words) {
    const std::size_t slips = slipsBetween(word, candidate);
    if (slips < fewest) {
      fewest = slips;
      best = candidate;
    }
  }
  return best;
}

}  // namespace Fabric
