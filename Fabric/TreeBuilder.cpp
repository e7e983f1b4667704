#include "Fabric/TreeBuilder.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Fabric/InputError.h"
#include "Fabric/Limits.h"
#include "Fabric/Quote.h"

namespace Fabric {

std::string tooDeepMessage() {
  return "nested too deeply, expected at most " + std::to_string(kMaxDepth) + " levels";
}

void TreeBuilder::fail(Mark mark, std::string_view text) const {
  throw InputError(file_, mark, text);
}

void TreeBuilder::count(Mark mark, std::size_t nodes) {
  nodes_ += nodes;
  if (nodes_ > kMaxNodes) {
    fail(mark, "too many values, expected at most " + std::to_string(kMaxNodes) +
                   " with each alias written out");
  }
}

void TreeBuilder::checkDepth(Mark mark, std::size_t height) const {
  if (open_.size() + height > kMaxDepth) {
    fail(mark, tooDeepMessage());
  }
}

Text TreeBuilder::shared(std::string_view key) {
  const auto known = keys_.find(key);
  if (known != keys_.end()) {
    return known->second;
  }
  Text text = makeText(key);
  keys_.emplace(*text, text);
  return text;
}

void TreeBuilder::key(Mark mark, std::string_view key) {
  count(mark, 1);
  Open& object = open_.back();
  const Object::Member* first = object.value.object().member(key);
  if (first != nullptr) {
    fail(mark, "duplicate key " + quote(key) + ", expected each key once; the first is at line " +
                   std::to_string(first->mark.line) + ", column " +
                   std::to_string(first->mark.column));
  }
  object.key = shared(key);
  object.keyMark = mark;
  object.expectsKey = false;
}

std::optional<Mark> TreeBuilder::keyMark() const {
  const bool isMember = !open_.empty() && open_.back().value.isObject();
  return isMember ? std::optional(open_.back().keyMark) : std::nullopt;
}

void TreeBuilder::scalar(Value value) {
  count(value.mark(), 1);
  if (value.isNumber() && !std::isfinite(value.number())) {
    fail(value.mark(), "not a finite number, expected one that a double can hold");
  }
  const std::size_t anchor = std::exchange(pendingAnchor_, kNoAnchor);
  if (anchor != kNoAnchor) {
    anchors_[anchor] = {value, 1, 0};
  }
  add(std::move(value), 0);
}

void TreeBuilder::objectBegin(Mark mark) {
  begin(Value(Object(), mark));
  open_.back().expectsKey = true;
}

void TreeBuilder::arrayBegin(Mark mark) { begin(Value(Value::Array(), mark)); }

void TreeBuilder::objectEnd() { end(); }

void TreeBuilder::arrayEnd() { end(); }

void TreeBuilder::begin(Value value) {
  checkDepth(value.mark(), 1);
  Open open;
  open.anchor = std::exchange(pendingAnchor_, kNoAnchor);
  open.nodesBefore = nodes_;
  count(value.mark(), 1);
  open.value = std::move(value);
  open_.push_back(std::move(open));
}

void TreeBuilder::end() {
  Open done = std::move(open_.back());
  open_.pop_back();
  if (done.anchor != kNoAnchor) {
    anchors_[done.anchor] = {done.value, nodes_ - done.nodesBefore, done.height};
  }
  add(std::move(done.value), done.height);
}

void TreeBuilder::alias(Mark mark, std::size_t anchor) {
  const auto found = anchors_.find(anchor);
  if (found == anchors_.end()) {
    fail(mark, "alias of a key or of a value that contains it, expected one of a value before it");
  }
  if (++aliases_ > kMaxAliases) {
    fail(mark, "too many aliases, expected at most " + std::to_string(kMaxAliases));
  }
  checkDepth(mark, found->second.height);
  count(mark, found->second.nodes);
  Value value = found->second.value;
  value.markIs(mark);
  add(std::move(value), found->second.height);
}

void TreeBuilder::add(Value value, std::size_t height) {
  if (open_.empty()) {
    root_ = std::move(value);
    return;
  }
  Open& parent = open_.back();
  parent.height = std::max(parent.height, height + 1);
  if (parent.value.isArray()) {
    parent.value.mutableArray().push_back(std::move(value));
    return;
  }
  parent.value.mutableObject().set(parent.key, parent.keyMark, std::move(value));
  parent.expectsKey = true;
}

}  // namespace Fabric
