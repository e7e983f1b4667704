#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <utility>

namespace Soak {

/// The kinds of change that a random run makes.
enum class Change : std::uint8_t {
  connection,
  flap,
  switchSet,
  inactive,
  reachable,
  version,
  enabled,
  service,
  group,
  path,
  systemFilter,
  versionFilter,
  preserve,
  generation,
  leader,
  serviceName,
  status,
  publication,
  directory,
  ready,
  entity,
  attrlog,
  heartbeat,
  behaviour,
  reportState,
  loseOutcome,
  vanish,
};
inline constexpr std::size_t kChanges = 27;

/// How often each kind of change comes.
using Weights = std::array<std::uint8_t, kChanges>;

/// The weights with others for some kinds.
constexpr Weights with(Weights weights,
                       std::initializer_list<std::pair<Change, std::uint8_t>> others) {
  for (const auto& [change, weight] : others) weights[static_cast<std::size_t>(change)] = weight;
  return weights;
}

/// What a family of random runs is about: how large its fabrics are and how often each kind of
/// change comes.
struct Profile {
  std::string_view name;
  std::string_view about;
  /// Switches at the start, both ends included.
  std::size_t fewest;
  std::size_t most;
  /// Of each 100 changes, those that come at the time of the one before.
  std::size_t together;
  /// Of each 100 changes, those that are made within a notification: in half of the runs none, in
  /// the others twice as many.
  std::size_t within;
  Weights weight;
};

/// All profiles; the first is the default.
const std::array<Profile, 8>& profiles();
/// Null when there is none of that name.
const Profile* profile(std::string_view name);

}  // namespace Soak
