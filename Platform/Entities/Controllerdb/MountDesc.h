#pragma once

#include "Platform/Orm/String.h"

namespace Controllerdb {

/// Describes one publication. The default, with all five empty, describes none and tests false.
struct MountDesc {
  Orm::String localPath;
  Orm::String remotePath;
  Orm::String type;
  Orm::String flags;
  Orm::String serviceName;

  explicit operator bool() const { return !(*this == MountDesc()); }
  bool operator==(const MountDesc&) const = default;
};

}  // namespace Controllerdb
