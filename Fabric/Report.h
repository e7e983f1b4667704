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

/// What a person wants to know of a controller: what is mounted and published, what is not, and why
/// not. Plain values, so that it can be rendered when nothing of the controller is left. Times are
/// those of the documents.
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

  /// How a mount or a publication that is not there is to be called.
  enum class Cause : std::uint8_t {
    failed,
    inProgress,
    refused,            // `admission` says why
    registeredByOther,  // of mounts: another group of the service has the path
    publishedByOther,   // of publications: another service has the path
    notRegistered,      // the registry does not have the path for the service
    kept,               // the switch is gone, but what was mounted was kept
  };

  /// Mounts or publications of a group that are not there for one reason: each of `paths` from, or
  /// to, each of `switches`.
  struct Missing {
    Cause cause = Cause::refused;
    Controller::Admission admission = Controller::Admission::undecided;
    std::string holder;  // the other group or service that has the path
    /// None: the reason is the controller's own and no switch was asked, as of a publication whose
    /// local entity is missing.
    SwitchIndices switches;
    std::vector<std::string> paths;
    /// When the first and the last of them were asked for, of mounts in progress or failed; will be
    /// looked for again, of publications that wait for their local entity.
    std::optional<Orm::Seconds> timeFirst;
    std::optional<Orm::Seconds> timeLast;
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

  /// How far a service is with the readiness of its publications.
  enum class Readiness : std::uint8_t {
    notReady,  // the service has not said that they are complete, or its word does not count
    heldBack,  // it has, and a path of its still waits for the local entity
    ready,
  };

  /// In which state the publish group is on how many switches. Each switch is counted once: waiting
  /// when a path waits for something local, not admitted or not connected when a path is missing
  /// for that, and published when all are.
  struct PublishCounts {
    std::size_t published = 0;
    std::size_t waiting = 0;
    std::size_t notAdmitted = 0;
    std::size_t notConnected = 0;
  };

  struct PublishGroup {
    std::string service;
    std::string group;
    std::size_t paths = 0;                      // directories too
    Readiness readiness = Readiness::notReady;  // of the service
    /// Why the group as a whole is not registered; empty: it is, and the rest counts.
    std::string notInForce;
    PublishCounts counts;
    std::vector<Missing> missing;
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
  std::vector<PublishGroup> publishGroups;
  std::vector<LogCapture::Message> log;
  std::vector<Expectation> expectations;  // those that were reached
  std::size_t expectationsNotReached = 0;

  std::size_t connectedSwitches() const;
  std::size_t inactiveSwitches() const;
  std::size_t failedExpectations() const;
};

/// The reason of `missing` in words, without its times: "failed", "version not in filter" ...
std::string reasonOf(const Report::Missing& missing);

/// A publication that is missing so waits for something local: its entity, or its service's word.
bool waitsForLocal(Report::Cause cause, Controller::Admission admission);

/// The readiness in a word or two.
const char* text(Report::Readiness readiness);

}  // namespace Fabric
