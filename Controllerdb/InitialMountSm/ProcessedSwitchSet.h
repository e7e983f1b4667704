#pragma once

#include "Platform/Orm/CollectionOwner.h"

namespace Controller {

/// The switches that the mount side has looked at for one mount group, by system name.
class ProcessedSwitchSet : public Orm::CollectionOwner,
                           private Kobble::Counted<ProcessedSwitchSet> {
 public:
  struct Attr {
    enum : Orm::AttributeId { processed };
  };
  using ProcessedSwitches = Orm::ValueCollection<Orm::String, bool>;

  const ProcessedSwitches& processed() const { return processed_; }
  void processedIs(const Orm::String& systemName, bool processed) {
    valueIs(processed_, Attr::processed, systemName, processed);
  }
  /// Makes room for that many members, for who knows how many will come.
  void processedReserve(std::uint32_t count) { processed_.reserve(count); }
  void processedDel(const Orm::String& systemName) {
    valueDel(processed_, Attr::processed, systemName);
  }
  void processedDelAll() { valueDelAll(processed_, Attr::processed); }

 private:
  ProcessedSwitches processed_;
};

}  // namespace Controller
