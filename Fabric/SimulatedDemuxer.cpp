#include "Fabric/SimulatedDemuxer.h"

#include <utility>

namespace Fabric {

SimulatedDemuxer::SimulatedDemuxer(Orm::Ptr<Orm::NboAttrLog::Demuxer> demuxer,
                                   Orm::Ptr<Orm::Clock> clock)
    : demuxer_(std::move(demuxer)), clock_(std::move(clock)), mountTable_(this) {
  mountTable_.notifierIs(demuxer_->mountTable());
}

void SimulatedDemuxer::OrmMountTable::onAttribute(Orm::AttributeId attribute, const Orm::Key&) {
  if (attribute == Orm::MountTable::Attr::nextRound) owner()->handleNextRound();
}

void SimulatedDemuxer::handleNextRound() {
  if (!sync_) return;
  const std::uint64_t round = demuxer_->mountTable()->nextRound();
  if (*sync_ == 0) {
    reach(round);
    return;
  }
  Orm::Owned<OrmRound> underWay(new OrmRound(this, round));
  underWay->notifierIs(clock_);
  underWay->timeMinIs(clock_->now() + *sync_);
  underWay_.push_back(std::move(underWay));
}

void SimulatedDemuxer::handleRound(const OrmRound& round) {
  const std::uint64_t reached = round.round();
  std::erase_if(underWay_, [&round](const auto& one) { return one.get() == &round; });
  reach(reached);
}

void SimulatedDemuxer::reach(std::uint64_t round) {
  if (round > demuxer_->round()) demuxer_->roundIs(round);
}

}  // namespace Fabric
