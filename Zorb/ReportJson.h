#pragma once

#include <iosfwd>

#include "Fabric/Report.h"

namespace Zorb {

/// Writes the report as one JSON document, whole: lists are not cut, switches stand by their ids.
/// Members that do not apply (an empty text, no times) are left out.
void writeReportJson(const Fabric::Report& report, std::ostream& out);

}  // namespace Zorb
