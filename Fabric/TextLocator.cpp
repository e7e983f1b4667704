#include "Fabric/TextLocator.h"

#include <algorithm>
#include <cstdint>

namespace Fabric {

namespace {

bool isContinuation(char c) { return (static_cast<unsigned char>(c) & 0xc0) == 0x80; }

bool isReadableAscii(unsigned char byte) {
  return byte >= 0x20 || byte == '\t' || byte == '\n' || byte == '\r';
}

/// The length of the well-formed sequence of several bytes that the text begins with; else 0.
std::size_t sequenceLength(std::string_view text) {
  const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
  const unsigned char first = byte(0);
  const std::size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
  if (first < 0xc2 || first > 0xf4 || text.size() < length) {
    return 0;
  }
  // Not in a longer form than needed, no surrogates, nothing above U+10FFFF.
  const unsigned char low = first == 0xe0 ? 0xa0 : first == 0xf0 ? 0x90 : 0x80;
  const unsigned char high = first == 0xed ? 0x9f : first == 0xf4 ? 0x8f : 0xbf;
  if (byte(1) < low || byte(1) > high) {
    return 0;
  }
  const std::string_view rest = text.substr(2, length - 2);
  return std::all_of(rest.begin(), rest.end(), isContinuation) ? length : 0;
}

}  // namespace

Mark TextLocator::at(std::size_t offset) {
  offset = std::min(offset, text_.size());
  if (offset < offset_) {
    stepBackTo(offset);
  }
  for (; offset_ < offset; ++offset_) {
    const char c = text_[offset_];
    if (c == '\n') {
      ++mark_.line;
      mark_.column = 1;
    } else if (!isContinuation(c)) {
      ++mark_.column;
    }
  }
  return mark_;
}

void TextLocator::stepBackTo(std::size_t offset) {
  const auto breaks = std::count(text_.begin() + static_cast<std::ptrdiff_t>(offset),
                                 text_.begin() + static_cast<std::ptrdiff_t>(offset_), '\n');
  mark_.line -= static_cast<std::uint32_t>(breaks);
  mark_.column = 1;
  const std::size_t before = offset == 0 ? std::string_view::npos : text_.rfind('\n', offset - 1);
  offset_ = before == std::string_view::npos ? 0 : before + 1;
}

std::size_t findUnreadable(std::string_view text) {
  std::size_t at = 0;
  while (at < text.size()) {
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte < 0x80) {
      if (!isReadableAscii(byte)) {
        return at;
      }
      ++at;
      continue;
    }
    const std::size_t length = sequenceLength(text.substr(at));
    if (length == 0) {
      return at;
    }
    at += length;
  }
  return std::string_view::npos;
}

}  // namespace Fabric
