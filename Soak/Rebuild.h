#pragma once

#include <set>
#include <string>

#include "Fabric/Model.h"
#include "Soak/Excuses.h"

namespace Soak {

/// Whether a controller that is started afresh on the same inputs comes to the same state as one
/// that lived through a run and has settled. Throws Broken.
///
/// `lived` is the state document of the latter, `model` the document as its run left it. There must
/// be no simulation at the time. Not compared, because it tells of the past:
///
/// - `time`, `log`, `initialMounts`, and whose initial mounts are complete: which switches were
///   there in the connection period;
/// - switches that are undecided (Excuses), and states of mounts that were meddled with or whose
///   switch behaves otherwise by now;
/// - `processed`, and statuses of groups and systems without any mount: a group that was decided
///   for a switch keeps its status, and the one that loses its last mount loses it;
/// - statuses of mounts that are still under way, for mounters are told when the state changes;
/// - statuses of a path that several services want by a system filter: one that gains or loses a
///   system that another includes decides nothing;
/// - statuses that `untold` names (Invariants::untold);
/// - the state of a group: it is that of the last change of one of its mounts;
/// - statuses of published paths while the generations disagree: they stay when the gate closes;
/// - what was named twice, where the first of the namers has it;
/// - switches that have a publish record and nothing published, as they had been connected; and
///   which services of theirs were processed;
/// - a publication whose local entity has gone since.
void compareWithRebuilt(const std::string& lived, const Fabric::Model& model,
                        const Excuses& excuses, const std::set<std::string>& untold);

}  // namespace Soak
