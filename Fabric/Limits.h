#pragma once

#include <cstddef>
#include <cstdint>

/// What a fabric document or a patch may be at most. Each limit stands far above what a fabric
/// needs and low enough that a hostile document is refused before it costs much time or memory.
/// Going over one is an InputError at the place where it happens.
namespace Fabric {

/// Bytes of one document or patch. Looked at before the text is read.
inline constexpr std::size_t kMaxBytes = std::size_t{64} << 20;

/// Arrays and objects within each other. Bounds the stack of everything that walks a tree.
inline constexpr std::size_t kMaxDepth = 64;

/// Scalars, arrays, objects and keys, an alias counted as often as it is used.
inline constexpr std::size_t kMaxNodes = 4'000'000;

/// Uses of YAML aliases.
inline constexpr std::size_t kMaxAliases = 100'000;

/// Bytes of a name, a path, a type or any other text of the document but notes and expectations.
inline constexpr std::size_t kMaxTextLength = 4'096;

/// Bytes of a display name that is numbered for the switches of a run: each keeps its own.
inline constexpr std::size_t kMaxNumberedNameLength = 256;

/// Components of a path.
inline constexpr std::size_t kMaxPathComponents = 64;

/// Switches at any one time, each member of a run counted.
inline constexpr std::size_t kMaxSwitches = 100'000;

/// Members (switches, services, entities ...) that all events of a document together bring, remove
/// or rename, a pattern counted as often as it matches. These are gone through before the run.
inline constexpr std::size_t kMaxChanges = 1'000'000;

/// Seconds, 31 years: up to here a double tells microseconds apart.
inline constexpr double kMaxSeconds = 1e9;

/// A mount timeout is handed on as a signed 32-bit number of seconds.
inline constexpr double kMaxMountTimeout = 2'147'483'647;

/// Numbers that the entities hold in 32 bits: versions, retries.
inline constexpr double kMaxUnsigned = 4'294'967'295;

/// Seconds from the last event to the end of a run, when the document has no `until`.
inline constexpr double kRunAfterLastEvent = 600;

}  // namespace Fabric
