#pragma once

#include <compare>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Fabric/Report.h"

namespace Fabric {

/// Gathers what is missing of one group, path after path: paths that are missing on the same
/// switches for the same reason become one line of the report.
///
/// Costs the switches of each path, and for each path a search among the lines so far.
class MissingLines {
 public:
  /// What the mounts or publications of a line have in common. What is worse compares less.
  struct Reason {
    Report::Cause cause = Report::Cause::refused;
    Controller::Admission admission = Controller::Admission::undecided;
    std::string holder;
    auto operator<=>(const Reason&) const = default;
  };

  explicit MissingLines(std::size_t switches) : worst_(switches) {}

  /// The path that is being read is missing for the reason, whatever the switch.
  void noteForAll(const Reason& reason, std::optional<Orm::Seconds> time = std::nullopt);
  /// The same on one switch; switches come in ascending order.
  void note(const Reason& reason, std::size_t index,
            std::optional<Orm::Seconds> time = std::nullopt);
  /// What has been noted is of this path. The next path begins.
  void pathEnds(const std::string& path);

  /// By switch: the worst that any path says; nothing: no path is missing on it.
  const std::vector<std::optional<Reason>>& worst() const { return worst_; }
  /// The lines, the worst first.
  std::vector<Report::Missing> lines() const;

 private:
  struct Span {
    std::optional<Orm::Seconds> first;
    std::optional<Orm::Seconds> last;
    void include(const Span& other);
  };
  struct Switches {
    Report::SwitchIndices indices;
    Span times;
  };
  struct Paths {
    std::vector<std::string> names;
    Span times;
  };

  std::vector<std::optional<Reason>> worst_;
  std::map<Reason, Switches> ofPath_;  // that is being read
  std::map<std::pair<Reason, Report::SwitchIndices>, Paths> lines_;
};

}  // namespace Fabric
