#pragma once

#include "Fabric/GroupView.h"
#include "Fabric/Object.h"
#include "Fabric/Value.h"
#include "Fabric/Writable.h"
#include "Platform/Entities/MountFilter/MountFilterServiceVersion.h"
#include "Platform/Entities/MountFilter/MountFilterSystem.h"

namespace Fabric {

/// A filter with the members of an object of booleans, not yet watched by anybody.
Orm::Ptr<Controller::MountFilterSystem> newSystemFilter(const Orm::String& name,
                                                        const Object& members);
Orm::Ptr<Controller::MountFilterServiceVersion> newVersionFilter(const Orm::String& name,
                                                                 const Object& members);

/// Edits a filter's members: what a list lacks goes first, in the old order; then each member of
/// the patch is set, or removed by null, in the patch's order.
void edit(Controller::MountFilterSystem& filter, const Object& patch);
void edit(Controller::MountFilterServiceVersion& filter, const Object& patch);

/// Carries `systems` of a mount or publish group: a filter that appears is built whole before it
/// is set; null takes it away.
template <class Group>
void carrySystems(Group& group, const GroupView& after, const Value& patch) {
  if (patch.isNull()) {
    group.systemFilterIs(nullptr);
  } else if (const auto filter = writable(group.systemFilter())) {
    edit(*filter, patch.object());
  } else {
    group.systemFilterIs(newSystemFilter(group.groupName(), *after.systems()));
  }
}

/// The same of `versions`.
template <class Group>
void carryVersions(Group& group, const GroupView& after, const Value& patch) {
  if (patch.isNull()) {
    group.versionFilterIs(nullptr);
  } else if (const auto filter = writable(group.versionFilter())) {
    edit(*filter, patch.object());
  } else {
    group.versionFilterIs(newVersionFilter(group.groupName(), *after.versions()));
  }
}

/// Gives a new group the filters that it is to have.
template <class Group>
void setFilters(Group& group, const GroupView& view) {
  if (const Object* systems = view.systems()) {
    group.systemFilterIs(newSystemFilter(group.groupName(), *systems));
  }
  if (const Object* versions = view.versions()) {
    group.versionFilterIs(newVersionFilter(group.groupName(), *versions));
  }
}

}  // namespace Fabric
