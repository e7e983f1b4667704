#include "Fabric/Expectation.h"

#include "Fabric/Checker.h"
#include "Fabric/Quote.h"
#include "Fabric/Shapes.h"
#include "Fabric/SystemIdText.h"

namespace Fabric {

namespace {

void checkKeysAt(StatePlace place, const Value& expect, const Checker& checker,
                 const std::unordered_set<std::string>& names) {
  if (!expect.isObject() || place == StatePlace::other) {
    return;
  }
  for (const Object::Member& member : expect.object()) {
    if (place == StatePlace::bySwitch && !systemIdNumber(*member.key) &&
        !names.contains(*member.key)) {
      checker.fail(member.mark, quote(*member.key) +
                                    " is no switch of this document, expected an id or the display "
                                    "name that a switch has at some time");
    }
    checkKeysAt(placeBelow(place, *member.key), member.value, checker, names);
  }
}

}  // namespace

Value checkedExpectation(std::string_view file, const Value& written) {
  // As in a patch null stands everywhere.
  const Checker checker(file, Purpose::patch);
  return checker.check(stateShape(), "expect", written);
}

void checkSwitchKeys(std::string_view file, const Value& expect,
                     const std::unordered_set<std::string>& names) {
  checkKeysAt(StatePlace::root, expect, Checker(file, Purpose::patch), names);
}

StatePlace placeBelow(StatePlace place, std::string_view key) {
  switch (place) {
    case StatePlace::root:
      return key == "mounts"        ? StatePlace::bySwitch
             : key == "mountStatus" ? StatePlace::mountStatuses
             : key == "published"   ? StatePlace::published
                                    : StatePlace::other;
    case StatePlace::mountStatuses:
      return StatePlace::mountStatus;
    case StatePlace::mountStatus:
    case StatePlace::published:
      return key == "systems" ? StatePlace::bySwitch : StatePlace::other;
    case StatePlace::bySwitch:
    case StatePlace::other:
      return StatePlace::other;
  }
  return StatePlace::other;
}

}  // namespace Fabric
