#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Bench/Converge/Options.h"

namespace Bench {

/// The input of the converge workload, the same for everyone who runs it: which entries there are,
/// who filters them, which versions a switch announces. Everything follows from the four sizes.
///
///  * The entries are dealt to the services, and in each service to its groups.
///  * Every other entry of a group is filtered. Two contributors name systems, half of the switches
///    each, and versions, two each; the filter is the union of what they name.
///  * The negotiated version is the highest that both sides know; without one there is no mount.
class Scenario {
 public:
  explicit Scenario(const Options& options) : options_(options) {}

  const Options& options() const { return options_; }

  std::uint32_t serviceOf(std::uint32_t entry) const { return entry % options_.services; }
  std::uint32_t groupOf(std::uint32_t entry) const {
    return entry / options_.services % options_.groups;
  }
  bool filtered(std::uint32_t entry) const {
    return entry / (options_.services * options_.groups) % 2 == 1;
  }

  static constexpr std::uint32_t kContributors = 2;
  /// Entries of one class have the same filter.
  static constexpr std::uint32_t kFilterClasses = 4;
  static std::uint32_t filterClass(std::uint32_t entry) { return entry % kFilterClasses; }
  static bool contributorNames(std::uint32_t contributor, std::uint32_t filterClass,
                               std::uint32_t sw) {
    const std::uint32_t quarter = (sw + filterClass) % kFilterClasses;
    return quarter == contributor || quarter == contributor + 1;
  }
  static std::vector<std::uint32_t> contributorVersions(std::uint32_t contributor);

  /// What the switch and the controller agree on for the service; 0: nothing.
  static std::uint32_t negotiated(std::uint32_t sw, std::uint32_t service);

  static std::string switchName(std::uint32_t sw);
  static std::string serviceName(std::uint32_t service);
  static std::string groupName(std::uint32_t group);
  std::string path(std::uint32_t entry) const;

 private:
  Options options_;
};

/// What a run leaves behind; `digest` does not depend on the order of the leaves.
struct Outcome {
  std::uint64_t mounts = 0;
  std::uint64_t groups = 0;           // that have a mount
  std::uint64_t groupsConverged = 0;  // whose mounts are all there
  std::uint64_t digest = 0;

  bool operator==(const Outcome&) const = default;
};

/// What one status leaf adds to the digest: service, switch, group, path, state and mounted path.
std::uint64_t leafDigest(std::string_view service, std::string_view switchName,
                         std::string_view group, std::string_view path, std::uint32_t state,
                         std::string_view mountedPath);

}  // namespace Bench
