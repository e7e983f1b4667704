#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Fabric/TextLocator.h"
#include "Fabric/TreeBuilder.h"
#include "Fabric/Value.h"

namespace Fabric {

/// Reads one JSON text (RFC 8259), a few hundred megabytes a second.
/// The text is well-formed UTF-8 and stays while `read` runs. Recursion is bounded by kMaxDepth.
class JsonReader {
 public:
  JsonReader(std::string_view file, std::string_view text);

  /// Once. Throws InputError.
  Value read();

 private:
  void readValue();
  void readObject();
  void readArray();
  void readWord(std::string_view word, Value value);
  void readNumber();
  std::string readString();
  void readEscape(std::string& out);
  std::uint32_t readCodeUnit();
  void skipDigits();
  void skipBlanks();
  bool skip(char c);
  char peek() const { return at_ < text_.size() ? text_[at_] : '\0'; }
  [[noreturn]] void failExpecting(std::string_view expected);
  [[noreturn]] void fail(std::size_t offset, std::string_view text);

  std::string file_;
  std::string_view text_;
  std::size_t at_ = 0;
  TextLocator locator_;
  TreeBuilder builder_;
};

}  // namespace Fabric
