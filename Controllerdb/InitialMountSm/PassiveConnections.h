#pragma once

#include <string>
#include <vector>

namespace Controller {

/// Appends the names of the attribute-log connections that are passive and whose status says that
/// they are active, in the order of the connection directory.
void getPassiveConnectionsList(std::vector<std::string>& out);

}  // namespace Controller
