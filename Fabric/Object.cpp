#include "Fabric/Object.h"

#include <algorithm>
#include <utility>

namespace Fabric {

namespace {

// Up to here comparing the keys one after another is quicker than hashing the one looked for.
constexpr std::size_t kScanned = 8;

}  // namespace

Object::Object(const Object& other) : replaces_(other.replaces_) {
  members_.reserve(other.size());
  members_.assign(other.begin(), other.end());
  buildIndex();
}

Object& Object::operator=(const Object& other) {
  Object copy(other);
  return *this = std::move(copy);
}

std::size_t Object::indexOf(std::string_view key) const {
  if (index_ != nullptr) {
    const auto found = index_->find(key);
    return found == index_->end() ? kNowhere : found->second;
  }
  for (std::size_t at = 0; at < members_.size(); ++at) {
    if (members_[at].key != nullptr && *members_[at].key == key) {
      return at;
    }
  }
  return kNowhere;
}

const Object::Member* Object::member(std::string_view key) const {
  const std::size_t at = indexOf(key);
  return at == kNowhere ? nullptr : &members_[at];
}

const Value* Object::find(std::string_view key) const {
  const std::size_t at = indexOf(key);
  return at == kNowhere ? nullptr : &members_[at].value;
}

Value* Object::find(std::string_view key) {
  const std::size_t at = indexOf(key);
  return at == kNowhere ? nullptr : &members_[at].value;
}

Value& Object::set(Text key, Mark mark, Value value) {
  const std::size_t at = indexOf(*key);
  if (at != kNowhere) {
    members_[at].mark = mark;
    return members_[at].value = std::move(value);
  }
  const std::string_view view = *key;
  members_.push_back({std::move(key), mark, std::move(value)});
  if (index_ != nullptr) {
    index_->emplace(view, static_cast<std::uint32_t>(members_.size() - 1));
  } else {
    buildIndex();
  }
  return members_.back().value;
}

bool Object::erase(std::string_view key) {
  const std::size_t at = indexOf(key);
  if (at == kNowhere) {
    return false;
  }
  // The index first: its key is a view into the member's.
  if (index_ != nullptr) {
    index_->erase(*members_[at].key);
  }
  members_[at] = Member{};
  ++gaps_;
  if (gaps_ > kScanned && gaps_ > size()) {
    closeGaps();
  }
  return true;
}

void Object::closeGaps() {
  std::erase_if(members_, [](const Member& member) { return member.key == nullptr; });
  gaps_ = 0;
  index_.reset();
  buildIndex();
}

void Object::buildIndex() {
  if (members_.size() <= kScanned) {
    return;
  }
  index_ = std::make_unique<Index>();
  index_->reserve(members_.size());
  for (std::size_t at = 0; at < members_.size(); ++at) {
    if (members_[at].key != nullptr) {
      index_->emplace(*members_[at].key, static_cast<std::uint32_t>(at));
    }
  }
}

}  // namespace Fabric
