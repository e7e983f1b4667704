#pragma once

#include <cstdint>

namespace Controller {

/// How far a service's publication is, in one byte.
enum class PublishState : std::uint8_t {
  unknown = 0,
  configured = 1,  // a group or a path that was seen in the service's configuration
};

}  // namespace Controller
