#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

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
  /// Of each 100 changes, those that are made within a notification.
  std::size_t within;
  std::array<std::uint8_t, kChanges> weight;
};

/// All profiles; the first is the default.
const std::array<Profile, 8>& profiles();
/// Null when there is none of that name.
const Profile* profile(std::string_view name);

}  // namespace Soak
