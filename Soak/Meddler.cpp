#include "Soak/Meddler.h"

#include <algorithm>
#include <utility>

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

void Meddler::OrmMountsRegistry::onAttribute(Orm::AttributeId attribute, const Orm::Key&) {
  using Attr = Controller::MountsRegistry::Attr;
  if (attribute == Attr::mountEntry) owner()->told(Fault::Notice::mountEntry);
  if (attribute == Attr::publishEntry) owner()->told(Fault::Notice::publishEntry);
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
    // Another service's entry in place of one that is just going stops the process.
    if (excuses_.hasPublishedTwice()) return applyNow(*event.apply);
    waiting_ = Waiting{within->notice, within->count, &*event.apply};
    return;
  }
  // A service that comes or goes keeps its place among the patches: whether it is a proxy is said
  // once, when it comes.
  if (bringsOrTakesService(*event.apply)) applyWaiting();
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
  if (!waiting_ || waiting_->notice != notice || excuses_.hasPublishedTwice()) return;
  if (--waiting_->left == 0) applyWaiting();
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
