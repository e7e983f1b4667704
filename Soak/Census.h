#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_set>

#include "Fabric/ServiceBlockView.h"
#include "Fabric/Simulation.h"

namespace Soak {

/// What a place of a trace or message may hold.
enum class Kind : std::uint8_t {
  // Names of what there is.
  systemId,
  display,
  service,
  group,
  path,
  local,
  remote,
  type,
  target,
  component,
  generation,
  connection,
  // Values, of which the form alone can be wrong.
  number,
  flag,
  state,
};
inline constexpr std::size_t kNameKinds = 12;

/// The names of all that there is, or was at some time of the present piece of work: what traces
/// and messages may name. Taken of the document and of the entities, not of what machines keep.
///
/// A name is there
///
/// - **while the document says it**, in whatever block: a switch that only a filter names or that
/// is
///   not connected, a service that only a switch reports, a group of a closed gate. Machines trace
///   what they look for before they know whether it is there;
/// - **until the piece of work is over in which it went**: who takes something away says so when it
///   is gone, and a patch that is applied within a notification may take away what the machines
///   that are on the stack are about;
/// - **while an entity or a record has it**: mounts of a switch that has gone are on their way out
///   for a while, statuses and mounters keep the name of a service that was renamed, entries the
///   target and the type that they came with;
/// - **when it stands for no name**: an empty generation, and the service and group of a machine
///   that was never told its name; the service behind a proxy's name.
///
/// look() and begin() cost a walk over all names. Reads, changes nothing.
class Census {
 public:
  /// The simulation has to stay.
  explicit Census(const Fabric::Simulation& simulation) : simulation_(simulation) { look(); }

  /// A new piece of work: what has gone before it is forgotten.
  void begin();
  /// Adds what is there now.
  void look();

  /// Whether a text is, or may be, what `kind` says.
  bool has(Kind kind, std::string_view text) const;

 private:
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const {
      return std::hash<std::string_view>()(text);
    }
  };
  using Names = std::unordered_set<std::string, Hash, std::equal_to<>>;

  void add(Kind kind, std::string_view name);
  void addService(std::string_view name);
  void addTarget(std::string_view path);

  void lookAtSwitches();
  void lookAtServices();
  void lookAtBlock(std::string_view key, const Fabric::ServiceBlockView& block);
  void lookAtMountPaths(const Fabric::Value& group);
  void lookAtPublishedPaths(const Fabric::Value& group);
  void lookAtMounts();
  void lookAtStatuses(const Fennix::Dir& statuses);
  void lookAtPublications();

  const Fabric::Simulation& simulation_;
  std::array<Names, kNameKinds> names_;
};

}  // namespace Soak
