#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Entities/ServiceMount/MountState.h"
#include "Platform/Entities/SystemId/SystemId.h"

namespace Soak {

/// What a soak does to a run beyond what a fabric document can say. It stands in the note of an
/// event, so that a fabric with faults is a fabric document like any other:
///
///     fault state SWITCH PATH STATE    the mount's record gets a state that nobody asked for
///     fault lose SWITCH PATH           the outcome of the mount that is under way never comes
///     fault vanish SWITCH PATH         the entity at the mount path goes
///     fault within KIND N              the event's patch is applied by whoever is told of the
///                                      N-th change of that kind from now on
///
/// A fault for which there is nothing to be done does nothing.
struct Fault {
  enum class Kind : std::uint8_t { state, lose, vanish, within };

  /// Of `within`: what is told of. At the latest the patch comes right after the next event's.
  enum class Notice : std::uint8_t {
    peer,
    mountEntry,
    publishEntry,
    groupState,
    published,
    publishReady,
    initialMountsComplete,
    pathPrefix,
    any,  // whichever comes
  };
  static constexpr std::size_t kNotices = 9;

  Kind kind = Kind::state;
  Controller::SystemId systemId;
  std::string path;
  Controller::MountState state = Controller::MountState::unmounted;
  Notice notice = Notice::peer;
  std::uint32_t count = 1;

  /// Nothing when the note is no fault, or none that is known.
  static std::optional<Fault> parse(std::string_view note);
  std::string note() const;
};

}  // namespace Soak
