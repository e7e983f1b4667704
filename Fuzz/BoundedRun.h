#pragma once

#include "Fabric/Document.h"

namespace Fuzz {

/// Runs a document as `zorb sim` does, reports included, unless it has many switches or events; and
/// ends the run after some thousand pieces of work. Requires that what comes out is well-formed,
/// that nothing is alive afterwards, and that the run is stopped by no assertion but those that a
/// document may reach: configurations that contradict each other.
///
/// A run that was stopped so is kept as it is, for there is no orderly end of it, and leaks are not
/// looked for from then on; after many of them the fuzzer is asked to end, and whoever started it
/// may start it again.
void runBounded(const Fabric::Document& document);

}  // namespace Fuzz
