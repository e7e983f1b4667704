#include "Soak/Meddler.h"

#include <algorithm>
#include <utility>

#include "Fabric/GroupView.h"
#include "Fabric/ServiceView.h"
#include "Fabric/SimulatedMountSm.h"

namespace Soak {

using Controller::MountsRegistryEntrySm;
using Controller::MountState;
using Fabric::SimulatedMountSm;

Meddler::Meddler(Fabric::Simulation& simulation, Excuses& excuses)
    : simulation_(simulation),
      excuses_(excuses),
      peerTable_(this),
      mountsRegistry_(this),
      mounts_(simulation.world().mountStatusDir(), *this),
      proxyMounts_(simulation.world().proxyMountStatusDir(), *this),
      publications_(simulation.world().publishStatus(), *this) {
  peerTable_.notifierIs(simulation.world().peerTable());
  mountsRegistry_.notifierIs(simulation.world().mountsRegistry());
  excuses_.start(simulation.model());
}

void Meddler::OrmMountsRegistry::onAttribute(Orm::AttributeId attribute, const Orm::Key& key) {
  using Attr = Controller::MountsRegistry::Attr;
  if (attribute == Attr::mountEntry) owner()->told(Fault::Notice::mountEntry);
  if (attribute == Attr::publishEntry) owner()->toldOfPublishEntry(key.as<Orm::String>());
}

void Meddler::note(std::string_view text) {
  const std::optional<Fault> fault = Fault::parse(text);
  if (!fault) return;
  if (fault->kind == Fault::Kind::within) {
    within_ = fault;
  } else {
    carryOut(*fault);
  }
}

void Meddler::apply(const Fabric::Event& event) {
  // A published directory goes while no switch is connected, and comes before one is.
  if (bringsOrTakesDirectory(*event.apply)) {
    within_.reset();
    applyWaiting();
    return applyNow(*event.apply);
  }
  if (const auto within = std::exchange(within_, std::nullopt)) {
    applyWaiting();
    waiting_ = Waiting{within->notice, within->count, &*event.apply};
    return;
  }
  // A service that comes or goes keeps its place among the patches: whether it is a proxy is said
  // once, when it comes. So does a switch that goes, or it would come back with what was said of it
  // before.
  if (bringsOrTakesService(*event.apply) || meetsAtSwitch(*event.apply)) applyWaiting();
  applyNow(*event.apply);
  applyWaiting();
}

bool Meddler::bringsOrTakesService(const Fabric::Patch& patch) const {
  return std::any_of(patch.steps.begin(), patch.steps.end(), [this](const Fabric::Step& step) {
    return step.block == Fabric::Block::services &&
           (step.patch.isNull() ||
            std::any_of(step.keys->begin(), step.keys->end(), [this](const Fabric::Text& key) {
              return !simulation_.model().find(Fabric::Block::services, *key);
            }));
  });
}

/// The patch that waits and this one name a switch that either of them takes away, or brings.
bool Meddler::meetsAtSwitch(const Fabric::Patch& patch) const {
  if (!waiting_) return false;
  const auto names = [](const Fabric::Step& step, const std::string& id) {
    return step.block == Fabric::Block::switches &&
           std::any_of(step.keys->begin(), step.keys->end(),
                       [&id](const Fabric::Text& key) { return *key == id; });
  };
  const auto meets = [&](const Fabric::Step& one, const Fabric::Step& other) {
    const bool takes = one.patch.isNull() || other.patch.isNull();
    return std::any_of(one.keys->begin(), one.keys->end(), [&](const Fabric::Text& key) {
      return names(other, *key) &&
             (takes || !simulation_.model().find(Fabric::Block::switches, *key));
    });
  };
  const auto& waiting = waiting_->patch->steps;
  return std::any_of(patch.steps.begin(), patch.steps.end(), [&](const Fabric::Step& step) {
    return step.block == Fabric::Block::switches &&
           std::any_of(waiting.begin(), waiting.end(),
                       [&](const Fabric::Step& other) { return meets(step, other); });
  });
}

bool Meddler::bringsOrTakesDirectory(const Fabric::Patch& patch) const {
  const auto isDirectory = [](const Fabric::Value* entity) {
    return entity != nullptr && entity->isString() && entity->string() == "Orm::Dir";
  };
  return std::any_of(patch.steps.begin(), patch.steps.end(), [&](const Fabric::Step& step) {
    return step.block == Fabric::Block::entities &&
           (isDirectory(&step.patch) ||
            std::any_of(step.keys->begin(), step.keys->end(), [&](const Fabric::Text& key) {
              return isDirectory(simulation_.model().find(Fabric::Block::entities, *key));
            }));
  });
}

void Meddler::told(Fault::Notice notice) {
  if (!waiting_ || (waiting_->notice != notice && waiting_->notice != Fault::Notice::any)) return;
  if (--waiting_->left == 0) applyWaiting();
}

void Meddler::toldOfPublishEntry(const Orm::String& path) {
  if (waiting_ && !mayBeTakenOver(path)) told(Fault::Notice::publishEntry);
}

/// Another service's entry in place of one that is just going, which its machine has not been told
/// of, stops the process.
bool Meddler::mayBeTakenOver(const Orm::String& path) const {
  if (!simulation_.machines() || simulation_.world().mountsRegistry()->publishEntry(path)) {
    return false;
  }
  const auto* const machine =
      simulation_.machines()->mountsRegistrySm()->publishRegistryEntrySm().find(path);
  if (!machine) return false;
  const std::string_view owner = machine->publishEntry()->serviceName().view();
  Fabric::Model after = simulation_.model();
  after.apply(*waiting_->patch);
  const Fabric::Object& services = after.block(Fabric::Block::services);
  return std::any_of(services.begin(), services.end(), [&](const auto& service) {
    const auto publish = Fabric::ServiceView(&service.value).publish();
    if (!publish || publish->serviceName(*service.key) == owner) return false;
    const Fabric::Object& groups = publish->groups();
    return std::any_of(groups.begin(), groups.end(), [&path](const auto& group) {
      const Fabric::GroupView view(&group.value);
      return view.paths().find(path.view()) || view.dirs().find(path.view());
    });
  });
}

void Meddler::applyWaiting() {
  if (const auto waiting = std::exchange(waiting_, std::nullopt)) applyNow(*waiting->patch);
}

void Meddler::applyNow(const Fabric::Patch& patch) {
  if (depth_ != 0) excuses_.nested();
  if (onPatch_) onPatch_();
  ++depth_;
  excuses_.patchComes(simulation_.model(), patch);
  simulation_.applyPatch(patch);
  excuses_.patchCame(simulation_.model(), patch);
  --depth_;
  if (onPatch_) onPatch_();
}

void Meddler::carryOut(const Fault& fault) {
  const Fabric::Machines* const machines = simulation_.machines();
  const MountsRegistryEntrySm* const entry =
      machines ? machines->mountsRegistrySm()->mountsRegistryEntrySm().find(Orm::String(fault.path))
               : nullptr;
  if (!entry) return;
  const Orm::Ptr<SimulatedMountSm> mount(
      static_cast<SimulatedMountSm*>(entry->mountSm(fault.systemId)));
  if (!mount) return;
  switch (fault.kind) {
    case Fault::Kind::state:
      excuses_.mountMeddledWith(fault.systemId, fault.state == MountState::unmounted);
      entry->mountSmData(fault.systemId)->mountStateIs(fault.state);
      break;
    case Fault::Kind::lose:
      excuses_.mountMeddledWith(fault.systemId, false);
      mount->loseOutcome();
      break;
    case Fault::Kind::vanish:
      mount->entry().mountDir()->entityDel(fault.systemId.stringValue());
      break;
    case Fault::Kind::within:
      break;
  }
}

}  // namespace Soak
