#pragma once

#include <cstdint>
#include <string_view>

#include "Soak/Note.h"

namespace Soak {

/// How a script is lived through; what comes out is the same for all.
struct Way {
  /// All text traces and the fast trace on.
  bool traces = false;
};

/// Runs a fabric document, its faults included, with all invariants checked after each piece of
/// work (of a large fabric, after each event and now and then); at the end, when all has settled,
/// compares with a controller that is started afresh, takes everything down and looks whether
/// anything is left. The note follows.
///
/// Returns the digest of all events and of the state at the end. Throws Broken, and InputError when
/// the text is no document; an assertion stops the process, after the note was told.
std::uint64_t live(std::string_view text, const Way& way, Note& note);

}  // namespace Soak
