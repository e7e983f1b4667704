#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "Fabric/Object.h"
#include "Fabric/Value.h"

namespace Fabric {

/// What is wrong with a value below kMaxDepth others.
std::string tooDeepMessage();

/// Builds a tree from the events of a reader, in the order of the text, and holds it to the limits:
/// depth, nodes, aliases, each key once. Throws InputError where one is broken.
class TreeBuilder {
 public:
  explicit TreeBuilder(std::string_view file) : file_(file) {}

  /// An object is open and the next event is one of its keys, or its end.
  bool expectsKey() const { return !open_.empty() && open_.back().expectsKey; }
  void key(Mark mark, std::string_view key);
  /// Where the key of the next value is; nothing in an array and at the root.
  std::optional<Mark> keyMark() const;

  void scalar(Value value);
  void objectBegin(Mark mark);
  void objectEnd();
  void arrayBegin(Mark mark);
  void arrayEnd();

  /// The next scalar, object or array is what aliases of this anchor stand for.
  void anchorNext(std::size_t anchor) { pendingAnchor_ = anchor; }
  void alias(Mark mark, std::size_t anchor);

  /// What was built; null before anything is complete.
  Value take() { return std::move(root_); }

 private:
  static constexpr std::size_t kNoAnchor = 0;

  /// An array or object that is not complete.
  struct Open {
    Value value;
    std::size_t anchor = kNoAnchor;
    /// What had been counted when it began; and how deep it is below itself.
    std::size_t nodesBefore = 0;
    std::size_t height = 1;
    bool expectsKey = false;
    Text key;
    Mark keyMark;
  };
  struct Anchored {
    Value value;
    std::size_t nodes = 0;
    std::size_t height = 0;
  };

  void begin(Value value);
  void end();
  void add(Value value, std::size_t height);
  void count(Mark mark, std::size_t nodes);
  void checkDepth(Mark mark, std::size_t height) const;
  Text shared(std::string_view key);
  [[noreturn]] void fail(Mark mark, std::string_view text) const;

  std::string file_;
  Value root_;
  std::vector<Open> open_;
  std::unordered_map<std::size_t, Anchored> anchors_;
  std::size_t pendingAnchor_ = kNoAnchor;
  std::size_t nodes_ = 0;
  std::size_t aliases_ = 0;
  /// Keys repeat from object to object: each text is kept once.
  std::unordered_map<std::string_view, Text> keys_;
};

}  // namespace Fabric
