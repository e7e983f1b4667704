#include "Bench/Converge/Process.h"

#include <chrono>
#include <ctime>
#include <fstream>
#include <limits>
#include <string>

namespace Bench {

double wallSeconds() {
  using Clock = std::chrono::steady_clock;
  return std::chrono::duration<double>(Clock::now().time_since_epoch()).count();
}

double cpuSeconds() {
  return static_cast<double>(std::clock()) / static_cast<double>(CLOCKS_PER_SEC);
}

double statusBytes(const char* field) {
  std::ifstream status("/proc/self/status");
  std::string name;
  while (status >> name) {
    double kib = 0;
    if (name == std::string(field) + ":" && status >> kib) return kib * 1024;
    status.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
  }
  return 0;
}

}  // namespace Bench
