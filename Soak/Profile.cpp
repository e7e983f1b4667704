#include "Soak/Profile.h"

#include <algorithm>

namespace Soak {

namespace {

constexpr Weights kEven = {8, 3, 2, 2, 1, 6, 1, 2, 3, 6, 5, 4, 2, 3,
                           3, 1, 1, 3, 3, 2, 3, 1, 1, 3, 2, 1, 1};

}  // namespace

const std::array<Profile, 8>& profiles() {
  static constexpr std::array<Profile, 8> kProfiles = {{
      {"mixed", "a little of everything", 1, 7, 30, 6, kEven},
      {"flapping", "switches that come and go, several times within one turn", 1, 6, 60, 8,
       with(kEven, {{Change::connection, 40},
                    {Change::flap, 30},
                    {Change::switchSet, 12},
                    {Change::inactive, 12},
                    {Change::version, 12}})},
      {"configuration", "services that change their mind: groups, paths, filters", 1, 5, 50, 10,
       with(kEven, {{Change::service, 10},
                    {Change::group, 20},
                    {Change::path, 30},
                    {Change::systemFilter, 25},
                    {Change::versionFilter, 25},
                    {Change::generation, 8},
                    {Change::status, 6},
                    {Change::preserve, 6}})},
      {"leadership", "leaders and generations that change in every phase", 1, 5, 30, 8,
       with(kEven, {{Change::leader, 40}, {Change::generation, 25}, {Change::heartbeat, 4}})},
      {"publications", "local paths that are published, and entities that come late or go", 1, 5,
       40, 8,
       with(kEven, {{Change::publication, 30},
                    {Change::directory, 25},
                    {Change::ready, 20},
                    {Change::systemFilter, 30},
                    {Change::versionFilter, 20},
                    {Change::entity, 30}})},
      {"initial", "initial mounts: leaders, late switches, slow mounts, flushes", 1, 6, 15, 4,
       with(kEven, {{Change::leader, 12},
                    {Change::attrlog, 15},
                    {Change::behaviour, 12},
                    {Change::heartbeat, 6},
                    {Change::connection, 16}})},
      {"reports", "mounts that fail, stall, report twice or out of order, and vanish", 1, 6, 30, 8,
       with(kEven, {{Change::behaviour, 25},
                    {Change::reportState, 30},
                    {Change::loseOutcome, 20},
                    {Change::vanish, 12}})},
      {"large", "up to hundreds of switches", 40, 300, 30, 4, kEven},
  }};
  return kProfiles;
}

const Profile* profile(std::string_view name) {
  const auto& all = profiles();
  const auto found = std::find_if(all.begin(), all.end(),
                                  [name](const Profile& known) { return known.name == name; });
  return found == all.end() ? nullptr : &*found;
}

}  // namespace Soak
