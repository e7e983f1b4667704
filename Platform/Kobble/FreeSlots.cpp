#include "Platform/Kobble/FreeSlots.h"

namespace Kobble::detail {

std::size_t FreeSlots::count(std::size_t size) const {
  std::size_t count = 0;
  for (const Word* at = top_; at != &ground_; ++count) {
    const Word word = read(at);
    if (isList(size) || (word & kBelow) != 0) {
      at = reinterpret_cast<const Word*>(word & ~kBelow);
    } else {
      --at;
    }
  }
  return count;
}

#if KOBBLE_POISONS
// Only the list itself may look into slots that are free.
[[gnu::no_sanitize_address]] FreeSlots::Word FreeSlots::read(const Word* at) { return *at; }
[[gnu::no_sanitize_address]] void FreeSlots::write(Word* at, Word word) { *at = word; }
#endif

}  // namespace Kobble::detail
