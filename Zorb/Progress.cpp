#include "Zorb/Progress.h"

#include <ostream>
#include <string>

#include "Fabric/JsonText.h"

namespace Zorb {

namespace {

constexpr std::chrono::milliseconds kQuietTime(1000);
constexpr std::chrono::milliseconds kInterval(200);

}  // namespace

void Progress::show(Orm::Seconds time, std::size_t mounts, std::size_t steps,
                    Clock::time_point now) {
  if (now - start_ < kQuietTime || (shown_ && now - shownAt_ < kInterval)) return;
  const double elapsed = std::chrono::duration<double>(now - start_).count();
  std::string line = "\r\x1b[K";
  Fabric::appendSeconds(line, time);
  line += " of ";
  Fabric::appendSeconds(line, end_);
  line += " s, " + std::to_string(mounts) + " mounts, " +
          std::to_string(static_cast<std::size_t>(static_cast<double>(steps) / elapsed)) +
          " steps/s";
  out_ << line << std::flush;
  shown_ = true;
  shownAt_ = now;
}

void Progress::erase() {
  if (shown_) out_ << "\r\x1b[K" << std::flush;
  shown_ = false;
}

}  // namespace Zorb
