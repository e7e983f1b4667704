#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Controllerdb/MountsRegistry/Admission.h"
#include "Fabric/Expect.h"
#include "Fabric/InitialMountReport.h"
#include "Fabric/LogCapture.h"
#include "Fabric/Mark.h"
#include "Platform/Orm/Seconds.h"

namespace Fabric {

/// What a person wants to know of a controller: what is mounted, what is not, and why not. Plain
/// values, so that it can be rendered when nothing of the controller is left. Times are those of
/// the documents.
struct Report {
  struct Switch {
    std::string id;
    std::string name;  // empty: none
    bool connected = false;
    bool inactive = false;

    const std::string& label() const { return name.empty() ? id : name; }
  };
  /// Into `switches`, ascending.
  using SwitchIndices = std::vector<std::uint32_t>;

  /// How a mount that is not there is to be called.
  enum class Cause : std::uint8_t {
    failed,
    inProgress,
    refused,            // `admission` says why
    registeredByOther,  // another group of the service has the path
    notRegistered,      // the service is no mounter of the path
    kept,               // the switch is gone, but what was mounted was kept
  };

  /// Mounts of a group that are not there for one reason: each of `paths` from each of `switches`.
  struct Missing {
    Cause cause = Cause::refused;
    Controller::Admission admission = Controller::Admission::undecided;
    std::string otherGroup;
    SwitchIndices switches;
    std::vector<std::string> paths;
    /// Of mounts in progress or failed: when the first and the last of them were asked for.
    std::optional<Orm::Seconds> askedFirst;
    std::optional<Orm::Seconds> askedLast;
  };

  /// In which state the group is on how many switches. Each switch is counted once: failed when a
  /// path failed, in progress when one is, not admitted or not connected when a path is missing
  /// for that, and mounted when all are.
  struct Counts {
    std::size_t mounted = 0;
    std::size_t inProgress = 0;
    std::size_t failed = 0;
    std::size_t notAdmitted = 0;
    std::size_t notConnected = 0;
  };

  struct Group {
    std::string service;
    std::string group;
    bool proxy = false;
    std::size_t paths = 0;
    /// Why the group as a whole is not registered; empty: it is, and the rest counts.
    std::string notInForce;
    Counts counts;
    std::vector<Missing> missing;
    /// Nothing: not tracked.
    std::optional<InitialMounts> initialMounts = std::nullopt;
  };

  struct Expectation {
    Orm::Seconds time = 0;
    Mark mark;  // of the event
    std::vector<ExpectFailure> failures;
  };

  std::string document;
  Orm::Seconds time = 0;
  bool interrupted = false;  // somebody stopped the run here
  std::string leader;        // empty: none known
  std::vector<Switch> switches;
  std::vector<Group> groups;
  std::vector<LogCapture::Message> log;
  std::vector<Expectation> expectations;  // those that were reached
  std::size_t expectationsNotReached = 0;

  std::size_t connectedSwitches() const;
  std::size_t inactiveSwitches() const;
  std::size_t failedExpectations() const;
};

/// The reason of `missing` in words, without its times: "failed", "version not in filter" ...
std::string reasonOf(const Report::Missing& missing);

}  // namespace Fabric
