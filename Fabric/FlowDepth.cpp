#include "Fabric/FlowDepth.h"

#include <algorithm>

#include "Fabric/Limits.h"

namespace Fabric {

namespace {

constexpr std::size_t kRunawayDepth = 16 * kMaxDepth;
// The same when brackets in quotes and comments are counted too, for what only looks like those.
constexpr std::size_t kRunawayExcess = 100'000;

/// Behind the quoted scalar that begins at `at`.
std::size_t skipQuoted(std::string_view text, std::size_t at) {
  const char quote = text[at++];
  while (at < text.size() && text[at] != quote) {
    at += quote == '"' && text[at] == '\\' ? 2 : 1;
  }
  return std::min(at + 1, text.size());
}

std::size_t findRunawayExcess(std::string_view text) {
  std::size_t excess = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    if (c == '[' || c == '{') {
      if (++excess > kRunawayExcess) {
        return at;
      }
    } else if ((c == ']' || c == '}') && excess > 0) {
      --excess;
    }
  }
  return std::string_view::npos;
}

}  // namespace

std::size_t findRunawayNesting(std::string_view text) {
  std::size_t depth = 0;
  std::size_t tooDeep = std::string_view::npos;
  // Brackets and quotes mean something where a value may begin.
  bool valueMayBegin = true;
  bool afterBlank = true;
  for (std::size_t at = 0; at < text.size();) {
    const char c = text[at];
    if (valueMayBegin && (c == '"' || c == '\'')) {
      at = skipQuoted(text, at);
      valueMayBegin = afterBlank = false;
      continue;
    }
    if (afterBlank && c == '#') {
      at = std::min(text.find('\n', at), text.size());
      continue;
    }
    const bool opens = valueMayBegin && (c == '[' || c == '{');
    if (opens && ++depth == kMaxDepth + 1) {
      tooDeep = at;
    }
    if (depth > kRunawayDepth) {
      return tooDeep;
    }
    if (depth > 0 && (c == ']' || c == '}')) {
      --depth;
    }
    afterBlank = c == ' ' || c == '\t' || c == '\n' || c == '\r';
    valueMayBegin = opens || c == ',' || c == ':' || c == '\n' || (c == '-' && valueMayBegin) ||
                    (c == '?' && valueMayBegin) || (afterBlank && valueMayBegin);
    ++at;
  }
  return findRunawayExcess(text);
}

}  // namespace Fabric
