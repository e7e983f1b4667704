#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "Fabric/Value.h"

namespace Fabric {

/// The blocks of a document, in the order in which a start builds them.
enum class Block : std::uint8_t { controller, entities, attrlog, services, switches };
inline constexpr std::size_t kBlockCount = 5;

/// The block's key in the document.
std::string_view blockName(Block block);

using KeyList = std::shared_ptr<const std::vector<Text>>;

/// One change of a patch: what `patch` says happens to each of `keys`, in their order.
struct Step {
  Block block = Block::controller;
  /// Canonical keys of the block's members: ids of switches, paths of entities, names. A pattern's
  /// matches share one list. The block `controller` is one thing: its steps have the one key "".
  KeyList keys;
  /// In long forms, checked; null removes the member. Its marks are places of the patch's text.
  Value patch;
  /// The place of the key that stands for `keys`.
  Mark mark;
};

/// A patch that was checked against one state of a document, in its own order. Made by
/// Model::resolve; good for the model that made it until that model changes otherwise.
struct Patch {
  std::vector<Step> steps;
};

}  // namespace Fabric
