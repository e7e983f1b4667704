#pragma once

#include <string_view>

#include "Platform/Fennix/Dir.h"

namespace Controller {

/// Creates every missing directory along a slash-separated path below `dir`. Directories that are
/// there are taken; where something else stands in the way, what lies below is not created.
void doCreateDirPath(const Orm::Ptr<Fennix::Dir>& dir, std::string_view path);

}  // namespace Controller
