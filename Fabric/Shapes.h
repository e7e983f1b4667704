#pragma once

#include <span>
#include <string_view>

#include "Fabric/Patch.h"
#include "Fabric/Shape.h"

namespace Fabric {

/// What a document may hold at its top: the blocks and `until` and `events`.
const Shape& documentShape();
/// A block of the document. A switch's `count` is part of the shape.
const Shape& blockShape(Block block);
const Shape& eventShape();
/// A state document, as far as an expectation can name its members.
const Shape& stateShape();

}  // namespace Fabric
