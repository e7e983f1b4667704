#include "Fabric/Scalar.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <limits>
#include <system_error>

namespace Fabric {

namespace {

constexpr std::string_view kDecimalDigits = "0123456789";

bool isOneOf(std::string_view text, std::initializer_list<std::string_view> words) {
  return std::find(words.begin(), words.end(), text) != words.end();
}

/// Removes the digits in front; false when there are none.
bool takeDigits(std::string_view& text) {
  const std::size_t count = std::min(text.find_first_not_of(kDecimalDigits), text.size());
  text.remove_prefix(count);
  return count > 0;
}

bool takeSign(std::string_view& text) {
  if (text.starts_with('-') || text.starts_with('+')) {
    text.remove_prefix(1);
    return true;
  }
  return false;
}

/// [-+]? ( \. [0-9]+ | [0-9]+ ( \. [0-9]* )? ) ( [eE] [-+]? [0-9]+ )?
bool isDecimal(std::string_view text) {
  takeSign(text);
  const bool hasWhole = takeDigits(text);
  bool hasFraction = false;
  if (text.starts_with('.')) {
    text.remove_prefix(1);
    hasFraction = takeDigits(text);
  }
  if (!hasWhole && !hasFraction) {
    return false;
  }
  if (text.starts_with('e') || text.starts_with('E')) {
    text.remove_prefix(1);
    takeSign(text);
    if (!takeDigits(text)) {
      return false;
    }
  }
  return text.empty();
}

/// 0o and 0x integers. Digits that a double cannot tell apart are rounded away.
bool isPrefixedInteger(std::string_view text, std::string_view prefix, std::string_view digits) {
  return text.size() > prefix.size() && text.starts_with(prefix) &&
         text.find_first_not_of(digits, prefix.size()) == std::string_view::npos;
}

double prefixedInteger(std::string_view digits, int base) {
  double number = 0;
  for (const char digit : digits) {
    number = number * base + (digit <= '9' ? digit - '0' : (digit | 0x20) - 'a' + 10);
  }
  return number;
}

}  // namespace

double decimalNumber(std::string_view digits) {
  const bool negative = digits.starts_with('-');
  if (negative || digits.starts_with('+')) {
    digits.remove_prefix(1);
  }
  double number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (error == std::errc::result_out_of_range) {
    // Too much or too little; which of both, from_chars does not tell.
    number = std::strtod(std::string(digits).c_str(), nullptr);
  }
  return negative ? -number : number;
}

Value plainScalar(std::string_view text, Mark mark) {
  if (isOneOf(text, {"", "~", "null", "Null", "NULL"})) {
    return Value::nullAt(mark);
  }
  if (isOneOf(text, {"true", "True", "TRUE"})) {
    return Value(true, mark);
  }
  if (isOneOf(text, {"false", "False", "FALSE"})) {
    return Value(false, mark);
  }
  if (isDecimal(text)) {
    return Value(decimalNumber(text), mark);
  }
  if (isPrefixedInteger(text, "0o", "01234567")) {
    return Value(prefixedInteger(text.substr(2), 8), mark);
  }
  if (isPrefixedInteger(text, "0x", "0123456789abcdefABCDEF")) {
    return Value(prefixedInteger(text.substr(2), 16), mark);
  }
  if (isOneOf(text, {".nan", ".NaN", ".NAN"})) {
    return Value(std::numeric_limits<double>::quiet_NaN(), mark);
  }
  std::string_view unsignedText = text;
  takeSign(unsignedText);
  if (isOneOf(unsignedText, {".inf", ".Inf", ".INF"})) {
    const double infinity = std::numeric_limits<double>::infinity();
    return Value(text.starts_with('-') ? -infinity : infinity, mark);
  }
  return Value(text, mark);
}

void appendUtf8(std::uint32_t code, std::string& out) {
  const auto byte = [&](std::uint32_t bits) { out += static_cast<char>(bits); };
  const auto continuation = [&](std::uint32_t bits) { byte(0x80 | (bits & 0x3f)); };
  if (code < 0x80) {
    byte(code);
  } else if (code < 0x800) {
    byte(0xc0 | (code >> 6));
    continuation(code);
  } else if (code < 0x10000) {
    byte(0xe0 | (code >> 12));
    continuation(code >> 6);
    continuation(code);
  } else {
    byte(0xf0 | (code >> 18));
    continuation(code >> 12);
    continuation(code >> 6);
    continuation(code);
  }
}

}  // namespace Fabric
