#include "Bench/Converge/PromptMounts.h"

#include <utility>

namespace Bench {

using Controller::MountRequest;
using Controller::MountState;
using Orm::Ptr;

namespace {

/// The factory of the process; a machine that knew it itself would be larger by a third.
PromptMounts* theMounts = nullptr;

}  // namespace

// ---- one mount

PromptMountSm::PromptMountSm(const MountRequest& request) : record_(request.mountSmData) {
  record_->mountStateIs(MountState::requested);
}

void PromptMountSm::doRemount() { step_ = Step::mount; }

void PromptMountSm::doUnmount() {
  if (step_ == Step::unmount) return;
  step_ = Step::unmount;
  theMounts->unmounting_.emplace_back(this);
}

void PromptMountSm::advance() {
  if (step_ != Step::mount) return;
  const bool asked = record_->mountState() != MountState::mounting;
  if (!asked) step_ = Step::done;
  record_->mountStateIs(asked ? MountState::mounting : MountState::mounted);
}

// ---- all of them

PromptMounts::PromptMounts() { theMounts = this; }

PromptMounts::~PromptMounts() {
  for (std::uint32_t sw = 0; sw != lists_.size(); ++sw) sweep(sw);
}

std::uint32_t PromptMounts::switchIs(const Controller::SystemId& systemId) {
  const auto number = static_cast<std::uint32_t>(lists_.size());
  numberOf_.set(systemId, number);
  lists_.emplace_back();
  return number;
}

Ptr<Controller::MountSm> PromptMounts::mountSm(const MountRequest& request) {
  if (request.systemId != lastId_) {  // most requests are for the switch of the one before
    lastId_ = request.systemId;
    lastNumber_ = *numberOf_.find(lastId_);
  }
  List& list = lists_[lastNumber_];
  auto* const made = new PromptMountSm(request);
  (list.last ? list.last->next_ : list.first) = Ptr<PromptMountSm>(made);
  list.last = made;
  return made;
}

template <class Visit>
void PromptMounts::walk(std::uint32_t sw, Visit&& visit) {
  List& list = lists_[sw];
  Ptr<PromptMountSm>* link = &list.first;
  PromptMountSm* last = nullptr;
  while (*link) {
    if ((*link)->step_ == PromptMountSm::Step::gone) {
      *link = Ptr<PromptMountSm>(std::move((*link)->next_));
      continue;
    }
    last = link->get();
    visit(*last);
    link = &last->next_;
  }
  list.last = last;
}

void PromptMounts::advance(std::uint32_t sw) {
  walk(sw, [](PromptMountSm& machine) { machine.advance(); });
}

void PromptMounts::sweep(std::uint32_t sw) {
  walk(sw, [](PromptMountSm&) {});
}

void PromptMounts::settle() {
  std::vector<Ptr<PromptMountSm>> asked;
  asked.swap(unmounting_);
  for (const Ptr<PromptMountSm>& machine : asked) {
    if (machine->step_ == PromptMountSm::Step::unmount) {
      machine->record_->mountStateIs(MountState::unmounted);
    }
  }
  asked.clear();
  if (unmounting_.empty()) unmounting_.swap(asked);  // keeps its room
}

static_assert(sizeof(PromptMountSm) == 32);

}  // namespace Bench
