#pragma once

#include <cstdint>
#include <string>

namespace Controller {

/// Whether a path is mounted from a connection, or published to it, and if not, why not.
enum class Admission : std::uint8_t {
  undecided,  // the connection was never looked at
  admitted,
  notConnected,
  noConnectionConfig,
  noVersionNegotiated,
  versionNotInFilter,
  systemNotInFilter,
  entityMissing,  // of publications only, as what follows
  notReady,
};

/// As reports print it.
inline const char* text(Admission admission) {
  switch (admission) {
    case Admission::undecided:
      return "not decided yet";
    case Admission::admitted:
      return "admitted";
    case Admission::notConnected:
      return "not connected";
    case Admission::noConnectionConfig:
      return "no connection configuration";
    case Admission::noVersionNegotiated:
      return "no version negotiated";
    case Admission::versionNotInFilter:
      return "version not in filter";
    case Admission::systemNotInFilter:
      return "system not in filter";
    case Admission::entityMissing:
      return "local entity missing";
    case Admission::notReady:
      return "not ready to publish";
  }
  return "unknown";
}

inline void appendTo(std::string& out, Admission admission) { out += text(admission); }

}  // namespace Controller
