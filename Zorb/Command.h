#pragma once

#include <string>
#include <vector>

#include "Zorb/Console.h"

namespace Zorb {

/// The command `zorb`: finds out which subcommand is meant and carries it out. `arguments` are
/// those behind the program's name. Returns the exit status; what is wrong with the arguments or
/// the input has been said on the console's error stream.
int runCommand(const std::vector<std::string>& arguments, const Console& console);

}  // namespace Zorb
