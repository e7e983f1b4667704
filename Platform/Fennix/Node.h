#pragma once

#include "Platform/Orm/Entity.h"
#include "Platform/Orm/String.h"

namespace Fennix {

/// An entity of a type of which the store knows the name alone: what stands where a service's or a
/// switch's own types would.
class Node : public Orm::Entity, private Kobble::Counted<Node> {
 public:
  explicit Node(Orm::String typeName) : typeName_(std::move(typeName)) {}

  const Orm::String& typeName() const { return typeName_; }

 private:
  Orm::String typeName_;
};

}  // namespace Fennix
