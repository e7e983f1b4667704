#include "Platform/Flipset/Flipset.h"

#include <cstdint>
#include <map>
#include <utility>

namespace Flipset {

namespace {

using Toggles = std::map<std::string, bool, std::less<>>;

std::map<std::string, Toggles, std::less<>>& theFiles() {
  static std::map<std::string, Toggles, std::less<>> files;
  return files;
}

/// Reads one object of booleans; more of JSON a toggle file does not have.
class Parser {
 public:
  Parser(std::string_view file, std::string_view text) : file_(file), text_(text) {}

  Toggles toggles() {
    Toggles read;
    need('{', "'{'");
    if (!skip('}')) {
      do {
        member(read);
      } while (skip(','));
      need('}', "',' or '}'");
    }
    space();
    if (at_ != text_.size()) fail("the end of the file");
    return read;
  }

 private:
  void member(Toggles& read) {
    space();
    const std::size_t start = at_;
    std::string name = quoted();
    if (read.contains(name)) {
      at_ = start;
      failWith("the toggle \"" + printable(name) + "\" is set twice, expected it once");
    }
    need(':', "':'");
    space();
    if (word("true")) {
      read.emplace(std::move(name), true);
    } else if (word("false")) {
      read.emplace(std::move(name), false);
    } else {
      fail("true or false");
    }
  }

  std::string quoted() {
    need('"', "a toggle's name in double quotes");
    const std::size_t start = at_;
    while (at_ != text_.size() && text_[at_] != '"') {
      if (text_[at_] == '\\' || static_cast<unsigned char>(text_[at_]) < 0x20) {
        fail("a name without escapes and control characters");
      }
      ++at_;
    }
    if (at_ == text_.size()) fail("'\"' at the end of the name");
    return std::string(text_.substr(start, at_++ - start));
  }

  bool word(std::string_view expected) {
    if (!text_.substr(at_).starts_with(expected)) return false;
    at_ += expected.size();
    return true;
  }

  void space() {
    while (at_ != text_.size() &&
           std::string_view(" \t\r\n").find(text_[at_]) != std::string_view::npos) {
      ++at_;
    }
  }

  bool skip(char c) {
    space();
    if (at_ == text_.size() || text_[at_] != c) return false;
    ++at_;
    return true;
  }

  void need(char c, const char* what) {
    if (!skip(c)) fail(what);
  }

  [[noreturn]] void fail(const std::string& expected) {
    const std::string found = at_ == text_.size() ? "the file ends" : "found " + shown(text_[at_]);
    failWith(found + ", expected " + expected);
  }

  /// A character as a message can show it; what is no printable ASCII by its number.
  static std::string shown(char c) {
    if (c >= 0x20 && c < 0x7f) return "'" + std::string(1, c) + "'";
    static constexpr char kDigits[] = "0123456789abcdef";
    const auto byte = static_cast<unsigned char>(c);
    return std::string("byte 0x") + kDigits[byte >> 4] + kDigits[byte & 0xf];
  }

  /// A name as a message can show it: nothing has said that it is UTF-8.
  static std::string printable(std::string name) {
    for (char& c : name) {
      if (c < 0x20 || c >= 0x7f) c = '?';
    }
    return name;
  }

  [[noreturn]] void failWith(const std::string& what) {
    std::size_t line = 1;
    std::size_t column = 1;
    for (const char c : text_.substr(0, at_)) {
      column = c == '\n' ? 1 : column + 1;
      line += c == '\n';
    }
    throw ToggleError(std::string(file_) + ":" + std::to_string(line) + ":" +
                      std::to_string(column) + ": " + what);
  }

  std::string_view file_;
  std::string_view text_;
  std::size_t at_ = 0;
};

}  // namespace

bool toggle(std::string_view file, std::string_view name, bool byDefault) {
  const auto toggles = theFiles().find(file);
  if (toggles == theFiles().end()) return byDefault;
  const auto found = toggles->second.find(name);
  return found == toggles->second.end() ? byDefault : found->second;
}

void toggleIs(std::string_view file, std::string_view name, bool on) {
  theFiles()[std::string(file)].insert_or_assign(std::string(name), on);
}

void toggleDel(std::string_view file, std::string_view name) {
  const auto toggles = theFiles().find(file);
  if (toggles == theFiles().end()) return;
  const auto found = toggles->second.find(name);
  if (found != toggles->second.end()) toggles->second.erase(found);
}

void toggleDelAll() { theFiles().clear(); }

void textIs(std::string_view file, std::string_view text) {
  Toggles read = Parser(file, text).toggles();
  for (const auto& [name, on] : read) toggleIs(file, name, on);
}

}  // namespace Flipset
