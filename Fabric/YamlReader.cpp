#include "Fabric/YamlReader.h"

#include <yaml-cpp/eventhandler.h>
#include <yaml-cpp/exceptions.h>
#include <yaml-cpp/parser.h>

#include <algorithm>
#include <istream>
#include <streambuf>

#include "Fabric/FlowDepth.h"
#include "Fabric/InputError.h"
#include "Fabric/Quote.h"
#include "Fabric/Scalar.h"
#include "Fabric/TextLocator.h"
#include "Fabric/TreeBuilder.h"

namespace Fabric {

namespace {

constexpr std::string_view kCoreTag = "tag:yaml.org,2002:";

/// Lets a stream read a text where it lies.
class TextBuffer : public std::streambuf {
 public:
  explicit TextBuffer(std::string_view text) {
    // A get area is never written to.
    char* const begin = const_cast<char*>(text.data());
    setg(begin, begin, begin + text.size());
  }
};

/// The parser gives the escapes \N and \_ as one byte each, the characters' Latin-1 form, though
/// all else is UTF-8: these bytes stand where no character can begin.
std::string inUtf8(const std::string& scalar) {
  std::string text;
  text.reserve(scalar.size());
  int continuations = 0;
  for (const char c : scalar) {
    const auto byte = static_cast<unsigned char>(c);
    if ((byte & 0xc0) != 0x80) {
      continuations = byte >= 0xf0 ? 3 : byte >= 0xe0 ? 2 : byte >= 0xc0 ? 1 : 0;
    } else if (continuations > 0) {
      --continuations;
    } else {
      text += '\xc2';
    }
    text += c;
  }
  return text;
}

/// Carries the parser's events to a TreeBuilder.
class YamlHandler : public YAML::EventHandler {
 public:
  YamlHandler(std::string_view file, std::string_view text)
      : file_(file), text_(text), locator_(text), builder_(file) {}

  Value take() { return builder_.take(); }
  Mark place(const YAML::Mark& mark) {
    return mark.is_null() ? Mark{1, 1} : locator_.at(static_cast<std::size_t>(mark.pos));
  }

  void OnDocumentStart(const YAML::Mark& mark) override {
    if (documents_++ > 0) {
      fail(place(mark), "more after the document, expected one document");
    }
  }
  void OnDocumentEnd() override {}

  void OnNull(const YAML::Mark& mark, YAML::anchor_t anchor) override {
    const Mark at = place(mark);
    if (builder_.expectsKey()) {
      fail(at, "null as a key, expected a text; write it in quotes");
    }
    builder_.anchorNext(anchor);
    builder_.scalar(Value::nullAt(isWrittenNull(mark) ? at : builder_.keyMark().value_or(at)));
  }

  void OnAlias(const YAML::Mark& mark, YAML::anchor_t anchor) override {
    const Mark at = place(mark);
    if (builder_.expectsKey()) {
      fail(at, "an alias as a key, expected a text");
    }
    builder_.alias(at, anchor);
  }

  void OnScalar(const YAML::Mark& mark, const std::string& tag, YAML::anchor_t anchor,
                const std::string& written) override {
    const Mark at = place(mark);
    const std::string text = inUtf8(written);
    const Value value = scalar(at, tag, text);
    if (builder_.expectsKey()) {
      builder_.key(at, text);
      return;
    }
    builder_.anchorNext(anchor);
    builder_.scalar(value);
  }

  void OnSequenceStart(const YAML::Mark& mark, const std::string& tag, YAML::anchor_t anchor,
                       YAML::EmitterStyle::value) override {
    const Mark at = place(mark);
    checkCollection(at, tag, "seq");
    builder_.anchorNext(anchor);
    builder_.arrayBegin(at);
  }
  void OnSequenceEnd() override { builder_.arrayEnd(); }

  void OnMapStart(const YAML::Mark& mark, const std::string& tag, YAML::anchor_t anchor,
                  YAML::EmitterStyle::value) override {
    const Mark at = place(mark);
    checkCollection(at, tag, "map");
    builder_.anchorNext(anchor);
    builder_.objectBegin(at);
  }
  void OnMapEnd() override { builder_.objectEnd(); }

 private:
  [[noreturn]] void fail(Mark mark, std::string_view text) const {
    throw InputError(file_, mark, text);
  }

  [[noreturn]] void failUnknownTag(Mark mark, std::string_view tag) const {
    fail(mark,
         "unknown tag " + quote(tag) +
             ", expected none, or one of !!str, !!int, !!float, !!bool, !!null, !!map, !!seq");
  }

  /// A null of no characters at all has the place of whatever comes next, maybe lines below.
  bool isWrittenNull(const YAML::Mark& mark) const {
    const auto offset = std::min(static_cast<std::size_t>(mark.pos), text_.size());
    const std::string_view rest = text_.substr(offset, 4);
    return rest.starts_with('~') || rest == "null" || rest == "Null" || rest == "NULL";
  }

  void checkCollection(Mark mark, std::string_view tag, std::string_view kind) const {
    if (builder_.expectsKey()) {
      fail(mark, "a list or an object as a key, expected a text");
    }
    if (tag.empty() || tag == "?" || tag == "!") {
      return;
    }
    if (!tag.starts_with(kCoreTag) || tag.substr(kCoreTag.size()) != kind) {
      failUnknownTag(mark, tag);
    }
  }

  /// The parser gives the tag "?" to plain scalars without one and "!" to all other.
  Value scalar(Mark mark, std::string_view tag, std::string_view text) const {
    if (tag == "?" || tag.empty()) {
      return plainScalar(text, mark);
    }
    if (tag == "!") {
      return Value(text, mark);
    }
    const std::string_view kind =
        tag.starts_with(kCoreTag) ? tag.substr(kCoreTag.size()) : std::string_view();
    if (kind == "str") {
      return Value(text, mark);
    }
    Value value = plainScalar(text, mark);
    const bool fits = (kind == "null" && value.isNull()) || (kind == "bool" && value.isBoolean()) ||
                      ((kind == "int" || kind == "float") && value.isNumber());
    if (fits) {
      return value;
    }
    if (kind == "null" || kind == "bool" || kind == "int" || kind == "float") {
      fail(mark,
           quote(text) + " is not of its tag's type, expected a value of !!" + std::string(kind));
    }
    failUnknownTag(mark, tag);
  }

  std::string file_;
  std::string_view text_;
  TextLocator locator_;
  TreeBuilder builder_;
  int documents_ = 0;
};

}  // namespace

Value readYaml(std::string_view file, std::string_view text) {
  const std::size_t runaway = findRunawayNesting(text);
  if (runaway != std::string_view::npos) {
    throw InputError(file, TextLocator(text).at(runaway), tooDeepMessage());
  }
  TextBuffer buffer(text);
  std::istream stream(&buffer);
  YamlHandler handler(file, text);
  try {
    YAML::Parser parser(stream);
    if (!parser.HandleNextDocument(handler)) {
      throw InputError(file, {1, 1}, "an empty document, expected an object; {} is one");
    }
    // The handler refuses a second one.
    parser.HandleNextDocument(handler);
  } catch (const YAML::Exception& error) {
    throw InputError(file, handler.place(error.mark),
                     "broken YAML: " + error.msg + ", expected YAML 1.2");
  }
  return handler.take();
}

}  // namespace Fabric
