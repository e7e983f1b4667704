#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "Fabric/JsonSink.h"

namespace Fabric {

/// Writes JSON texts to a stream: indented by two spaces, or one text a line (JSON Lines).
///
/// Texts are expected to be well-formed UTF-8 and go out as they are, but for what JSON wants
/// escaped. What is written reaches the stream at the latest with flush(), which the destructor
/// does too; whether it arrived, the stream tells. Memory: the nesting, and some kilobytes.
class JsonText final : public JsonSink {
 public:
  enum class Layout : std::uint8_t { indented, oneLine };

  JsonText(std::ostream& out, Layout layout) : out_(out), layout_(layout) {}
  ~JsonText() override;
  JsonText(const JsonText&) = delete;
  JsonText& operator=(const JsonText&) = delete;

  /// Hands everything on and flushes the stream.
  void flush();

  bool key(std::string_view key) override;
  void beginObject(WhenEmpty whenEmpty) override { begin('{', whenEmpty); }
  void endObject() override { end('}'); }
  void beginArray(WhenEmpty whenEmpty) override { begin('[', whenEmpty); }
  void endArray() override { end(']'); }
  void text(std::string_view value) override;
  void boolean(bool value) override;
  void whole(std::int64_t value) override;
  void seconds(Orm::Seconds value) override;

 private:
  struct Open {
    std::size_t start;  // where in the buffer it begins, with its key and what stands before that
    bool keep;          // when empty
    bool hasMembers;
  };

  void begin(char bracket, WhenEmpty whenEmpty);
  void end(char bracket);
  void beginMember();
  void beginValue();
  void endValue();
  void newLine();
  void handOn();

  std::ostream& out_;
  Layout layout_;
  std::string buffer_;
  std::vector<Open> open_;
  std::size_t memberStart_ = 0;
  bool hasKey_ = false;  // of the value that comes next
};

/// Appends `text` as a JSON string, quotes included.
void appendJsonString(std::string& out, std::string_view text);

/// Appends seconds as a decimal number, to the microsecond and without trailing zeros.
void appendSeconds(std::string& out, Orm::Seconds value);

}  // namespace Fabric
