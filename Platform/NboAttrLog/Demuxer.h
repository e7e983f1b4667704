#pragma once

#include <cstdint>

#include "Platform/NboAttrLog/MountTable.h"
#include "Platform/Orm/Entity.h"
#include "Platform/Orm/String.h"

namespace Orm::NboAttrLog {

namespace In {
/// Whether a demultiplexer's input is connected.
enum class Status : std::uint8_t { notConnected = 0, connected = 1 };
}  // namespace In

/// Takes in what one connection of the attribute log sends. A member of the DemuxerManager; whoever
/// hosts it moves its round on when the mount table asks for a new one.
class Demuxer : public Entity, private Kobble::Counted<Demuxer> {
 public:
  struct Attr {
    enum : AttributeId { connectStatus, round };
  };

  explicit Demuxer(String name) : name_(std::move(name)), mountTable_(make<MountTable>()) {}

  /// The connection's name.
  const String& name() const { return name_; }
  const Ptr<MountTable>& mountTable() const { return mountTable_; }

  In::Status connectStatus() const { return connectStatus_; }
  void connectStatusIs(In::Status status) { assign(connectStatus_, status, Attr::connectStatus); }

  /// The round that the input has reached.
  std::uint64_t round() const { return round_; }
  void roundIs(std::uint64_t round) { assign(round_, round, Attr::round); }

 private:
  String name_;
  Ptr<MountTable> mountTable_;
  std::uint64_t round_ = 0;
  In::Status connectStatus_ = In::Status::notConnected;
};

}  // namespace Orm::NboAttrLog
