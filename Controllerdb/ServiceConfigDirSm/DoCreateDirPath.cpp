#include "Controllerdb/ServiceConfigDirSm/DoCreateDirPath.h"

#include "Controllerdb/ServiceConfigDirSm/ServiceConfigTrace.h"

namespace Controller {

using Orm::Ptr;
using Orm::String;

namespace {

Ptr<Fennix::Dir> createInner(Fennix::Dir& dir, const String& name) {
  CONFIG_TRACE(8, "doCreateDirPath", " ", name);
  return dir.createDir(name);
}

void createFinal(Fennix::Dir& dir, const String& name) {
  CONFIG_TRACE(8, "doCreateDirPath", " final:", name);
  if (dir.entity(name)) return;
  CONFIG_TRACE(8, "doCreateDirPath", " creating final ", name);
  dir.createDir(name);
}

}  // namespace

void doCreateDirPath(const Ptr<Fennix::Dir>& dir, std::string_view path) {
  Ptr<Fennix::Dir> current = dir;
  String last;  // the component that was seen last, not created yet
  Fennix::eachComponent(path, [&](std::string_view component) {
    if (!last.empty()) current = createInner(*current, last);
    last = String(component);
    return static_cast<bool>(current);
  });
  if (current && !last.empty()) createFinal(*current, last);
}

}  // namespace Controller
