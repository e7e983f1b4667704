#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "Platform/NboAttrLog/Demuxer.h"
#include "Platform/Orm/Clock.h"
#include "Platform/Orm/Reactor.h"

namespace Fabric {

/// What moves a demultiplexer's round on when no attribute log is behind it: each round that its
/// mount table asks for is reached after a delay, at once within the call, or never. The delay is
/// that in force when the round is asked for; a round that was passed is not gone back to.
///
/// Watches the demultiplexer as long as it exists. Loop thread only.
class SimulatedDemuxer {
 public:
  SimulatedDemuxer(Orm::Ptr<Orm::NboAttrLog::Demuxer> demuxer, Orm::Ptr<Orm::Clock> clock);

  Orm::NboAttrLog::Demuxer& demuxer() const { return *demuxer_; }
  /// Seconds; 0: within the call; nothing: never.
  void syncIs(std::optional<Orm::Seconds> sync) { sync_ = sync; }
  /// Calls visit(const Orm::ClockTimer&) for each round that is under way.
  template <class Visit>
  void walkRounds(Visit&& visit) const {
    for (const auto& round : underWay_) visit(static_cast<const Orm::ClockTimer&>(*round));
  }

 private:
  /// Reacts to a new round that is asked for.
  class OrmMountTable final : public Orm::ReactorOn<Orm::MountTable, SimulatedDemuxer> {
   public:
    explicit OrmMountTable(SimulatedDemuxer* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override;
  };

  /// A round that is under way.
  class OrmRound final : public Orm::ClockReactor<SimulatedDemuxer> {
   public:
    OrmRound(SimulatedDemuxer* owner, std::uint64_t round) : ClockReactor(owner), round_(round) {}
    std::uint64_t round() const { return round_; }

   private:
    void onClock() override {
      if (timeMin() == 0) return;  // it was pointed at the clock, and has not been armed yet
      owner()->handleRound(*this);
    }
    std::uint64_t round_;
  };

  void handleNextRound();
  void handleRound(const OrmRound& round);
  void reach(std::uint64_t round);

  Orm::Ptr<Orm::NboAttrLog::Demuxer> demuxer_;
  Orm::Ptr<Orm::Clock> clock_;
  OrmMountTable mountTable_;
  std::vector<Orm::Owned<OrmRound>> underWay_;
  std::optional<Orm::Seconds> sync_ = 0;
};

}  // namespace Fabric
