#include "Fabric/JsonReader.h"

#include <algorithm>
#include <charconv>
#include <system_error>

#include "Fabric/InputError.h"
#include "Fabric/Quote.h"
#include "Fabric/Scalar.h"

namespace Fabric {

JsonReader::JsonReader(std::string_view file, std::string_view text)
    : file_(file), text_(text), locator_(text), builder_(file) {}

Value JsonReader::read() {
  readValue();
  skipBlanks();
  if (at_ < text_.size()) {
    failExpecting("nothing after the document");
  }
  return builder_.take();
}

void JsonReader::fail(std::size_t offset, std::string_view text) {
  throw InputError(file_, locator_.at(offset), text);
}

void JsonReader::failExpecting(std::string_view expected) {
  const std::string found =
      at_ < text_.size() ? quoteFirst(text_.substr(at_)) : "the end of the text";
  fail(at_, "broken JSON: " + found + ", expected " + std::string(expected));
}

bool JsonReader::skip(char c) {
  if (peek() != c) {
    return false;
  }
  ++at_;
  return true;
}

void JsonReader::skipBlanks() {
  at_ = std::min(text_.find_first_not_of(" \t\r\n", at_), text_.size());
}

void JsonReader::readValue() {
  skipBlanks();
  const Mark mark = locator_.at(at_);
  switch (peek()) {
    case '{':
      return readObject();
    case '[':
      return readArray();
    case '"':
      return builder_.scalar(Value(std::string_view(readString()), mark));
    case 't':
      return readWord("true", Value(true, mark));
    case 'f':
      return readWord("false", Value(false, mark));
    case 'n':
      return readWord("null", Value::nullAt(mark));
    default:
      return readNumber();
  }
}

void JsonReader::readObject() {
  builder_.objectBegin(locator_.at(at_++));
  skipBlanks();
  if (!skip('}')) {
    do {
      skipBlanks();
      if (peek() != '"') {
        failExpecting("a key in double quotes");
      }
      const Mark mark = locator_.at(at_);
      builder_.key(mark, readString());
      skipBlanks();
      if (!skip(':')) {
        failExpecting("\":\"");
      }
      readValue();
      skipBlanks();
    } while (skip(','));
    if (!skip('}')) {
      failExpecting("\",\" or \"}\"");
    }
  }
  builder_.objectEnd();
}

void JsonReader::readArray() {
  builder_.arrayBegin(locator_.at(at_++));
  skipBlanks();
  if (!skip(']')) {
    do {
      readValue();
      skipBlanks();
    } while (skip(','));
    if (!skip(']')) {
      failExpecting("\",\" or \"]\"");
    }
  }
  builder_.arrayEnd();
}

void JsonReader::readWord(std::string_view word, Value value) {
  if (text_.substr(at_, word.size()) != word) {
    failExpecting("a value");
  }
  at_ += word.size();
  builder_.scalar(std::move(value));
}

void JsonReader::skipDigits() {
  if (peek() < '0' || peek() > '9') {
    failExpecting("a digit");
  }
  at_ = std::min(text_.find_first_not_of("0123456789", at_), text_.size());
}

void JsonReader::readNumber() {
  const std::size_t begin = at_;
  skip('-');
  if (at_ == begin && (peek() < '0' || peek() > '9')) {
    failExpecting("a value");
  }
  if (!skip('0')) {
    skipDigits();
  }
  if (skip('.')) {
    skipDigits();
  }
  if (skip('e') || skip('E')) {
    if (!skip('+')) {
      skip('-');
    }
    skipDigits();
  }
  const std::string_view digits = text_.substr(begin, at_ - begin);
  builder_.scalar(Value(decimalNumber(digits), locator_.at(begin)));
}

std::string JsonReader::readString() {
  const std::size_t begin = at_++;
  std::string out;
  while (true) {
    const std::size_t end = text_.find_first_of("\"\\\n\r\t", at_);
    if (end == std::string_view::npos) {
      fail(begin, "broken JSON: a string without an end, expected a closing quote");
    }
    out += text_.substr(at_, end - at_);
    at_ = end;
    if (skip('"')) {
      return out;
    }
    if (!skip('\\')) {
      failExpecting("an escape in its place, or a closing quote before it");
    }
    readEscape(out);
  }
}

void JsonReader::readEscape(std::string& out) {
  constexpr std::string_view kLetters = "\"\\/bfnrt";
  constexpr std::string_view kMeanings = "\"\\/\b\f\n\r\t";
  const std::size_t begin = at_ - 1;
  const std::size_t letter = at_ < text_.size() ? kLetters.find(peek()) : std::string_view::npos;
  if (letter != std::string_view::npos) {
    ++at_;
    out += kMeanings[letter];
    return;
  }
  if (!skip('u')) {
    failExpecting("one of \" \\ / b f n r t u after a backslash");
  }
  std::uint32_t code = readCodeUnit();
  if (code >= 0xd800 && code <= 0xdbff && text_.substr(at_, 2) == "\\u") {
    at_ += 2;
    const std::uint32_t low = readCodeUnit();
    code = low >= 0xdc00 && low <= 0xdfff ? 0x10000 + ((code - 0xd800) << 10) + (low - 0xdc00)
                                          : 0xd800;
  }
  if (code >= 0xd800 && code <= 0xdfff) {
    fail(begin, "broken JSON: half a surrogate pair, expected both halves, the high one first");
  }
  appendUtf8(code, out);
}

std::uint32_t JsonReader::readCodeUnit() {
  std::uint32_t code = 0;
  const std::string_view digits = text_.substr(std::min(at_, text_.size()), 4);
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), code, 16);
  if (error != std::errc() || end != digits.data() + 4) {
    failExpecting("four hexadecimal digits");
  }
  at_ += 4;
  return code;
}

}  // namespace Fabric
