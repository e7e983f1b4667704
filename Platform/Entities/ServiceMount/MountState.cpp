#include "Platform/Entities/ServiceMount/MountState.h"

namespace Controller {

const char* name(MountState state) {
  switch (state) {
    case MountState::unmounted:
      return "unmounted";
    case MountState::requested:
      return "requested";
    case MountState::mounting:
      return "mounting";
    case MountState::failed:
      return "failed";
    case MountState::mounted:
      return "mounted";
  }
  return "unknown";
}

void appendTo(std::string& out, MountState state) { out += name(state); }

}  // namespace Controller
