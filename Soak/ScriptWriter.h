#pragma once

#include <cstdint>
#include <string_view>

#include "Soak/Profile.h"
#include "Soak/Script.h"

namespace Soak {

/// What makes a random script what it is.
struct Seed {
  std::uint64_t number = 1;
  const Profile* profile = &profiles().front();
  /// Changes to be made, about; several may come of one.
  std::size_t events = 40;
};

/// A random fabric with random events: the same for the same seed, everywhere. A third of the kinds
/// of change, others for each seed, is left out, so that rare ones come in numbers and some states
/// are reached that a change of another kind would end. Half of the runs make changes within
/// notifications, and there mostly while a gate closes or a switch comes or goes.
Script randomScript(const Seed& seed);

/// Random events around a given fabric: first come its own, then the random ones.
/// `text` is a document that was checked; `name` is for messages. Throws InputError.
Script scriptAround(const Seed& seed, std::string_view name, std::string_view text);

}  // namespace Soak
