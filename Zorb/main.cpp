#include <unistd.h>

#include <cstdlib>
#include <iostream>

#include "Zorb/Command.h"

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  const char* const noColour = std::getenv("NO_COLOR");
  const Zorb::Console console{std::cout, std::cerr, isatty(STDOUT_FILENO) != 0,
                              isatty(STDERR_FILENO) != 0, noColour == nullptr || *noColour == '\0'};
  return Zorb::runCommand({argv + 1, argv + argc}, console);
}
