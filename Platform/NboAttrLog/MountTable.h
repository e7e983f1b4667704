#pragma once

#include <cstdint>

#include "Platform/Orm/Entity.h"

namespace Orm {

/// The mounts of one attribute-log connection: which round of synchronisation is asked for.
class MountTable : public Entity, private Kobble::Counted<MountTable> {
 public:
  struct Attr {
    enum : AttributeId { nextRound };
  };

  std::uint64_t nextRound() const { return nextRound_; }
  void nextRoundIs(std::uint64_t round) { assign(nextRound_, round, Attr::nextRound); }

 private:
  std::uint64_t nextRound_ = 0;
};

}  // namespace Orm
