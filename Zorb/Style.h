#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Zorb {

/// How a piece of text looks on a terminal.
enum class Style : std::uint8_t { plain, title, faint, good, busy, bad };

/// The text with the escape sequences of the style around it, or as it is without colours.
inline std::string styled(std::string_view text, Style style, bool colours) {
  constexpr std::string_view kSequences[] = {"",         "\x1b[1m",  "\x1b[2m",
                                             "\x1b[32m", "\x1b[33m", "\x1b[31m"};
  if (!colours || style == Style::plain || text.empty()) return std::string(text);
  std::string out(kSequences[static_cast<std::size_t>(style)]);
  out += text;
  out += "\x1b[0m";
  return out;
}

}  // namespace Zorb
