#include "Fabric/AttrlogCarrier.h"

#include <tuple>
#include <utility>

#include "Fabric/Object.h"
#include "Platform/NboAttrLog/ConnectionDir.h"
#include "Platform/NboAttrLog/DemuxerManager.h"

namespace Fabric {

namespace Log = Orm::NboAttrLog;

namespace {

Log::Mode modeOf(const AttrlogView& connection) {
  return connection.passive() ? Log::Mode::passive : Log::Mode::active;
}

void dropSingletons() {
  Log::ConnectionDir::instanceDel();
  Orm::globalNboAttrLogDemuxerManagerDel();
}

}  // namespace

AttrlogCarrier::AttrlogCarrier(Orm::Ptr<Orm::Clock> clock) : clock_(std::move(clock)) {
  dropSingletons();
}

AttrlogCarrier::~AttrlogCarrier() { dropSingletons(); }

void AttrlogCarrier::carry(const std::string& name, const Value& before, const Value& after,
                           const Value& patch) {
  if (after.isNull()) return disappear(name);
  const AttrlogView view(&after);
  if (before.isNull()) return appear(name, view);
  change(name, view, patch);
}

void AttrlogCarrier::appear(const std::string& name, const AttrlogView& after) {
  const auto connection = Log::ConnectionDir::instance()->connectionIs(name);
  connection->statusIs(Orm::make<Log::ConnectionStatus>());
  connection->status()->activeIs(after.active());
  connection->modeIs(modeOf(after));
  demuxer(name, after);
}

void AttrlogCarrier::change(const std::string& name, const AttrlogView& after, const Value& patch) {
  const Orm::Ptr<Log::Connection> connection = Log::ConnectionDir::instance()->connection(name);
  for (const Object::Member& member : patch.object()) {
    if (*member.key == "passive") {
      connection->modeIs(modeOf(after));
    } else if (*member.key == "active") {
      connection->status()->activeIs(after.active());
    } else if (*member.key == "demuxer") {
      demuxer(name, after);
    } else if (*member.key == "connected") {
      connected(name, after);
    } else if (*member.key == "sync") {
      sync(name, after);
    }
  }
}

void AttrlogCarrier::disappear(const std::string& name) {
  Log::ConnectionDir::instance()->connectionDel(name);
  demuxers_.erase(name);
  Orm::globalNboAttrLogDemuxerManager()->demuxerDel(name);
}

void AttrlogCarrier::demuxer(const std::string& name, const AttrlogView& after) {
  if (!after.demuxer()) {
    demuxers_.erase(name);
    Orm::globalNboAttrLogDemuxerManager()->demuxerDel(name);
  } else if (!demuxers_.contains(name)) {
    const auto demuxer = Orm::globalNboAttrLogDemuxerManager()->demuxerIs(name);
    demuxers_.emplace(std::piecewise_construct, std::forward_as_tuple(name),
                      std::forward_as_tuple(demuxer, clock_));
    sync(name, after);
    connected(name, after);
  }
}

void AttrlogCarrier::connected(const std::string& name, const AttrlogView& after) {
  const auto at = demuxers_.find(name);
  if (at == demuxers_.end()) return;
  at->second.demuxer().connectStatusIs(after.connected() ? Log::In::Status::connected
                                                         : Log::In::Status::notConnected);
}

void AttrlogCarrier::sync(const std::string& name, const AttrlogView& after) {
  const auto at = demuxers_.find(name);
  if (at != demuxers_.end()) at->second.syncIs(after.sync());
}

}  // namespace Fabric
