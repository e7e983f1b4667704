#include "Fabric/JsonText.h"

#include <array>
#include <charconv>
#include <ostream>

#include "Platform/Orm/TimeSource.h"

namespace Fabric {

namespace {

constexpr std::size_t kBufferSize = std::size_t{1} << 16;
constexpr std::size_t kDecimals = 6;

void appendWhole(std::string& out, std::int64_t value) {
  std::array<char, 24> digits;
  out.append(digits.data(), std::to_chars(digits.begin(), digits.end(), value).ptr);
}

}  // namespace

void appendJsonString(std::string& out, std::string_view text) {
  constexpr std::string_view kHex = "0123456789abcdef";
  out += '"';
  std::size_t from = 0;
  for (std::size_t at = 0; at != text.size(); ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte >= 0x20 && byte != '"' && byte != '\\') continue;
    out.append(text, from, at - from);
    from = at + 1;
    out += '\\';
    if (byte >= 0x20) {
      out += text[at];
    } else if (byte == '\n') {
      out += 'n';
    } else if (byte == '\t') {
      out += 't';
    } else {
      out += "u00";
      out += kHex[byte >> 4];
      out += kHex[byte & 15];
    }
  }
  out.append(text, from);
  out += '"';
}

void appendSeconds(std::string& out, Orm::Seconds value) {
  Orm::Tick tick = Orm::tickOf(value);
  if (tick < 0) {
    out += '-';
    tick = -tick;
  }
  appendWhole(out, tick / Orm::kTicksPerSecond);
  Orm::Tick fraction = tick % Orm::kTicksPerSecond;
  if (fraction == 0) return;
  std::array<char, kDecimals> digits;
  for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit, fraction /= 10) {
    *digit = static_cast<char>('0' + fraction % 10);
  }
  std::size_t size = digits.size();
  while (digits[size - 1] == '0') --size;
  out += '.';
  out.append(digits.data(), size);
}

JsonText::~JsonText() { flush(); }

void JsonText::flush() {
  handOn();
  out_.flush();
}

void JsonText::handOn() {
  out_.write(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
  buffer_.clear();
}

void JsonText::newLine() {
  if (layout_ == Layout::oneLine) return;
  buffer_ += '\n';
  buffer_.append(2 * open_.size(), ' ');
}

void JsonText::beginMember() {
  memberStart_ = buffer_.size();
  if (open_.empty()) return;
  if (open_.back().hasMembers) buffer_ += ',';
  newLine();
}

bool JsonText::key(std::string_view key) {
  beginMember();
  appendJsonString(buffer_, key);
  buffer_ += layout_ == Layout::indented ? ": " : ":";
  hasKey_ = true;
  return true;
}

void JsonText::beginValue() {
  if (!hasKey_) beginMember();
  hasKey_ = false;
}

void JsonText::endValue() {
  if (open_.empty()) {
    buffer_ += '\n';
  } else {
    open_.back().hasMembers = true;
  }
  // What may still be taken back is an object that has no members, and all of them are inside of
  // one that has none yet either: after a value there is none.
  if (buffer_.size() >= kBufferSize) handOn();
}

void JsonText::begin(char bracket, WhenEmpty whenEmpty) {
  beginValue();
  open_.push_back({memberStart_, whenEmpty == WhenEmpty::keep || open_.empty(), false});
  buffer_ += bracket;
}

void JsonText::end(char bracket) {
  const Open closed = open_.back();
  open_.pop_back();
  if (!closed.hasMembers && !closed.keep) {
    buffer_.resize(closed.start);
    return;
  }
  if (closed.hasMembers) newLine();
  buffer_ += bracket;
  endValue();
}

void JsonText::text(std::string_view value) {
  beginValue();
  appendJsonString(buffer_, value);
  endValue();
}

void JsonText::boolean(bool value) {
  beginValue();
  buffer_ += value ? "true" : "false";
  endValue();
}

void JsonText::whole(std::int64_t value) {
  beginValue();
  appendWhole(buffer_, value);
  endValue();
}

void JsonText::seconds(Orm::Seconds value) {
  beginValue();
  appendSeconds(buffer_, value);
  endValue();
}

}  // namespace Fabric
