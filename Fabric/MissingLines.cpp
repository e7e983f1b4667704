#include "Fabric/MissingLines.h"

#include <algorithm>

namespace Fabric {

void MissingLines::Span::include(const Span& other) {
  if (!other.first) return;
  first = std::min(first.value_or(*other.first), *other.first);
  last = std::max(last.value_or(*other.last), *other.last);
}

void MissingLines::noteForAll(const Reason& reason, std::optional<Orm::Seconds> time) {
  ofPath_[reason].times.include({time, time});
}

void MissingLines::note(const Reason& reason, std::size_t index, std::optional<Orm::Seconds> time) {
  Switches& switches = ofPath_[reason];
  switches.indices.push_back(static_cast<std::uint32_t>(index));
  switches.times.include({time, time});
  auto& worst = worst_[index];
  if (!worst || reason < *worst) worst = reason;
}

void MissingLines::pathEnds(const std::string& path) {
  for (auto& [reason, switches] : ofPath_) {
    Paths& paths = lines_[{reason, std::move(switches.indices)}];
    paths.names.push_back(path);
    paths.times.include(switches.times);
  }
  ofPath_.clear();
}

std::vector<Report::Missing> MissingLines::lines() const {
  std::vector<Report::Missing> out;
  out.reserve(lines_.size());
  for (const auto& [key, paths] : lines_) {
    const auto& [reason, switches] = key;
    out.push_back({reason.cause, reason.admission, reason.holder, switches, paths.names,
                   paths.times.first, paths.times.last});
  }
  return out;
}

}  // namespace Fabric
