#pragma once

#include <string_view>

#include "Fabric/Object.h"
#include "Fabric/Value.h"

namespace Fabric {

/// Base of the views, which read an object of a Model's tree through the names of its members and
/// know the defaults of those that are not there. A view is a pointer: cheap to make and to copy,
/// good as long as the value that it was made from stays unchanged. Members have been checked, so
/// that reading one cannot fail.
class View {
 public:
  /// Of null, or of no value at all: everything has its default.
  explicit View(const Value* value)
      : object_(value != nullptr && value->isObject() ? &value->object() : nullptr) {}
  explicit View(const Object& object) : object_(&object) {}

  /// An object of names, paths or ids; an empty one when it is not there.
  const Object& membersOf(std::string_view name) const {
    static const Object kNoMembers;
    const Value* value = find(name);
    return value == nullptr ? kNoMembers : value->object();
  }

 protected:
  const Value* find(std::string_view name) const {
    return object_ == nullptr ? nullptr : object_->find(name);
  }
  bool boolean(std::string_view name, bool otherwise) const {
    const Value* value = find(name);
    return value == nullptr ? otherwise : value->boolean();
  }
  double number(std::string_view name, double otherwise) const {
    const Value* value = find(name);
    return value == nullptr ? otherwise : value->number();
  }
  std::string_view text(std::string_view name, std::string_view otherwise = "") const {
    const Value* value = find(name);
    return value == nullptr ? otherwise : std::string_view(value->string());
  }

 private:
  const Object* object_;
};

}  // namespace Fabric
