#pragma once

#include "Controllerdb/InitialMountSm/MountGroupInitialMountSm.h"
#include "Test/Support/InitialMountFixture.h"

namespace Controller {

inline constexpr const char* kMountService = "Topology";
inline constexpr const char* kMountGroup = "default";

/// One service with one group, and two switches.
class MountGroupFixture : public Support::InitialMountFixture {
 protected:
  MountGroupFixture() : topology_(service(kMountService)) {
    topology_.group(kMountGroup);
    topology_.status().serviceNameIs(kMountService);
  }

  /// The period has ended with these switches in the snapshot.
  void startWith(std::initializer_list<const char*> systems) {
    startInitialMounts();
    peerComes(kLeaf3);  // so that there is a period
    peerGoes(kLeaf3);
    for (const char* system : systems) peerComes(system);
    run(kPeriod);
  }
  MountGroupInitialMountSm& group() const { return *groupSm(kMountService, kMountGroup); }
  bool isSnapshot(const char* system) const {
    return group().mountGroupInitialSwitchSet()->initialSwitch().value(systemId(system));
  }
  bool isRemaining(const char* system) const { return group().remainingSwitch().has(system); }
  bool isComplete() const { return InitialMountFixture::isComplete(kMountService, kMountGroup); }
  void processed(const char* system) const {
    InitialMountFixture::processed(system, kMountService, kMountGroup);
  }
  void owes(const char* system) const {
    InitialMountFixture::owes(system, kMountService, kMountGroup);
  }
  void reports(const char* system, MountState state) const {
    InitialMountFixture::reports(system, kMountService, kMountGroup, state);
  }
  ServiceMountGroupStatus& status(const char* system) const {
    return InitialMountFixture::status(system, kMountService, kMountGroup);
  }

  Support::MountService topology_;
};

}  // namespace Controller
